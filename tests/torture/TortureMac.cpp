#include "TortureMac.h"
#include "support/InstallerLine.h"
#include "support/WholeFile.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <set>
#include <stdexcept>

#include <sys/stat.h>

namespace Torture {

using TestSupport::installerLine;

namespace fs = std::filesystem;

namespace {

const std::vector<std::string> kHelperLabels{
    "com.norvik.DiagnosticUtilityHelper", "com.norvik.InstallerHelper", "com.norvik.SolutionUpdaterHelper",
    "com.norvik.UninstallerHelper", "com.norvik.SupportPrivilegedHelper"};

constexpr std::chrono::seconds kLongestRun{400};
constexpr std::size_t kShownLines = 12;

bool isHelperLabel(const std::string& label) {
    return std::find(kHelperLabels.begin(), kHelperLabels.end(), label) != kHelperLabels.end();
}

/// The folders that command 74 removes after the last one that counts as an installation; they are empty, or
/// what is in them is listed too.
bool isEmptiedFolder(const std::string& path) {
    return path == "/Library/Application Support/Norvik" || path == "/Applications/Norvik" ||
           path == "/Applications/NORVIK" || path == "/Library/Application Support/Norvik/AntiVirus";
}

std::string hashOfFile(const fs::path& file) {
    return std::to_string(std::hash<std::string>()(TestSupport::contentsOf(file)));
}

std::string descriptionOf(const fs::path& item) {
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) {
        return "unreadable";
    }
    std::string text = std::to_string(status.st_mode) + " " + std::to_string(status.st_uid) + ":" +
                       std::to_string(status.st_gid);
    if (S_ISLNK(status.st_mode)) {
        text += " -> " + fs::read_symlink(item).string();
    } else if (S_ISREG(status.st_mode)) {
        text += " " + std::to_string(status.st_size) + " " + hashOfFile(item);
    }
    return text;
}

/// Collects differences and remembers whether all of them are the helpers'.
class Differences {
  public:
    void add(const std::string& what, bool isHelpers) {
        if (count_++ < kShown) {
            text_ += (text_.empty() ? "" : ", ") + what;
        }
        onlyHelpers_ = onlyHelpers_ && isHelpers;
    }
    [[nodiscard]] End end() const {
        if (count_ == 0) {
            return {End::Kind::clean, ""};
        }
        const std::string more = count_ > kShown ? " and " + std::to_string(count_ - kShown) + " more" : "";
        return {onlyHelpers_ ? End::Kind::helpersLeft : End::Kind::lost, text_ + more};
    }

  private:
    static constexpr int kShown = 8;
    int count_ = 0;
    bool onlyHelpers_ = true;
    std::string text_;
};

}  // namespace

bool isHelperFile(const std::string& path) {
    const std::string tools = "/Library/PrivilegedHelperTools/";
    const std::string daemons = "/Library/LaunchDaemons/";
    const std::string extension = ".plist";
    if (path.starts_with(tools)) {
        return isHelperLabel(path.substr(tools.size()));
    }
    return path.starts_with(daemons) && path.ends_with(extension) &&
           isHelperLabel(path.substr(daemons.size(), path.size() - daemons.size() - extension.size()));
}

TortureMac::TortureMac(bool installed) {
    std::vector<std::string> options{"--users", "alice:501,bob:502,carol:503:logged-out"};
    if (installed) {
        options.insert(options.end(), {"--installed", "all", "--running", "all"});
    }
    const auto created = create(options);
    if (created.status != 0) {
        throw std::runtime_error("no Mac: " + created.err);
    }
    putBystanders();
    fs::create_directories(path("/Volumes/Uninstall"));
    copy(SENTREL_BINARIES "/Uninstall Sentrel.app", "/Volumes/Uninstall");
    copy(SENTREL_TORTURE_TOOLS, kTools);
}

void TortureMac::copy(const std::string& hostItem, const std::string& macPath) const {
    const auto copied = TestSupport::runProgram({"cp", "-R", "--", hostItem, path(macPath)});
    if (copied.status != 0) {
        throw std::runtime_error("no copy: " + copied.err);
    }
}

void TortureMac::putBystanders() const {
    for (const char* place :
         {"/Applications/Other.app/Contents/Info.plist", "/Applications/NORVIKS/keep",
          "/Applications/Sentrel.app.keep", "/Library/Application Support/NORVIK Tools/keep",
          "/Library/Application Support/Other/keep", "/Library/Extensions/Other.kext/Contents/Info.plist",
          "/Library/Services/Scan with Other.workflow/keep",
          "/Library/PrivilegedHelperTools/org.other.helper", "/Users/Shared/Other/keep",
          "/Users/alice/Documents/Sentrel.txt", "/Users/bob/NORVIK/SNT/keep"}) {
        put(place, std::string("keep ") + place);
    }
    fs::create_symlink("/Users/alice/Documents", path("/Users/Shared/link to alice"));
}

