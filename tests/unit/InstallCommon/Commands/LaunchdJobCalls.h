#pragma once

#include <string>
#include <vector>

#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "support/FakeMac.h"

/// The job that the tests of the launchd commands start and stop, and the calls that this makes.
namespace LaunchdJobTests {

using NorvikCommon::LaunchdInfo;
using TestSupport::CallList;

inline const std::string kPlist = "/Library/LaunchDaemons/com.norvik.job.plist";

inline LaunchdInfo job() {
    return LaunchdInfo::launchdWithName("job", Base::URL::fileURL("/Library/LaunchDaemons"));
}

/// Jobs that lack a key that a command could use.
inline std::vector<LaunchdInfo> incompleteJobs() {
    LaunchdInfo withoutLabel = job();
    withoutLabel.label.reset();
    LaunchdInfo withoutPlist = job();
    withoutPlist.plist.reset();
    LaunchdInfo withoutLocation = job();
    withoutLocation.plist->location.reset();
    return {withoutLabel, withoutPlist, withoutLocation, LaunchdInfo{}};
}

/// The calls of one run of launchctl.
inline CallList launchctl(const std::string& arguments) {
    return {{"launch", "/bin/launchctl " + arguments}, {"wait"}, {"read output"}, {"read error"}};
}

/// What a walk through the users calls.
inline const CallList kUserWalk{{"setpwent"}, {"endpwent"}};

inline CallList joined(const std::vector<CallList>& parts) {
    CallList all;
    for (const CallList& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace LaunchdJobTests
