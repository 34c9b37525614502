#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/SimulatedMac.h"

namespace InspectTest {

/// A simulated Mac with sentrel-inspect in it.
class LookedAtMac : public TestSupport::SimulatedMac {
  public:
    /// Makes the Mac; a failure to do so fails the test.
    explicit LookedAtMac(const std::vector<std::string>& options);

    /// Runs sentrel-inspect in the booted Mac.
    TestSupport::ProgramResult inspect(const std::vector<std::string>& arguments,
                                       const std::string& user = "root",
                                       const std::vector<std::string>& faults = {});
    /// Runs it outside, on the Mac's folder.
    [[nodiscard]] TestSupport::ProgramResult inspectFolder(const std::vector<std::string>& arguments) const;
    /// Puts a job's property list and its program, a shell script, into the Mac.
    void putJob(const std::string& plist, const std::string& label, const std::string& program,
                const std::string& script, const std::string& more = "") const;
};

/// A result's standard output as JSON; fails the test when it is none or there are complaints.
[[nodiscard]] nlohmann::json jsonOf(const TestSupport::ProgramResult& result);

/// Expects this status, this output and no complaints.
void expectResult(const TestSupport::ProgramResult& result, int status, const std::string& output);

/// One property of each object in an array.
[[nodiscard]] std::vector<std::string> column(const nlohmann::json& array, const char* property);

}  // namespace InspectTest
