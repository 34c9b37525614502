#pragma once

#include_next <fcntl.h>

#undef O_PATH
#define O_SYMLINK 0x00200000
