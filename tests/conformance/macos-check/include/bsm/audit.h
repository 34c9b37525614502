#pragma once

#include <stdint.h>

/// Names a process for good: its number is not used again.
typedef struct {
    uint32_t val[8];
} audit_token_t;
