#pragma once

#include "Platform/SystemLog.h"

namespace Platform::Darwin {

/// NSLog. Invalid UTF-8 is logged with replacement characters. The unified log itself shortens an entry to
/// about one kilobyte when it shows it; standard error, where a program has one, gets it whole.
class DarwinSystemLog final : public SystemLog {
  public:
    void log(std::string_view text) override;
};

}  // namespace Platform::Darwin
