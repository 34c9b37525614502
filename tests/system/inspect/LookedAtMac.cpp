#include "LookedAtMac.h"

#include <gtest/gtest.h>

namespace InspectTest {

using TestSupport::ProgramResult;

namespace {

constexpr const char* kProgram = "/usr/local/bin/sentrel-inspect";

}  // namespace

LookedAtMac::LookedAtMac(const std::vector<std::string>& options) {
    const ProgramResult result = create(options);
    EXPECT_EQ(result.status, 0) << result.err;
    putCopy(kProgram, INSPECT_PROGRAM);
}

ProgramResult LookedAtMac::inspect(const std::vector<std::string>& arguments, const std::string& user,
                                   const std::vector<std::string>& faults) {
    std::vector<std::string> command{kProgram};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(faults, command, user);
}

ProgramResult LookedAtMac::inspectFolder(const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{INSPECT_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.insert(command.end(), {"--root", path()});
    return TestSupport::runProgram(command);
}

void LookedAtMac::putJob(const std::string& plist, const std::string& label, const std::string& program,
                         const std::string& script, const std::string& more) const {
    put(program, "#!/bin/sh\n" + script + "\n", 0755);
    put(plist,
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict><key>Label</key><string>" +
            label + "</string><key>ProgramArguments</key><array><string>" + program + "</string></array>" +
            more + "</dict></plist>\n");
}

nlohmann::json jsonOf(const ProgramResult& result) {
    EXPECT_EQ(result.err, "");
    auto document = nlohmann::json::parse(result.out, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << result.out;
    return document;
}

void expectResult(const ProgramResult& result, int status, const std::string& output) {
    EXPECT_EQ(result.status, status);
    EXPECT_EQ(result.out, output);
    EXPECT_EQ(result.err, "");
}

std::vector<std::string> column(const nlohmann::json& array, const char* property) {
    std::vector<std::string> values;
    for (const auto& each : array) {
        values.push_back(each.at(property).get<std::string>());
    }
    return values;
}

}  // namespace InspectTest
