#pragma once

#include <libkern/OSReturn.h>

// System 0x37 (libkern), subsystem 2 (kernel extensions).
#define kOSKextReturnInvalidArgument ((OSReturn)0xdc008005)
