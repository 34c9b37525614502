#include "Platform/Posix/FileError.h"

#include <system_error>

namespace Platform::Posix {

std::string errorText(int code) {
    return std::generic_category().message(code);
}

Error fileError(std::string_view path, std::string_view outcome, int code) {
    return fileError(path, outcome, errorText(code), code);
}

Error fileError(std::string_view path, std::string_view outcome, std::string_view reason, int code) {
    std::string description = "\"";
    description += path;
    description += "\" could not be ";
    description += outcome;
    description += ": ";
    description += reason;
    return Error{std::move(description), code};
}

}  // namespace Platform::Posix
