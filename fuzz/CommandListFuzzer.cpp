// What the installer helper decodes: the product's own classes. Nothing of it is executed.

#include <cstddef>
#include <cstdint>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "UnarchiverCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::checkUnarchiver({data, size}, InstallCommon::allowedCommandListClasses());
    return 0;
}
