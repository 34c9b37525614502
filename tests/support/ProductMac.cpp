#include "support/ProductMac.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>

namespace SystemTests {

namespace fs = std::filesystem;

ProductMac::ProductMac(const std::vector<std::string>& options) {
    const TestSupport::ProgramResult created = create(options);
    EXPECT_EQ(created.status, 0) << created.err;
}

std::string withoutLogEntries(const std::string& standardError) {
    static const std::regex kEntry(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} [^\[]+\[\d+:\d+\] .*)");
    std::string rest;
    std::istringstream lines(standardError);
    for (std::string line; std::getline(lines, line);) {
        rest += std::regex_match(line, kEntry) ? "" : line + "\n";
    }
    return rest;
}

TestSupport::ProgramResult ProductMac::uninstall(const std::vector<std::string>& faults,
                                                 const std::string& user) {
    return run(faults, {kInstalledUninstaller, "--silent"}, user);
}

std::string ProductMac::makePayload(const std::string& version) const {
    std::string folder = scratch() + "/payload-" + version;
    std::replace(folder.begin() + static_cast<std::ptrdiff_t>(scratch().size()) + 1, folder.end(), '/', '-');
    const auto made = TestSupport::runProgram({macsim(), "payload", folder, "--version", version});
    EXPECT_EQ(made.status, 0) << made.err;
    return folder;
}

TestSupport::ProgramResult ProductMac::install(const std::string& payload,
                                               const std::vector<std::string>& options) {
    std::vector<std::string> command{macsim(), "install", path(), "--payload", payload};
    command.insert(command.end(), options.begin(), options.end());
    TestSupport::ProgramResult result = TestSupport::runProgram(command);
    result.err = withoutLogEntries(result.err);
    return result;
}

std::vector<std::string> ProductMac::transcript() const {
    const auto printed = TestSupport::runProgram({macsim(), "transcript", path(), "--json"});
    EXPECT_EQ(printed.status, 0) << printed.err;
    std::vector<std::string> calls;
    std::istringstream lines(printed.out);
    for (std::string line; std::getline(lines, line);) {
        const nlohmann::json call = nlohmann::json::parse(line);
        std::string text = call.at("realUser").dump() + "/" + call.at("effectiveUser").dump() + " " +
                           call.at("program").get<std::string>();
        for (const auto& argument : call.at("arguments")) {
            text += " " + argument.get<std::string>();
        }
        calls.push_back(text);
    }
    return calls;
}

void ProductMac::putUninstaller(const std::string& folder) const {
    fs::create_directories(path(folder));
    fs::copy(fs::path(SENTREL_BINARIES) / "Uninstall Sentrel.app", path(folder) + "/Uninstall Sentrel.app",
             fs::copy_options::recursive);
}

void ProductMac::putBystanders() const {
    put("/Applications/Other.app/Contents/Info.plist", "other");
    put("/Applications/NORVIKS/keep", "a name that begins like the maker's");
    put("/Library/Application Support/NORVIK Tools/keep", "the same");
    put("/Library/Application Support/Other/keep", "keep");
    put("/Library/Extensions/Other.kext/Contents/Info.plist", "other");
    put("/Library/Services/Scan with Other.workflow/keep", "keep");
    put("/Library/PrivilegedHelperTools/org.other.helper", "keep");
    put("/Users/Shared/Other/keep", "keep");
    put("/Users/alice/Documents/Sentrel.txt", "keep");
    fs::create_symlink("/Users/alice/Documents", path("/Users/Shared/link to alice"));
}

std::set<std::string> ProductMac::inventory() const {
    std::set<std::string> items;
    for (const char* place : {"/Applications", "/Library", "/Users", "/System"}) {
        const auto options = fs::directory_options::none;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path(place), options)) {
            const char* kind = entry.is_symlink() ? "link " : entry.is_directory() ? "folder " : "file ";
            items.insert(kind + entry.path().string().substr(path().size()));
        }
    }
    return items;
}

void ProductMac::expectClean() const {
    const nlohmann::json end = state();
    ASSERT_FALSE(end.empty());
    for (const auto& [domain, registered] : end.at("jobs").items()) {
        EXPECT_TRUE(registered.empty()) << domain << ": " << registered.dump();
    }
    EXPECT_TRUE(end.at("processes").empty()) << end.at("processes").dump();
    EXPECT_TRUE(end.at("kexts").empty()) << end.at("kexts").dump();
    EXPECT_TRUE(end.at("productPaths").empty()) << end.at("productPaths").dump();
}

void ProductMac::expectInstalled() const {
    EXPECT_TRUE(exists("/Applications/Sentrel.app/Contents/MacOS/Sentrel"));
    EXPECT_TRUE(exists("/Library/Application Support/NORVIK/SNT/settings.plist"));
    EXPECT_TRUE(exists("/Library/LaunchDaemons/com.norvik.fileaccessd.plist"));
    EXPECT_TRUE(exists("/Library/LaunchAgents/com.norvik.TrayMenu.plist"));
    EXPECT_TRUE(exists("/Library/PrivilegedHelperTools/com.norvik.SolutionUpdaterHelper"));
}

}  // namespace SystemTests
