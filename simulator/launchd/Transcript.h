#pragma once

#include <string>
#include <vector>

#include "Support/Files.h"
#include "launchd/Caller.h"

namespace Simulator {

/// The calls of a Mac's tools (launchctl, lsregister, installer), and their callers: one JSON object per line
/// in /var/macsim/transcript.jsonl, in the order of the calls. Starts over with every boot.
class Transcript {
  public:
    [[nodiscard]] bool open();

    /// Records one call of the tool `caller`. Its user ids are the kernel's: those that the tool
    /// inherited.
    void record(const Caller& caller, const std::vector<std::string>& arguments);

  private:
    Descriptor file_;
};

}  // namespace Simulator
