#pragma once

#include <string>

namespace Platform {

/// What went wrong, in words and as a number.
struct Error {
    /// One line for people, in UTF-8; names the item concerned.
    std::string description;
    /// The system's error number (errno or the service's own code); 0 when there is none.
    int code = 0;

    friend bool operator==(const Error&, const Error&) = default;
};

}  // namespace Platform
