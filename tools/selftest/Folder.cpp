#include "Folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Base/FatalError.h"
#include "Platform/SystemPorts.h"

namespace Selftest {

namespace {

/// The folder for temporary files, by its real path: the way to it leads over links that an ordinary user's
/// folder may have, which the file operations refuse.
std::string temporaryFolder() {
    const char* const chosen = std::getenv("TMPDIR");
    char* const resolved = ::realpath(chosen != nullptr ? chosen : "/tmp", nullptr);
    std::string path(resolved != nullptr ? resolved : "/tmp");
    std::free(resolved);
    return path;
}

}  // namespace

Folder::Folder() : path_(temporaryFolder() + "/sentrel-selftest-XXXXXX") {
    if (::mkdtemp(path_.data()) == nullptr) {
        Base::fatalError("No scratch folder can be made: " + path_);
    }
}

Folder::~Folder() {
    static_cast<void>(Platform::SystemPorts::current().files->removeItem(Base::URL::fileURL(path_)));
}

void Folder::makeFile(std::string_view name, std::string_view contents) const {
    std::ofstream(path(name), std::ios::binary) << contents;
}

void Folder::makeFolder(std::string_view name) const {
    static_cast<void>(::mkdir(path(name).c_str(), 0755));
}

void Folder::makeLink(const std::string& target, std::string_view name) const {
    static_cast<void>(::symlink(target.c_str(), path(name).c_str()));
}

bool Folder::has(std::string_view name) const {
    struct stat status {};
    return ::lstat(path(name).c_str(), &status) == 0;
}

std::string Folder::contentsOf(std::string_view name) const {
    std::ifstream file(path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Platform::FileManager& files() {
    return Platform::SystemPorts::current().files;
}

std::string textOf(const std::optional<Platform::Error>& error) {
    return error ? "\"" + error->description + "\" " + std::to_string(error->code) : "no error";
}

}  // namespace Selftest
