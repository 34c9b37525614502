// Every tool that the helpers start, its arguments and the user ids that it inherits, in order.

#include <gtest/gtest.h>

#include <algorithm>

#include "support/ProductMac.h"

namespace {

using namespace SystemTests;
using Lines = std::vector<std::string>;

constexpr const char* kAgents = "/Library/LaunchAgents/com.norvik.";
constexpr const char* kDaemons = "/Library/LaunchDaemons/com.norvik.";

std::string asRoot(const std::string& call) {
    return "0/0 " + call;
}

/// A child of the helper while its effective user is somebody else: the real one stays root's.
std::string as(unsigned user, const std::string& call) {
    return "0/" + std::to_string(user) + " " + call;
}

void add(Lines& lines, const Lines& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

Lines stoppedDaemon(const std::string& name) {
    return {asRoot("/bin/launchctl print system/com.norvik." + name),
            asRoot("/bin/launchctl bootout system " + (kDaemons + name) + ".plist")};
}

Lines missingDaemon(const std::string& name) {
    return {asRoot("/bin/launchctl print system/com.norvik." + name)};
}

Lines stoppedAgent(const std::string& name) {
    Lines calls;
    for (const unsigned user : {0U, 501U, 502U}) {
        calls.push_back(as(
            user, "/bin/launchctl bootout gui/" + std::to_string(user) + " " + (kAgents + name) + ".plist"));
    }
    return calls;
}

Lines startedDaemon(const std::string& name) {
    return {asRoot("/bin/launchctl enable system/com.norvik." + name),
            asRoot("/bin/launchctl bootstrap system " + (kDaemons + name) + ".plist")};
}

Lines startedAgent(const std::string& name) {
    Lines calls;
    for (const unsigned user : {501U, 502U}) {
        const std::string domain = "gui/" + std::to_string(user);
        calls.push_back(as(user, "/bin/launchctl enable " + domain + "/com.norvik." + name));
        calls.push_back(as(user, "/bin/launchctl bootstrap " + domain + " " + (kAgents + name) + ".plist"));
    }
    return calls;
}

/// The support helper has the system install the package, wherever it keeps it.
void expectPackageFirst(Lines& calls) {
    ASSERT_FALSE(calls.empty());
    EXPECT_TRUE(calls.front().starts_with(asRoot("/usr/sbin/installer -pkg /")) &&
                calls.front().ends_with(".pkg -target /"))
        << calls.front();
    calls.erase(calls.begin());
}

const Lines kMac{"--installed", "current", "--users", "alice:501,bob:502:logged-out"};

TEST(Transcript, OfAnUninstallationIsThisOne) {
    ProductMac mac(kMac);
    ASSERT_EQ(mac.uninstall().status, 0);
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    Lines expected;
    for (const Lines& calls :
         {stoppedDaemon("containmentd"), stoppedDaemon("fileaccessd"), missingDaemon("fileaccessdaemon"),
          missingDaemon("FileAccessDaemon"), missingDaemon("fileaccessd"), missingDaemon("containmentd"),
          stoppedAgent("TrayMenu"), stoppedAgent("NorvikAgent"), stoppedAgent("Agent"),
          stoppedAgent("TrayMenu"), stoppedAgent("Agent"), stoppedAgent("TrayMenu"), stoppedAgent("Agent"),
          stoppedAgent("TrayMenu"), stoppedAgent("Agent"), stoppedAgent("TrayMenu")}) {
        add(expected, calls);
    }
    Lines actual = mac.transcript();
    expectPackageFirst(actual);
    ASSERT_GE(actual.size(), expected.size());
    const Lines list(actual.begin(), actual.begin() + static_cast<std::ptrdiff_t>(expected.size()));
    EXPECT_EQ(list, expected);
    // At the end the helper takes the jobs of the deleted tools out of launchd, last its own.
    const Lines last(actual.begin() + static_cast<std::ptrdiff_t>(expected.size()), actual.end());
    ASSERT_FALSE(last.empty());
    for (const std::string& call : last) {
        EXPECT_TRUE(call.starts_with(asRoot("/bin/launchctl "))) << call;
        EXPECT_NE(call.find(" system/com.norvik."), std::string::npos) << call;
    }
    EXPECT_EQ(last.back(), asRoot("/bin/launchctl bootout system/com.norvik.InstallerHelper"));
}

TEST(Transcript, OfAnInstallationIsThisOne) {
    ProductMac mac({"--users", "alice:501,bob:502:logged-out"});
    ASSERT_EQ(mac.install(mac.makePayload("6.4/640")).status, 0);
    Lines expected;
    for (const Lines& calls :
         {startedAgent("TrayMenu"), startedAgent("NorvikAgent"), startedDaemon("containmentd"),
          startedDaemon("fileaccessd"),
          Lines{
              asRoot("/System/Library/Frameworks/CoreServices.framework/Frameworks/LaunchServices.framework/"
                     "Support/lsregister -r -f /Library/Application Support/NORVIK/SNT")}}) {
        add(expected, calls);
    }
    Lines actual = mac.transcript();
    expectPackageFirst(actual);
    EXPECT_EQ(actual, expected);
}

}  // namespace
