#pragma once

#include "Platform/SystemLog.h"

namespace Platform::Darwin {

/// NSLog. What is not valid UTF-8 is logged with replacement characters. The unified log itself cuts what it
/// shows of an entry at about one kilobyte; standard error, where a program has one, gets it whole.
class DarwinSystemLog final : public SystemLog {
  public:
    void log(std::string_view text) override;
};

}  // namespace Platform::Darwin
