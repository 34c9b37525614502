#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "BlessingMac.h"

namespace {

using BlessingTests::kClient;
using BlessingTests::kLabel;
using BlessingTests::kRefused;
using BlessingTests::kTool;
using BlessingTests::MacsimBlessing;

TEST_F(MacsimBlessing, OnlyRootIsAuthorized) {
    for (const char* flags : {"2", "3"}) {
        EXPECT_EQ(client({"authorize", flags, ",", "bless", kLabel}, {}, "alice").out,
                  std::string("denied\n4 ") + kRefused + "4.)\n");
    }
    EXPECT_FALSE(mac_.exists(kTool));
}

TEST_F(MacsimBlessing, AnAuthorizationIsGoodForItsOwnProcessOnly) {
    const std::string line = std::string(kClient) +
                             " raw authorize 2 system.privilege.admin | sed 's/^0.//' >/tmp/t; " + kClient +
                             " raw bless $(cat /tmp/t) " + kLabel;
    EXPECT_EQ(mac_.shell(line).out, std::string("4|") + kRefused + "4.)\n");
    EXPECT_EQ(mac_.contents("/tmp/t").size(), 33U);
}

TEST_F(MacsimBlessing, BothSidesMustNameEachOther) {
    putInfo("com.example.client", "com.example.unrelated");
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    putInfo("com.example.stranger", kLabel);
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    EXPECT_EQ(mac_.messages("launchd"),
              (std::vector<std::string>{"Blessing of com.norvik.InstallerHelper refused: the application's "
                                        "SMPrivilegedExecutables do not name it",
                                        "Blessing of com.norvik.InstallerHelper refused: its "
                                        "SMAuthorizedClients do not name the application"}));
}

TEST_F(MacsimBlessing, RefusesAToolWithoutProperContents) {
    const std::string tool =
        std::string("/Applications/Client.app/Contents/Library/LaunchServices/") + kLabel;
    mac_.put(tool, "#!/bin/sh\n", 0755);
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
    std::filesystem::remove(mac_.path(tool));
    EXPECT_EQ(client({"authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n6 ") + kRefused + "6.)\n");
    EXPECT_EQ(client({"authorize", "2", ",", "bless", "../../../tmp/x"}).out,
              std::string("granted\n6 ") + kRefused + "6.)\n");
}

TEST_F(MacsimBlessing, RefusesAProgramOutsideAnyApplication) {
    mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
    EXPECT_EQ(mac_.run({}, {"client", "authorize", "2", ",", "bless", kLabel}).out,
              std::string("granted\n3 ") + kRefused + "3.)\n");
}

TEST_F(MacsimBlessing, IdentifiesApplicationsThatOnlyRootCanHaveWritten) {
    EXPECT_EQ(client({"identify-self"}).out, "0|com.example.client\n");
    EXPECT_EQ(client({"identify-self"}, {}, "alice").out, "0|com.example.client\n");
    EXPECT_EQ(client({"identify", "1"}).out, "1|\n");
    EXPECT_EQ(client({"identify", "99999"}).out, "1|\n");
    EXPECT_EQ(client({"identify", "nonsense"}).out, "1|\n");
}

TEST_F(MacsimBlessing, IdentifiesNoApplicationThatSomebodyElseMayHaveWritten) {
    ASSERT_EQ(mac_.shell("cp -R /Applications/Client.app ~/Client.app", "alice").status, 0);
    EXPECT_EQ(mac_.run({}, {"/Users/alice/Client.app/Contents/MacOS/client", "identify-self"}).out, "1|\n");
    for (const char* item :
         {"", "/Contents", "/Contents/MacOS", "/Contents/MacOS/client", "/Contents/Info.plist"}) {
        const std::string path = std::string("/Applications/Client.app") + item;
        EXPECT_EQ(mac_.shell("chmod o+w " + path + "; " + kClient + " identify-self; chmod o-w " + path).out,
                  "1|\n")
            << path;
    }
    EXPECT_EQ(client({"identify-self"}).out, "0|com.example.client\n");
}

}  // namespace
