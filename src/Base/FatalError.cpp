#include "Base/FatalError.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Base/Displayable.h"

namespace Base {

namespace {

std::atomic<LastWords> lastWords = nullptr;

}  // namespace

void fatalError(std::string_view text) {
    const std::string line = "Fatal error: " + displayable(text);
    std::fprintf(stderr, "%s\n", line.c_str());
    if (const LastWords handler = lastWords.exchange(nullptr)) {
        handler(line);
    }
    std::abort();
}

void setLastWords(LastWords handler) {
    lastWords = handler;
}

}  // namespace Base
