#include "Platform/Posix/FileError.h"

#include <system_error>

namespace Platform::Posix {

std::string errorText(int code) {
    return std::generic_category().message(code);
}

Error fileError(std::string_view path, std::string_view outcome, int code) {
    std::string description = "\"";
    description += path;
    description += "\" could not be ";
    description += outcome;
    description += ": ";
    description += errorText(code);
    return Error{std::move(description), code};
}

}  // namespace Platform::Posix
