#include <gtest/gtest.h>

#include "Support/PropertyList.h"
#include "support/SimulatedMac.h"

namespace {

using TestSupport::SimulatedMac;

std::string nestedArrays(int depth) {
    std::string text = "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Label</key>";
    for (int level = 0; level < depth; ++level) {
        text += "<array>";
    }
    for (int level = 0; level < depth; ++level) {
        text += "</array>";
    }
    return text + "</dict></plist>";
}

class MacsimSturdiness : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mac_.create().status, 0);
        mac_.put("/Library/LaunchDaemons/com.example.good.plist",
                 "<?xml version=\"1.0\"?><plist "
                 "version=\"1.0\"><dict><key>Label</key><string>com.example.good</string>"
                 "<key>Program</key><string>/usr/local/bin/good</string><key>RunAtLoad</key><true/></dict></"
                 "plist>");
        mac_.put("/usr/local/bin/good", "#!/bin/sh\nexec sleep 1000\n", 0755);
    }

    /// The Mac boots, the good job runs, and launchd answers.
    void expectWell() {
        const auto result = mac_.shell("launchctl print system/com.example.good | grep -c pid");
        EXPECT_EQ(result.out, "1\n") << result.err;
        EXPECT_EQ(mac_.jobs("system"), std::vector<std::string>{"com.example.good"});
    }

    SimulatedMac mac_;
};

