#include "Base/Excerpt.h"

#include "Base/UTF8.h"

namespace Base {

std::string excerpt(std::string_view text, std::size_t limit) {
    return text.size() <= limit ? std::string(text) : std::string(startOfUTF8(text, limit)) + "...";
}

}  // namespace Base
