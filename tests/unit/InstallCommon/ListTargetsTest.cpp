// Whatever list is sent: everything that it removes, creates or changes lies in the product's own places, and
// is none of the folders that the product shares with others.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "InstallCommon/CommandLists.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "support/FakeMac.h"

namespace {

using Base::URL;
using InstallCommon::CommandList;
using InstallCommon::CommandLists;

/// Everything that the commands of a list have the helper change on disk.
std::vector<std::string> targets(const CommandList& commands) {
    std::vector<std::string> paths;
    for (const auto& command : commands) {
        if (const auto* remove = dynamic_cast<const InstallCommon::RemoveCommand*>(command.get())) {
            for (const auto& item : remove->itemsToRemove()) {
                paths.push_back(item.path.path());
            }
        } else if (const auto* copy = dynamic_cast<const InstallCommon::CopyCommand*>(command.get())) {
            for (const auto& item : copy->itemsToCopy()) {
                paths.push_back(item.destination.path());
            }
        } else if (const auto* start =
                       dynamic_cast<const InstallCommon::StartLaunchdJobCommand*>(command.get())) {
            paths.push_back(start->launchdJob().plistLocation().value_or(URL::fileURL("/")).path());
        }
    }
    return paths;
}

/// Folders that are the product's or its maker's, whole.
constexpr std::array<std::string_view, 7> kOwnFolders = {
    "/Applications/Sentrel.app",
    "/Applications/NORVIK",
    "/Applications/Norvik",
    "/Library/Application Support/NORVIK",
    "/Library/Application Support/Norvik",
    "/Library/Extensions/FileAccessFilter.kext",
    "/Users/Shared/Norvik",
};

/// Items of the product's in folders that it shares with others: each folder with how their names begin.
constexpr std::array<std::string_view, 5> kOwnNames = {
    "/Library/LaunchAgents/com.norvik.",
    "/Library/LaunchDaemons/com.norvik.",
    "/Library/PrivilegedHelperTools/com.norvik.",
    "/Library/Services/Scan with Sentrel.workflow",
    "/Library/Services/Scan with NORVIK Antivirus.workflow",
};

bool isOwn(const std::string& path) {
    const bool inFolder = std::any_of(kOwnFolders.begin(), kOwnFolders.end(), [&](std::string_view each) {
        return path == each || path.starts_with(std::string(each) + "/");
    });
    const bool named = std::any_of(kOwnNames.begin(), kOwnNames.end(), [&](std::string_view each) {
        return path.starts_with(each) && path.find('/', each.size()) == std::string::npos;
    });
    return inFolder || named;
}

bool isStandardised(const std::string& path) {
    return path.starts_with('/') && (path + "/").find("/../") == std::string::npos &&
           (path + "/").find("/./") == std::string::npos && path.find("//") == std::string::npos;
}

struct List {
    const char* name;
    CommandList commands;
    std::size_t changes;
};

TEST(ListTargets, AreTheProductsOwnInEveryList) {
    const TestSupport::FakeMac mac;
    const InstallCommon::PayloadLocations payload{URL::fileURL("/P/A"), URL::fileURL("/P/J"),
                                                  URL::fileURL("/P/S")};
    std::vector<List> lists;
    lists.push_back({"uninstallation", CommandLists::uninstallation(), 43 + 18});
    lists.push_back({"clean installation", CommandLists::cleanInstallation(payload), 12});
    lists.push_back({"update", CommandLists::update(payload), 43 + 10});
    lists.push_back({"over-installation", CommandLists::overInstallation(payload), 43 + 18 + 12});
    for (const List& list : lists) {
        const std::vector<std::string> paths = targets(list.commands);
        EXPECT_EQ(paths.size(), list.changes) << list.name;
        for (const std::string& path : paths) {
            EXPECT_TRUE(isOwn(path) && isStandardised(path)) << list.name << ": " << path;
        }
    }
}

TEST(ListTargets, TheRepairFolderIsTheProductsOwn) {
    const TestSupport::FakeMac mac;
    EXPECT_TRUE(isOwn(NorvikCommon::FeaturePathProvider::repairFolder().path()))
        << NorvikCommon::FeaturePathProvider::repairFolder().path();
}

// The check itself recognises other products' items.
TEST(ListTargets, SharedFoldersAndNeighboursAreNotTheProductsOwn) {
    for (const char* each :
         {"/", "/Applications", "/Library", "/Library/Application Support", "/Library/Extensions",
          "/Library/LaunchAgents", "/Library/LaunchDaemons", "/Library/PrivilegedHelperTools",
          "/Library/Services", "/System", "/Users", "/Users/Shared", "/Users/alice", "/Applications/NORVIKS",
          "/Library/LaunchDaemons/com.norvik.x/y", "/usr/local"}) {
        EXPECT_FALSE(isOwn(each)) << each;
    }
    EXPECT_FALSE(isStandardised("/Applications/NORVIK/../Other.app"));
    EXPECT_FALSE(isStandardised("/Applications/NORVIK/.."));
}

}  // namespace
