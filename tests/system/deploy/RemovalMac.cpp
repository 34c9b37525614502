#include "RemovalMac.h"

#include <gtest/gtest.h>

#include <sstream>

namespace DeployTests {

using TestSupport::ProgramResult;
using TestSupport::runProgram;

std::string joined(std::initializer_list<std::string_view> texts) {
    std::string all;
    for (const std::string_view text : texts) {
        all += text;
    }
    return all;
}

std::size_t countOf(std::string_view part, std::string_view text) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string_view::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

RemovalMac::RemovalMac(const std::vector<std::string>& options, bool withUninstaller) {
    const ProgramResult made = create(options);
    EXPECT_EQ(made.status, 0) << made.err;
    putCopy(kScript, REMOVE_SCRIPT);
    putCopy(kInspect, INSPECT_PROGRAM);
    if (withUninstaller) {
        EXPECT_EQ(runProgram({"cp", "-R", SENTREL_BINARIES "/Uninstall Sentrel.app", path(kKit)}).status, 0);
        EXPECT_EQ(runProgram({"chmod", "-R", "a+rX", path(kKit)}).status, 0);
    }
}

ProgramResult RemovalMac::underFaults(const std::vector<std::string>& faults, const std::string& line) {
    std::vector<std::string> command{macsim(), "run", path()};
    for (const std::string& fault : faults) {
        command.insert(command.end(), {"--fault", fault});
    }
    command.insert(command.end(), {"--", "sh", "-c", line});
    return runProgram(command);
}

std::vector<std::string> RemovalMac::launchctlChanges() const {
    const ProgramResult result = runProgram({macsim(), "transcript", path(), "--json"});
    EXPECT_EQ(result.status, 0) << result.err;
    std::vector<std::string> changes;
    std::istringstream lines(result.out);
    for (std::string line; std::getline(lines, line);) {
        const auto call = nlohmann::json::parse(line, nullptr, false);
        const auto words = call.value("arguments", std::vector<std::string>());
        if (call.value("program", "") != "/bin/launchctl" || words.empty() || words[0].starts_with("print") ||
            words[0] == "list") {
            continue;
        }
        std::string text;
        for (const std::string& word : words) {
            text += (text.empty() ? "" : " ") + word;
        }
        changes.push_back(text);
    }
    return changes;
}

std::string RemovalMac::verdictFromOutside() const {
    const std::string out = runProgram({INSPECT_PROGRAM, "verify", "--root", path()}).out;
    const auto last = out.rfind('\n', out.size() - 2);
    return out.substr(last == std::string::npos ? 0 : last + 1);
}

nlohmann::json lineOf(const ProgramResult& result) {
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.find('\n'), result.out.size() - 1) << result.out;
    auto line = nlohmann::json::parse(result.out, nullptr, false);
    if (!line.is_object()) {
        ADD_FAILURE() << result.out;
        return nlohmann::json::object();
    }
    EXPECT_EQ(line.value("exitStatus", -1), result.status);
    EXPECT_EQ(line.value("formatVersion", -1), 1);
    return line;
}

void expectOutcome(const ProgramResult& result, int status, const std::string& word, bool changed) {
    const auto line = lineOf(result);
    EXPECT_EQ(result.status, status) << result.out;
    EXPECT_EQ(line.value("result", ""), word) << result.out;
    EXPECT_EQ(line.at("changed"), changed) << result.out;
}

}  // namespace DeployTests
