#pragma once

#include <cstdint>

#include "Base/FatalError.h"

namespace Base {

/// Returns `a` + `b` in 32-bit signed arithmetic. An overflow is a programming error: it ends the process.
[[nodiscard]] inline std::int32_t checkedSum(std::int32_t a, std::int32_t b) {
    std::int32_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) {
        fatalError("32-bit sum overflow");
    }
    return sum;
}

}  // namespace Base
