// An inventory of a whole Mac before and after an uninstallation: nothing but the product goes, nothing else
// changes.

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "MacInventory.h"
#include "support/ProductMac.h"
#include "support/ProductPlaces.h"

namespace {

using namespace SystemTests;
namespace fs = std::filesystem;
namespace Places = TestSupport::ProductPlaces;

/// What the simulator itself writes while a Mac runs, and where the system's installer puts the runtime
/// package, which stays by design.
const std::vector<std::string> kWrittenByTheSystem{
    "/var/log/system.log",
    "/var/macsim/lock",
    "/var/macsim/session.json",
    "/var/macsim/state.json",
    "/var/macsim/transcript.jsonl",
    "/var/run/mac-services.socket",
    "/var/run/mach",
    "/usr/local/lib/swift",
    "/var/db/receipts",
};

/// The folders that the product, the runtime package or the simulator take entries from or put entries into.
const std::set<std::string> kRefilled{
    "/Applications",
    "/Library/Application Support",
    "/Library/Services",
    "/Library/Extensions",
    "/Users/Shared",
    "/Library/PrivilegedHelperTools",
    "/tmp",
    "/Library/LaunchDaemons",
    "/usr",
    "/usr/local",
    "/usr/local/lib",
    "/Library/LaunchAgents",
    "/var/db",
    "/var/log",
    "/var/macsim",
    "/var/run",
    "/var/tmp",
    "/var/root",
};

constexpr std::array kDecoyNames{"% 2", ".%", "%.old", "x%"};

/// Names like the product's own: longer, shorter, hidden, in another case.
std::vector<std::string> similarPaths(const std::string& path) {
    const std::size_t name = path.rfind('/') + 1;
    const std::string folder = path.substr(0, name);
    const std::string own = path.substr(name);
    std::vector<std::string> similar{folder + own.substr(0, own.size() - 1), folder + own.substr(1)};
    for (const std::string_view pattern : kDecoyNames) {
        std::string decoy(pattern);
        similar.push_back(folder + decoy.replace(decoy.find('%'), 1, own));
    }
    std::string otherCase = own;
    otherCase[0] = static_cast<char>(otherCase[0] ^ 0x20);
    similar.push_back(folder + otherCase);
    return similar;
}

void setOwnerAndTime(const std::string& item, unsigned owner) {
    ASSERT_EQ(::lchown(item.c_str(), owner, 20), 0) << item;
    const std::array<timespec, 2> times{{{1'000'000'000, 5}, {1'100'000'000 + owner, 7}}};
    ASSERT_EQ(::utimensat(AT_FDCWD, item.c_str(), times.data(), AT_SYMLINK_NOFOLLOW), 0) << item;
}

class NothingElse : public testing::Test {
  protected:
    void putDecoys() {
        unsigned count = 0;
        for (const std::string& place : Places::everything()) {
            for (const std::string& decoy : similarPaths(place)) {
                if (!isAtOrBelow(decoy, Places::everything()) && !mac_.exists(decoy)) {
                    putDecoy(decoy, ++count);
                }
            }
        }
        ASSERT_GT(count, 100U);
    }

    /// A file or a folder with a file in it, in turns.
    void putDecoy(const std::string& path, unsigned number) {
        const bool isFolder = number % 2 == 0;
        mac_.put(isFolder ? path + "/inside" : path, "decoy " + path, 0600 + number % 64);
        setOwnerAndTime(mac_.path(path), 501 + number % 3);
    }

    void putPreciousFolders() {
        for (const char* user : {"alice", "bob"}) {
            const std::string folder = std::string("/Users/") + user + "/Documents/Precious";
            mac_.put(folder + "/Sentrel.app/Contents/letter.txt", "keep", 0400);
            mac_.put(folder + "/SNT/settings.plist", "keep", 04755);
            setOwnerAndTime(mac_.path(folder), user == std::string("alice") ? 501 : 502);
        }
    }

    /// Files of the product under second names elsewhere.
    void putHardLinks() {
        unsigned count = 0;
        for (const auto& [path, facts] : inventoryOf(mac_)) {
            if (facts.kind == '-' && isAtOrBelow(path, Places::everything()) && ++count % 5 == 0) {
                fs::create_hard_link(mac_.path(path),
                                     mac_.path("/Users/bob/Documents/hard link " + std::to_string(count)));
            }
        }
        ASSERT_GT(count, 50U);
    }

    /// Links from the product's folders to items that have to stay.
    void putLinks() {
        const std::vector<std::string> targets{"/Users/alice/Documents/Precious",
                                               "/Users/alice/Documents/Precious/SNT/settings.plist",
                                               "../../../Users/bob/Documents/Precious",
                                               "..",
                                               "/",
                                               "/nowhere"};
        for (const char* folder :
             {"/Applications/Sentrel.app", "/Applications/Norvik", "/Applications/NORVIK/SNT",
              "/Library/Application Support/NORVIK/SNT/Quarantine",
              "/Library/Application Support/Norvik/Antivirus", "/Users/Shared/Norvik"}) {
            for (std::size_t index = 0; index < targets.size(); ++index) {
                fs::create_symlink(targets[index], mac_.path(folder) + "/link " + std::to_string(index));
            }
        }
    }

    ProductMac mac_{{"--installed", "all", "--users", "alice:501,bob:502,carol:503:logged-out"}};
};

TEST_F(NothingElse, IsChangedByAnUninstallation) {
    putPreciousFolders();
    putDecoys();
    putHardLinks();
    putLinks();
    ASSERT_EQ(mac_.shell("true").status, 0);
    MacInventory expected = inventoryOf(mac_);
    const auto isNotOfOthers = [](const auto& item) {
        return isAtOrBelow(item.first, Places::everything()) || isAtOrBelow(item.first, kWrittenByTheSystem);
    };
    std::erase_if(expected, isNotOfOthers);
    EXPECT_EQ(mac_.uninstall().status, 0);
    EXPECT_EQ(mac_.uninstallerLog(), kSuccess);
    MacInventory actual = inventoryOf(mac_);
    std::erase_if(actual, [](const auto& item) { return isAtOrBelow(item.first, kWrittenByTheSystem); });
    EXPECT_EQ(differences(actual, expected, kRefilled), std::vector<std::string>{});
}

}  // namespace
