#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

#include "support/FakeMac.h"

namespace TestSupport {

/// The two privileged helpers of a fake Mac. The installer helper notes the lists and reports each command,
/// the support helper notes the packages.
class FakeHelper {
  public:
    /// Serves both mach services of this Mac. Both live as long as it does.
    void serve(FakeMac& mac);

    /// Each list as TestSupport::commandTexts prints it.
    std::vector<std::vector<std::string>> lists;
    std::vector<std::string> packages;
    /// How many commands of a list are reported.
    std::size_t reportsAtMost = std::numeric_limits<std::size_t>::max();
    /// What the support helper answers.
    std::optional<Platform::Error> packageError;

  private:
    void execute(std::vector<Platform::XPCValue> arguments);
};

}  // namespace TestSupport
