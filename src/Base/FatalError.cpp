#include "Base/FatalError.h"

#include <cstdio>
#include <cstdlib>

namespace Base {

void fatalError(std::string_view text) {
    std::fprintf(stderr, "Fatal error: %.*s\n", static_cast<int>(text.size()), text.data());
    std::abort();
}

}  // namespace Base
