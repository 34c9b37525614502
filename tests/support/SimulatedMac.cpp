#include "support/SimulatedMac.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

#include "support/WholeFile.h"

namespace TestSupport {

namespace fs = std::filesystem;

namespace {

/// Seconds for helpers that are still at work when the command has ended.
constexpr const char* kHelpersPatience = "600";

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> column(const nlohmann::json& rows, const char* name) {
    std::vector<std::string> values;
    for (const auto& row : rows) {
        values.push_back(row.at(name).get<std::string>());
    }
    return values;
}

}  // namespace

SimulatedMac::SimulatedMac() {
    scratch_ = (fs::temp_directory_path() / "simulated-mac.XXXXXX").string();
    if (::mkdtemp(scratch_.data()) == nullptr) {
        throw std::runtime_error("no scratch folder");
    }
    ::chmod(scratch_.c_str(), 0755);
    folder_ = scratch_ + "/mac";
}

SimulatedMac::~SimulatedMac() {
    // Knows how to remove what belongs to the Mac's users; the rest is this user's own.
    static_cast<void>(runProgram({macsim(), "delete", folder_}));
    static_cast<void>(runProgram({"rm", "-rf", "--", scratch_}));
}

std::string SimulatedMac::macsim() {
    return SENTREL_BINARIES "/macsim";
}

ProgramResult SimulatedMac::create(const std::vector<std::string>& options) {
    std::vector<std::string> command{macsim(), "create", folder_};
    command.insert(command.end(), options.begin(), options.end());
    return runProgram(command);
}

ProgramResult SimulatedMac::run(const std::vector<std::string>& faults,
                                const std::vector<std::string>& command, const std::string& user) {
    std::vector<std::string> words{macsim(), "run", folder_, "--as", user, "--wait", kHelpersPatience};
    for (const std::string& fault : faults) {
        words.insert(words.end(), {"--fault", fault});
    }
    words.emplace_back("--");
    words.insert(words.end(), command.begin(), command.end());
    return runProgram(words);
}

ProgramResult SimulatedMac::shell(const std::string& line, const std::string& user) {
    return run({}, {"sh", "-c", line}, user);
}

std::string SimulatedMac::startOf(const std::string& program) {
    return program + " 1000 & p=$!\nuntil [ /proc/$p/exe -ef " + program + " ]; do :; done\n";
}

std::vector<std::string> SimulatedMac::log() const {
    return linesOf(contents("/var/log/system.log"));
}

std::vector<std::string> SimulatedMac::messages(const std::string& program) const {
    static const std::regex entry(R"(^[A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d Mac (.*?)\[(\d+)\]: (.*)$)");
    std::vector<std::string> texts;
    bool wanted = false;
    for (const std::string& line : log()) {
        std::smatch parts;
        if (std::regex_match(line, parts, entry)) {
            wanted = parts[1] == program;
            if (wanted) {
                texts.push_back(parts[3]);
            }
        } else if (wanted) {
            texts.back() += "\n" + line;
        }
    }
    return texts;
}

nlohmann::json SimulatedMac::state() const {
    auto parsed = nlohmann::json::parse(contents("/var/macsim/state.json"), nullptr, false);
    return parsed.is_object() ? parsed : nlohmann::json::object();
}

std::vector<std::string> SimulatedMac::jobs(const std::string& domain) const {
    const auto recorded = state();
    return recorded.contains("jobs") && recorded["jobs"].contains(domain)
               ? column(recorded["jobs"][domain], "label")
               : std::vector<std::string>{};
}

std::vector<std::string> SimulatedMac::processes() const {
    const auto recorded = state();
    return recorded.contains("processes") ? column(recorded["processes"], "name")
                                          : std::vector<std::string>{};
}

std::string SimulatedMac::contents(const std::string& macPath) const {
    return contentsOf(path(macPath));
}

bool SimulatedMac::exists(const std::string& macPath) const {
    std::error_code error;
    return fs::exists(fs::symlink_status(path(macPath), error));
}

void SimulatedMac::put(const std::string& macPath, const std::string& bytes, unsigned mode) const {
    fs::create_directories(fs::path(path(macPath)).parent_path());
    std::ofstream(path(macPath), std::ios::binary) << bytes;
    ::chmod(path(macPath).c_str(), mode);
}

void SimulatedMac::putCopy(const std::string& macPath, const std::string& hostFile, unsigned mode) const {
    fs::create_directories(fs::path(path(macPath)).parent_path());
    fs::copy_file(hostFile, path(macPath), fs::copy_options::overwrite_existing);
    ::chmod(path(macPath).c_str(), mode);
}

}  // namespace TestSupport