void TortureMac::putInUninstallersPlace(const std::string& name) const {
    fs::remove(path(kUninstaller));
    copy(SENTREL_TORTURE_TOOLS "/" + name, kUninstaller);
}

TestSupport::ProgramResult TortureMac::shellWith(const std::vector<std::string>& faults,
                                                 const std::string& line) {
    std::vector<std::string> words{macsim(), "run", path()};
    for (const std::string& fault : faults) {
        words.insert(words.end(), {"--fault", fault});
    }
    words.insert(words.end(), {"--", "sh", "-c", line});
    auto result = TestSupport::runProgram(words, kLongestRun);
    if (state().empty()) {
        throw std::runtime_error("the Mac did not come up or did not end: " + result.err);
    }
    return result;
}

TestSupport::ProgramResult TortureMac::uninstall(const std::vector<std::string>& faults) {
    return shellWith(faults, quoted(kUninstaller) + " --silent");
}

std::string TortureMac::lastWord() const {
    const std::string prefix = installerLine("");
    const auto lines = messages("Uninstall Sentrel");
    if (lines.empty()) {
        return "nothing";
    }
    return lines.back().starts_with(prefix) ? lines.back().substr(prefix.size()) : lines.back();
}

bool TortureMac::foundNothing() const {
    const auto lines = messages("Uninstall Sentrel");
    return lines.size() >= 2 && lines[lines.size() - 2] == "Antivirus cannot be uninstalled";
}

std::string TortureMac::endOfLog() const {
    const auto lines = log();
    std::string text;
    for (std::size_t index = lines.size() - std::min(lines.size(), kShownLines); index < lines.size();
         ++index) {
        text += "\n    " + lines[index];
    }
    return text;
}

Inventory TortureMac::inventory() const {
    Inventory items;
    for (const char* place :
         {"/Applications", "/Library", "/Users", "/System/Library/Extensions", "/Volumes"}) {
        std::error_code absent;
        if (!fs::exists(path(place), absent)) {
            continue;
        }
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path(place))) {
            items[entry.path().string().substr(path().size())] = descriptionOf(entry.path());
        }
    }
    return items;
}

std::vector<std::string> TortureMac::left(const Inventory& undisturbed) const {
    std::vector<std::string> paths;
    for (const auto& [path, description] : inventory()) {
        if (!undisturbed.contains(path)) {
            paths.push_back(path);
        }
    }
    return paths;
}

std::string TortureMac::harmed(const Inventory& undisturbed) const {
    const Inventory found = inventory();
    std::string text;
    for (const auto& [path, description] : undisturbed) {
        const auto item = found.find(path);
        if (item == found.end()) {
            text += " missing " + path;
        } else if (item->second != description) {
            text += " changed " + path;
        }
    }
    return text;
}

End TortureMac::end(const Inventory& undisturbed) const {
    Differences differences;
    const nlohmann::json recorded = state();
    for (const auto& [domain, registered] : recorded.at("jobs").items()) {
        for (const auto& job : registered) {
            const auto label = job.at("label").get<std::string>();
            differences.add("job " + label, isHelperLabel(label));
        }
    }
    for (const std::string& process : processes()) {
        differences.add("process " + process, false);
    }
    for (const auto& extension : recorded.at("kexts")) {
        differences.add("kernel extension " + extension.get<std::string>(), false);
    }
    for (const std::string& path : left(undisturbed)) {
        differences.add("left " + path, isHelperFile(path) || isEmptiedFolder(path));
    }
    if (const std::string harm = harmed(undisturbed); !harm.empty()) {
        differences.add(harm, false);
    }
    return differences.end();
}

Inventory undisturbedInventory() {
    TortureMac mac;
    static_cast<void>(mac.uninstall({"helper-pause=0.05"}));
    const nlohmann::json recorded = mac.state();
    if (mac.lastWord() != "Uninstallation finished." || !recorded.at("productPaths").empty()) {
        throw std::runtime_error("the undisturbed run ended with " + mac.lastWord() + ", left " +
                                 recorded.at("productPaths").dump());
    }
    return mac.inventory();
}

std::string quoted(const std::string& text) {
    std::string word = "'";
    for (const char each : text) {
        word += each == '\'' ? "'\\''" : std::string(1, each);
    }
    return word + "'";
}

}  // namespace Torture
