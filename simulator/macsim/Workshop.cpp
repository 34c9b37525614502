#include "macsim/Workshop.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <stdlib.h>
#include <sys/stat.h>

#include "macsim/Refusal.h"
#include "macsim/Trees.h"

namespace Simulator {

namespace fs = std::filesystem;

Workshop::Workshop(const std::string& folder) : destination_(fs::absolute(folder).lexically_normal()) {
    if (destination_.filename().empty()) {
        destination_ = destination_.parent_path();
    }
    std::error_code error;
    if (fs::exists(fs::symlink_status(destination_, error)) &&
        (!fs::is_directory(destination_, error) || !fs::is_empty(destination_, error))) {
        throw Refusal(folder + " is not empty");
    }
    temporary_ = (destination_.parent_path() / ("." + destination_.filename().string() + ".XXXXXX")).string();
    if (::mkdtemp(temporary_.data()) == nullptr) {
        const std::string why = std::strerror(errno);
        temporary_.clear();
        throw Refusal("cannot make " + folder + ": " + why);
    }
    ::chmod(temporary_.c_str(), 0755);
}

Workshop::~Workshop() {
    if (!temporary_.empty()) {
        static_cast<void>(removeTree(temporary_));
    }
}

void Workshop::finish() {
    if (::rename(temporary_.c_str(), destination_.c_str()) != 0) {
        throw Refusal("cannot make " + destination_.string() + ": " + std::strerror(errno));
    }
    temporary_.clear();
}

}  // namespace Simulator
