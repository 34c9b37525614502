#pragma once

#include <string>
#include <vector>

#include "Support/Files.h"
#include "launchd/Caller.h"

namespace Simulator {

/// What the tools of a Mac (launchctl, lsregister, installer) were called with, and by whom: one JSON object
/// a line in /var/macsim/transcript.jsonl, in the order of the calls. Begins anew with every boot.
class Transcript {
  public:
    [[nodiscard]] bool open();

    /// Writes down one call of the tool that `caller` is. Its user ids are the kernel's: what the tool
    /// inherited.
    void record(const Caller& caller, const std::vector<std::string>& arguments);

  private:
    Descriptor file_;
};

}  // namespace Simulator