TEST_F(MacsimSturdiness, HostilePropertyListsCostOneLineEach) {
    mac_.put("/Library/LaunchDaemons/a-deep.plist", nestedArrays(45'000));
    mac_.put("/Library/LaunchDaemons/b-empty.plist", "");
    mac_.put("/Library/LaunchDaemons/c-noise.plist",
             std::string("bplist00\xff\xff\xff\xff\xff\xff\xff\xff\xff\xff", 18));
    mac_.put("/Library/LaunchDaemons/d-huge.plist", std::string(8U << 20U, ' '));
    mac_.put("/Library/LaunchDaemons/e-label.plist",
             "<plist><dict><key>Label</key><string>../../x</string></dict></plist>");
    mac_.put(
        "/Library/LaunchDaemons/f-types.plist",
        "<plist><dict><key>Label</key><integer>7</integer><key>MachServices</key><string/></dict></plist>");
    expectWell();
    EXPECT_EQ(mac_.messages("launchd").size(), 6U);
}

TEST_F(MacsimSturdiness, PropertyListsThatAreNoFilesAreSkipped) {
    ASSERT_EQ(mac_.shell("cd /Library/LaunchDaemons; mkfifo fifo.plist; ln -s fifo.plist to-fifo.plist; "
                         "ln -s loop.plist loop.plist; mkdir folder.plist; ln -s /dev/zero zero.plist; ln -s "
                         "/none none.plist")
                  .status,
              0);
    expectWell();
}

TEST_F(MacsimSturdiness, BrokenAndDisabledJobsAreSkipped) {
    const auto put = [this](const char* name, const char* body) {
        mac_.put(std::string("/Library/LaunchDaemons/") + name,
                 std::string("<plist version=\"1.0\"><dict>") + body + "</dict></plist>");
    };
    put("a.plist", "<key>Label</key><string>com.example.a</string>");
    put("b.plist",
        "<key>Label</key><string>com.example.b</string><key>Program</key><string>relative</string>");
    put("c.plist",
        "<key>Label</key><string>com.example.c</string><key>Program</key><string>/usr/bin/true</string>"
        "<key>Disabled</key><true/>");
    expectWell();
    EXPECT_EQ(
        mac_.messages("launchd"),
        (std::vector<std::string>{
            "Job not loaded into system: /Library/LaunchDaemons/a.plist names no program by an absolute path",
            "Job not loaded into system: /Library/LaunchDaemons/b.plist names no program by an absolute path",
            "Job not loaded into system: com.example.c is disabled"}));
}

TEST_F(MacsimSturdiness, AJobWhoseProgramIsMissingStaysRegistered) {
    mac_.put(
        "/Library/LaunchDaemons/com.example.gone.plist",
        "<plist version=\"1.0\"><dict><key>Label</key><string>com.example.gone</string><key>Program</key>"
        "<string>/no/such</string><key>RunAtLoad</key><true/></dict></plist>");
    ASSERT_EQ(mac_.shell("launchctl print system/com.example.gone").status, 0);
    EXPECT_EQ(mac_.messages("launchd"),
              std::vector<std::string>{
                  "Job com.example.gone cannot be started: /no/such: No such file or directory"});
}

TEST_F(MacsimSturdiness, WhatAJobLeavesBehindIsEndedWithIt) {
    mac_.put("/usr/local/bin/good", "#!/bin/sh\nsleep 987 &\n(sleep 986 &) \nexec sleep 1000\n", 0755);
    ASSERT_EQ(mac_.shell("until [ $(pgrep -cx sleep) = 3 ]; do sleep 0.05; done; launchctl bootout "
                         "system/com.example.good; "
                         "while pgrep -x sleep >/dev/null; do :; done")
                  .status,
              0);
    EXPECT_TRUE(mac_.processes().empty()) << ::testing::PrintToString(mac_.processes());
}

TEST_F(MacsimSturdiness, OrphansAreReaped) {
    const auto result = mac_.shell(
        "until pgrep -x sleep >/dev/null; do :; done; "
        "for i in 1 2 3 4 5 6 7 8; do (sh -c 'sleep 0.05 &' &) ; done; "
        // Only the good job's is left; an ended process that nobody has reaped keeps its name.
        "until [ $(pgrep -cx sleep) = 1 ]; do :; done; echo reaped");
    EXPECT_EQ(result.out, "reaped\n");
}

TEST_F(MacsimSturdiness, GarbageOnTheServicesSocketIsSurvived) {
    mac_.putCopy("/usr/local/bin/client", SENTREL_FIXTURES "/macsim_client");
    const auto result = mac_.shell(
        "ulimit -n 1024; client garbage; client raw nonsense; client raw bless; client raw launchctl "
        "print system/com.example.good | grep -c pid; client identify -5",
        "alice");
    EXPECT_EQ(result.out, "sent\nno reply\nno reply\n1\n1|\n");
    expectWell();
}

TEST_F(MacsimSturdiness, GarbageInTheLogIsSurvived) {
    const auto result = mac_.shell(
        "python3 -c 'import socket\n"
        "s=socket.socket(socket.AF_UNIX,socket.SOCK_DGRAM)\n"
        "s.connect(\"/dev/log\")\n"
        "for m in [b\"\", b\"<\", b\"<999999999>\", b\"\\0\\0\", b\"[[[]:\", b\"x\"*100000, b\"\\xff\\xfe: "
        "\"]: s.send(m)'",
        "alice");
    ASSERT_EQ(result.status, 0) << result.err;
    expectWell();
}

TEST_F(MacsimSturdiness, AProcessCannotPretendToBeAnother) {
    ASSERT_EQ(mac_.shell("logger -t launchd --id=1 forged", "alice").status, 0);
    const auto log = mac_.log();
    ASSERT_EQ(log.size(), 1U);
    EXPECT_EQ(log[0].find("launchd[1]"), std::string::npos) << log[0];
}

TEST(MacsimPropertyLists, HostileBytesNeverHurtTheReader) {
    EXPECT_FALSE(Simulator::parseHostilePropertyList(nestedArrays(200'000)));
    EXPECT_FALSE(Simulator::parseHostilePropertyList("garbage"));
    EXPECT_FALSE(Simulator::parseHostilePropertyList(""));
    const Simulator::PropertyList list{{"a", {{"b", {1, "two", true}}}}};
    for (const auto form : {Simulator::PropertyListForm::xml, Simulator::PropertyListForm::binary}) {
        EXPECT_EQ(Simulator::parseHostilePropertyList(Simulator::writePropertyList(list, form)), list);
    }
}

}  // namespace
