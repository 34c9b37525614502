#include <cstddef>
#include <cstdint>

#include "Samples.h"
#include "UnarchiverCheck.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::checkUnarchiver({data, size}, Samples::allowedClasses());
    return 0;
}
