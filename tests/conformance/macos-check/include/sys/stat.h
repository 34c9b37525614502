#pragma once

#include_next <sys/stat.h>

#define st_ctimespec st_ctim
