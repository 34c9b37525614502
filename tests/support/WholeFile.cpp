#include "support/WholeFile.h"

#include <fstream>
#include <sstream>

namespace TestSupport {

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace TestSupport
