#pragma once

#include <string>

namespace Platform {

/// What went wrong, in words and as a number.
struct Error {
    /// For people; names the item concerned, unescaped. Whoever shows it escapes it (Base/Displayable.h).
    std::string description;
    /// The system's error number (errno or the service's own code); 0 if there is none.
    int code = 0;

    friend bool operator==(const Error&, const Error&) = default;
};

}  // namespace Platform
