// The Ansible role, played by ansible-playbook inside a simulated Mac.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>

#include "RemovalMac.h"

namespace DeployTests {

namespace {

using testing::HasSubstr;
using TestSupport::ProgramResult;
using TestSupport::runProgram;

/// A Mac with the role, where ansible-playbook manages the Mac that it runs on.
class AnsibleMac : public RemovalMac {
  public:
    explicit AnsibleMac(const std::vector<std::string>& options) : RemovalMac(options) {
        EXPECT_EQ(runProgram({"cp", "-R", DEPLOY_FOLDER "/ansible", path("/var/root/ansible")}).status, 0);
    }
    ProgramResult play(const std::string& options, const std::vector<std::string>& faults = {}) {
        return underFaults(
            faults,
            "cd /var/root/ansible && HOME=/var/root ANSIBLE_NOCOLOR=1 ansible-playbook -i localhost, -c "
            "local remove-sentrel.yml " +
                options);
    }
};

/// "changed=1 failed=0" of the recap, which a play without one does not have.
std::string recapOf(const ProgramResult& result) {
    std::smatch parts;
    if (!std::regex_search(result.out, parts,
                           std::regex(R"(localhost +: ok=\d+ +(changed=\d+) .*(failed=\d+))"))) {
        return result.out + result.err;
    }
    return parts[1].str() + " " + parts[2].str();
}

TEST(AnsibleRole, PlansInCheckModeThenRemovesThenHasNothingToDo) {
    AnsibleMac mac({"--installed", "antivir", "--users", "alice:501"});
    const auto planned = mac.play("--check");
    EXPECT_EQ(planned.status, 0);
    EXPECT_EQ(recapOf(planned), "changed=1 failed=0");
    EXPECT_THAT(planned.out, HasSubstr("\"Sentrel would be uninstalled.\""));
    EXPECT_EQ(mac.launchctlChanges(), std::vector<std::string>());
    EXPECT_FALSE(mac.exists("/var/log/remove-sentrel.log"));

    const auto removed = mac.play("-e remove_sentrel_time_limit=500");
    EXPECT_EQ(removed.status, 0);
    EXPECT_EQ(recapOf(removed), "changed=1 failed=0");
    EXPECT_EQ(mac.verdictFromOutside(), "result: nothing, 0 found, exit status 0\n");
    EXPECT_THAT(mac.contents("/var/log/remove-sentrel.log"), HasSubstr("\"result\":\"removed\""));

    const auto again = mac.play("");
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(recapOf(again), "changed=0 failed=0");
    EXPECT_EQ(mac.launchctlChanges(), std::vector<std::string>());
}

TEST(AnsibleRole, FailsWithTheReasonWhereSentrelStays) {
    AnsibleMac mac({"--installed", "antivir", "--users", "alice:501"});
    const auto refused = mac.play("-e remove_sentrel_log=", {"bless-installer"});
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(recapOf(refused), "changed=0 failed=1");
    EXPECT_THAT(refused.out, HasSubstr("Sentrel is still installed: "));
    EXPECT_FALSE(mac.exists("/var/log/remove-sentrel.log"));
    const auto blind = mac.underFaults({}, "rm " + kInspect +
                                               "; cd /var/root/ansible; HOME=/var/root ansible-playbook -i "
                                               "localhost, -c local remove-sentrel.yml");
    EXPECT_EQ(recapOf(blind), "changed=0 failed=1");
}

TEST(AnsibleRole, TellsThatARestartIsNeeded) {
    AnsibleMac mac({"--empty", "--users", "alice:501"});
    mac.put(
        "/Library/Extensions/FileAccessFilter.kext/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>com.norvik.kext.FileAccessFilter"
        "</string></dict></plist>");
    mac.put("/var/root/ansible/restart.yml",
            "- hosts: all\n  gather_facts: false\n  roles: [remove_sentrel]\n  post_tasks:\n"
            "    - ansible.builtin.debug:\n        msg: 'restart: {{ remove_sentrel_restart_needed }}'\n");
    const auto played = mac.shell(
        "cd /var/root/ansible; play() { HOME=/var/root ansible-playbook -i localhost, -c local "
        "restart.yml; }; play; play");
    EXPECT_EQ(played.status, 0) << played.out;
    // The first one removes the files, the second one finds nothing that it could do.
    const auto second = played.out.rfind("PLAY [all]");
    EXPECT_THAT(played.out.substr(0, second), HasSubstr("changed=1"));
    EXPECT_THAT(played.out.substr(0, second), HasSubstr("restart: True"));
    EXPECT_THAT(played.out.substr(second), HasSubstr("changed=0"));
    EXPECT_THAT(played.out.substr(second), HasSubstr("restart: True"));
    const auto restarted =
        mac.shell("cd /var/root/ansible; HOME=/var/root ansible-playbook -i localhost, -c local restart.yml");
    EXPECT_THAT(restarted.out, HasSubstr("restart: False"));
}

}  // namespace

}  // namespace DeployTests
