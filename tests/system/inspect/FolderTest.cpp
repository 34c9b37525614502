// sentrel-inspect scan, verify and plan of a Mac in a folder.

#include "InspectRun.h"

namespace InspectTest {

namespace {

class Folder : public Inspect {
  protected:
    Folder() {
        std::filesystem::create_directories(path("Mac/Applications"));
        std::filesystem::create_directories(path("Mac/Library/LaunchDaemons"));
    }

    [[nodiscard]] Outcome ofFolder(const std::string& command,
                                   const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments{command, "--root", "Mac"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return inspect(arguments);
    }

    /// Puts a console of 12 bytes there, and a daemon's property list of 3.
    void install() const {
        std::filesystem::create_directories(path("Mac/Applications/Sentrel.app"));
        write("Mac/Applications/Sentrel.app/file", "Hello world\n");
        write("Mac/Library/LaunchDaemons/com.norvik.fileaccessd.plist", "abc");
    }

    const std::string root = path("Mac");
    const std::string notLookedAt =
        "Not looked at\n"
        "  jobs\n"
        "  processes\n"
        "  loaded kernel extensions\n"
        "  launchd overrides\n";
};

TEST_F(Folder, WithoutTheProductHasNothing) {
    const Outcome scan = ofFolder("scan");
    EXPECT_EQ(scan.status, 0);
    EXPECT_EQ(scan.errors, "");
    EXPECT_EQ(scan.output, "Nothing of Sentrel is in " + root + ".\n\n" + notLookedAt);
    EXPECT_EQ(ofFolder("scan", {"--removal-lines"}).output, "");
    EXPECT_EQ(ofFolder("scan", {"--plain"}).output,
              "verdict\tnothing\nuninstaller\trefuses: not installed\nhelper\tidle\n");
    const Outcome verify = ofFolder("verify");
    EXPECT_EQ(verify.status, 0);
    EXPECT_EQ(verify.output,
              "not looked at: jobs\n"
              "not looked at: processes\n"
              "not looked at: loaded kernel extensions\n"
              "not looked at: launchd overrides\n"
              "result: nothing, 0 found, exit status 0\n");
}

TEST_F(Folder, WithTheProductShowsIt) {
    install();
    const Outcome scan = ofFolder("scan");
    EXPECT_EQ(scan.status, 3);
    EXPECT_EQ(scan.output,
              "Sentrel is installed in " + root +
                  ".\n"
                  "Generations: current\n"
                  "\n"
                  "Items\n"
                  "  kind         size   files  path\n"
                  "  folder       12 B       1  /Applications/Sentrel.app\n"
                  "  file          3 B          /Library/LaunchDaemons/com.norvik.fileaccessd.plist\n"
                  "\n" +
                  notLookedAt);
    const Outcome facts = ofFolder("scan", {"--plain"});
    EXPECT_EQ(facts.status, 3);
    EXPECT_EQ(facts.output,
              "verdict\tinstalled\n"
              "uninstaller\tuninstalls\n"
              "helper\tidle\n"
              "item\tfolder\t" +
                  root +
                  "/Applications/Sentrel.app\n"
                  "item\tfile\t" +
                  root + "/Library/LaunchDaemons/com.norvik.fileaccessd.plist\n");
    const auto verified = nlohmann::json::parse(ofFolder("verify", {"--json"}).output);
    EXPECT_EQ(verified.at("verdict"), "installed");
    EXPECT_FALSE(verified.at("items").at(0).contains("bytes"));
    const auto scanned = nlohmann::json::parse(ofFolder("scan", {"--json"}).output);
    EXPECT_EQ(scanned.at("root"), root);
    EXPECT_EQ(scanned.at("items").at(0).at("bytes"), 12);
    EXPECT_EQ(scanned.at("items").at(1).at("bytes"), 3);
}

TEST_F(Folder, WithLeftoversHasTheirRemovalLines) {
    write("Mac/Library/LaunchDaemons/com.norvik.fileaccessd.plist", "abc");
    const Outcome lines = ofFolder("scan", {"--removal-lines"});
    EXPECT_EQ(lines.status, 4);
    EXPECT_EQ(lines.output, "sudo rm -f " + root + "/Library/LaunchDaemons/com.norvik.fileaccessd.plist\n");
}

TEST_F(Folder, HasAPlan) {
    install();
    const Outcome plan = ofFolder("plan");
    EXPECT_EQ(plan.status, 0) << plan.errors;
    EXPECT_EQ(plan.output,
              "31  Deleting user application Sentrel.app...\n"
              "      /Applications/Sentrel.app  (12 B in 1 file)\n"
              "69  Deleting launchd job com.norvik.fileaccessd...\n"
              "      /Library/LaunchDaemons/com.norvik.fileaccessd.plist  (3 B)\n"
              "2 of 75 steps find something: 15 B in 2 files.\n"
              "It takes a few seconds.\n"
              "Not looked at: jobs\n"
              "Not looked at: processes\n"
              "Not looked at: loaded kernel extensions\n"
              "Not looked at: launchd overrides\n");
    const auto all = nlohmann::json::parse(ofFolder("plan", {"--json", "--all"}).output);
    EXPECT_EQ(all.at("steps").size(), 75U);
    EXPECT_EQ(nlohmann::json::parse(ofFolder("plan", {"--json"}).output).at("steps").size(), 2U);
}

TEST_F(Folder, MustBeTheRootOfAMac) {
    std::filesystem::remove_all(path("Mac/Library"));
    for (const char* command : {"scan", "verify", "plan"}) {
        expectRefusal(ofFolder(command), 1,
                      "Mac: is not the root folder of a Mac: it has no folder Library\n");
    }
}

}  // namespace

}  // namespace InspectTest
