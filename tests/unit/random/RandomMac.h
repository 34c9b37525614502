#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include <rapidcheck.h>

#include "support/FakeLaunchd.h"

namespace RandomMacs {

/// Something at one place of the file system.
struct Component {
    enum class Kind : std::uint8_t {
        file,
        folder,
        usersLink,  ///< a link that a user made, to a folder with items under the product's names
        rootsLink,  ///< a link that root made, to a folder without such
        danglingLink,
    };

    std::string path;
    Kind kind = Kind::file;
};

/// An item that the system refuses to remove, chosen among those that are there.
struct Refusal {
    std::size_t item = 0;
    int reason = 0;
};

struct RandomJob {
    TestSupport::FakeLaunchd::Job job;
    bool stuck = false;
};

struct RandomProcess {
    std::string name;
    bool canBeKilled = true;
};

enum class Extension : std::uint8_t { absent, loaded, inUse };

/// What a Mac may be like when an uninstallation begins. Small values are Macs with little on them.
struct RandomMac {
    std::vector<Component> components;
    /// Of other makers, beside the product's.
    std::vector<Component> decoys;
    /// The property lists of these labels are there and name a job.
    std::vector<std::string> propertyLists;
    std::vector<Refusal> refusals;
    std::vector<RandomJob> jobs;
    std::vector<Platform::Users::Entry> users;
    std::vector<std::uint32_t> sessions;
    std::vector<RandomProcess> processes;
    Extension extension = Extension::absent;
    bool staysRoot = false;
};

[[nodiscard]] rc::Gen<RandomMac> randomMac();

/// Makes a fake Mac like that. A component below something that is not a folder is left out.
void furnish(const RandomMac& random, TestSupport::FakeMac& mac, TestSupport::FakeLaunchd& launchd);

/// For the message of a failed property.
std::ostream& operator<<(std::ostream& out, const RandomMac& mac);

}  // namespace RandomMacs
