#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

/// The requests to the stand-ins for the system's authorization session, SMJobBless and kernel-extension
/// manager, and their answers.
namespace StandIns {

struct Item {
    std::string name;
    /// Whether there was a value, and the bytes of it up to its terminator.
    bool hasValue = false;
    std::string value;
    std::size_t valueLength = 0;
    std::uint32_t flags = 0;

    friend bool operator==(const Item&, const Item&) = default;
};

struct Services {
    // Authorization.
    std::vector<Item> rights;
    std::vector<Item> environment;
    std::uint32_t flags = 0;
    bool askedForRightsOrError = false;
    bool grants = true;
    bool hasReference = true;
    int sessions = 0;
    // Blessing.
    std::string domain;
    std::string label;
    const void* reference = nullptr;
    bool blesses = true;
    /// The code of the error that a refusal gives; none when 0.
    long errorCode = 5;
    int errors = 0;
    // Kernel extensions.
    std::string kext;
    std::int32_t kextResult = 0;
    /// Identifiers of loaded extensions, and those that were asked about, joined by a blank.
    std::set<std::string> loadedKexts;
    std::string kextsAskedAbout;
    bool knowsKexts = true;
};

extern Services services;

/// What the sessions have for an AuthorizationRef.
[[nodiscard]] const void* sessionReference();

}  // namespace StandIns
