#pragma once

#include <stdint.h>

/// A kernel return code: 6 bits system, 12 bits subsystem, 14 bits code.
typedef int32_t OSReturn;
