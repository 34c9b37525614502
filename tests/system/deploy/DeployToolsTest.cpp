// The scripts for Jamf Pro and Munki, run as these programs run them.

#include <gtest/gtest.h>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using Lines = std::vector<std::string>;

const std::string kKextInfo =
    "<plist "
    "version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.norvik.kext.FileAccessFilter</string>"
    "</dict></plist>";

/// A Mac with these scripts in /opt.
class ManagedMac : public RemovalMac {
  public:
    ManagedMac(const Lines& options, const Lines& scripts) : RemovalMac(options) {
        for (const std::string& script : scripts) {
            putCopy(joined({"/opt", std::string_view(script).substr(script.rfind('/'))}),
                    joined({DEPLOY_FOLDER "/", script}));
        }
    }
    /// Leaves the extension loaded in the next run, with its files gone.
    void putExtension() const {
        put("/Library/Extensions/FileAccessFilter.kext/Contents/Info.plist", kKextInfo);
    }
};

const std::string kForgetExtension = "rm -r /Library/Extensions/FileAccessFilter.kext; ";

TEST(JamfExtensionAttribute, SaysWhatIsOnTheMac) {
    const Lines script{"jamf/extension-attribute.sh"};
    const std::string ask = "/opt/extension-attribute.sh / mac alice";
    ManagedMac bare({"--empty", "--users", "alice:501"}, script);
    EXPECT_EQ(bare.shell(ask).out, "<result>nothing</result>\n");
    EXPECT_EQ(bare.underFaults({"unreadable-passwd"}, ask).out,
              "<result>unknown: the users' jobs could not be listed: the password database names no local "
              "user</result>\n");
    bare.putExtension();
    EXPECT_EQ(bare.shell(ask).out, "<result>leftovers</result>\n");
    EXPECT_EQ(bare.shell(kForgetExtension + ask).out, "<result>restart needed</result>\n");
    EXPECT_EQ(bare.shell("rm " + kInspect + "; " + ask).out,
              "<result>unknown: the kit is not on this Mac</result>\n");
    bare.put(kInspect, "#!/bin/sh\nprintf 'verdict\\tnothing\\n'; kill -9 $$\n", 0755);
    EXPECT_EQ(bare.shell(ask).out, "<result>unknown: sentrel-inspect ended with status 137</result>\n");

    ManagedMac current({"--installed", "current", "--version", "6.3/<&>", "--users", "alice:501"}, script);
    EXPECT_EQ(current.shell(ask).out, "<result>installed 6.3 (&lt;&amp;&gt;)</result>\n");
    ManagedMac earlier(kQuickMac, script);
    EXPECT_EQ(earlier.shell(ask).out, "<result>installed</result>\n");
}

TEST(JamfPolicy, PassesParametersAndResultOn) {
    ManagedMac mac(kQuickMac, {"jamf/policy.sh"});
    const std::string policy = "/opt/policy.sh / mac alice ";
    const auto planned = mac.shell(policy + "plan '' /var/log/removal.log");
    expectOutcome(planned, 0, "planned", true);
    EXPECT_FALSE(mac.exists("/var/log/removal.log"));
    const auto removed = mac.shell(policy + "'' 500 '/var/log/a removal.log'");
    expectOutcome(removed, 0, "removed", true);
    EXPECT_NE(mac.contents("/var/log/a removal.log").find("\"result\":\"removed\""), std::string::npos);
    // Jamf leaves out what nobody has filled in.
    expectOutcome(mac.shell(policy), 0, "nothing", false);
    expectOutcome(mac.shell("/opt/policy.sh"), 0, "nothing", false);
    expectOutcome(mac.shell("mv " + kKit + " '/opt/the kit'; " + policy + "'' '' '' '/opt/the kit'"), 0,
                  "nothing", false);
    const auto missing = mac.shell(policy);
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.err, "policy.sh: there is no " + kScript + "; install the kit's package first\n");
    EXPECT_EQ(mac.shell(policy + "remove").status, 2);
    EXPECT_EQ(mac.shell(policy + "'' soon '' '/opt/the kit'").status, 2);
}

TEST(MunkisCheck, FindsSomethingToRemoveUnlessItIsProvenThatNothingIsThere) {
    ManagedMac mac({"--empty", "--users", "alice:501"}, {"munki/uninstallcheck.sh"});
    const std::string check = "/opt/uninstallcheck.sh";
    EXPECT_EQ(mac.shell(check).status, 1);
    EXPECT_EQ(mac.underFaults({"unreadable-passwd"}, check).status, 0);
    mac.putExtension();
    EXPECT_EQ(mac.shell(kForgetExtension + check).status, 0);
    mac.put("/Users/Shared/Norvik/file", "");
    EXPECT_EQ(mac.shell(check + "; echo $?; rm -r /Users/Shared/Norvik; " + check).out, "0\n");
    EXPECT_EQ(mac.shell("rm " + kInspect + "; " + check).status, 0);
    ManagedMac installed(kQuickMac, {"munki/uninstallcheck.sh"});
    EXPECT_EQ(installed.shell(check).status, 0);
}

TEST(MunkisUninstallation, FailsUnlessItIsDoneOrOnlyARestartIsMissing) {
    const Lines scripts{"munki/uninstallcheck.sh", "munki/uninstall.sh"};
    ManagedMac mac(kQuickMac, scripts);
    EXPECT_EQ(mac.underFaults({"package"}, "/opt/uninstall.sh").status, 10);
    EXPECT_EQ(mac.shell("/opt/uninstall.sh; echo $?; /opt/uninstallcheck.sh; echo $? >&2").err, "1\n");
    EXPECT_NE(mac.contents("/var/log/remove-sentrel.log").find("\"result\":\"removed\""), std::string::npos);
    EXPECT_EQ(mac.shell("rm " + kScript + "; /opt/uninstall.sh").status, 1);

    ManagedMac loaded({"--empty", "--users", "alice:501"}, scripts);
    loaded.putExtension();
    const auto result = loaded.shell(kForgetExtension +
                                     "/opt/uninstall.sh; echo $? >&2; /opt/uninstallcheck.sh; echo $? >&2");
    EXPECT_EQ(result.err, "0\n0\n");
    EXPECT_NE(result.out.find("\"exitStatus\":11"), std::string::npos) << result.out;
}

}  // namespace

}  // namespace DeployTests
