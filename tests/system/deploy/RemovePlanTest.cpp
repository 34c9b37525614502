// deploy/remove-sentrel.sh --plan: says what a removal would do, and does nothing.

#include <gtest/gtest.h>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using Lines = std::vector<std::string>;

TEST(PlanOfARemoval, ChangesNothing) {
    struct Row {
        Lines mac;
        int status;
        const char* word;
        bool changed;
    };
    const Row rows[] = {{kQuickMac, 0, "planned", true},
                        {{"--empty"}, 0, "nothing", false},
                        {{"--installed", "current", "--version", "99.1/1"}, 12, "newer", false}};
    for (const Row& row : rows) {
        RemovalMac mac(row.mac);
        const std::string find =
            "find /Applications /Library /Users /etc /tmp /usr/local /var ! -path '/var/macsim*' ! -path "
            "/var/log/system.log -printf '%p %y %s %T@ %U %m\\n' | sort";
        const auto result = mac.shell(joined({find, " >/dev/shm/1; ", kScript, " --plan; s=$?; ", find,
                                              " >/dev/shm/2; diff /dev/shm/1 /dev/shm/2 >&2; exit $s"}));
        expectOutcome(result, row.status, row.word, row.changed);
        EXPECT_EQ(lineOf(result).at("plan"), true);
        EXPECT_EQ(mac.launchctlChanges(), Lines());
    }
    RemovalMac mac(kQuickMac);
    expectOutcome(mac.shell(kScript + " --plan", "alice"), 0, "planned", true);
}

TEST(PlanOfARemoval, TellsWhatARestartTakesAwayFromWhatARemovalDoes) {
    RemovalMac mac({"--empty", "--users", "alice:501"});
    mac.put(
        "/Library/Extensions/FileAccessFilter.kext/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.norvik.kext.FileAccessFilter"
        "</string></dict></plist>");
    expectOutcome(mac.shell(kScript + " --plan"), 0, "planned", true);
    expectOutcome(mac.shell("rm -r /Library/Extensions/*; " + kScript + " --plan"), 11, "restart", false);
}

TEST(PlanOfARemoval, SaysThatItCouldNotLook) {
    RemovalMac mac({"--empty"});
    const auto result = mac.underFaults({"unreadable-passwd"}, kScript + " --plan");
    expectOutcome(result, 1, "unknown", false);
    EXPECT_EQ(
        lineOf(result).at("message"),
        "Not everything could be looked at: the users' jobs could not be listed: the password database names "
        "no local user");
}

}  // namespace

}  // namespace DeployTests
