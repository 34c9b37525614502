#include "Platform/Posix/FirstFailure.h"

#include <algorithm>
#include <utility>

namespace Platform::Posix {

bool comesBefore(std::string_view path, std::string_view other) {
    const auto [end, otherEnd] = std::mismatch(path.begin(), path.end(), other.begin(), other.end());
    // A folder's contents, the folder, the folder's next neighbours.
    const auto rank = [](std::string_view::iterator place, std::string_view::iterator last) {
        return place == last ? 1 : *place == '/' ? 0 : 2 + static_cast<unsigned char>(*place);
    };
    return rank(end, path.end()) < rank(otherEnd, other.end());
}

void FirstFailure::note(std::string path, Error error) {
    const bool same = error_ && path == path_;
    if (!error_ || comesBefore(path, path_) || (same && error.code < error_->code)) {
        path_ = std::move(path);
        error_ = std::move(error);
    }
}

void FirstFailure::join(FirstFailure& other) {
    if (other.error_) {
        const std::lock_guard lock(mutex_);
        note(std::move(other.path_), std::move(*other.error_));
    }
}

}  // namespace Platform::Posix
