#pragma once

#include <string>
#include <vector>

#include "Look.h"
#include "support/FakeInspection.h"
#include "support/FakeMac.h"

namespace InspectUnitTests {

inline const std::string kConsole = "/Applications/Sentrel.app";

/// A fake Mac with one user (501) who is logged in and one (502) who is not, with no jobs and one process of
/// another maker; no part of the product is on it.
class InspectedMac {
  public:
    InspectedMac();

    /// Registers a job; launchctl then lists and prints it.
    void addJob(const std::string& domain, const std::string& label, const std::string& details = "");
    /// Makes launchctl answer so.
    void answer(const std::string& arguments, const std::string& output, std::int32_t status = 0,
                const std::string& error = "");
    [[nodiscard]] Inventory::Inventory look(const std::string& root = "");

    TestSupport::FakeMac mac;
    TestSupport::FakeFileFacts files;
    TestSupport::FakeLoadedExtensions extensions;

  private:
    std::map<std::string, std::string> services_;
};

}  // namespace InspectUnitTests
