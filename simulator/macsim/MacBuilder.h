#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Support/PropertyList.h"

namespace Simulator {

/// Who owns an item and what may be done with it.
struct Access {
    unsigned mode = 0;
    std::uint32_t uid = 0;
    std::uint32_t gid = 0;
};

/// Shows on standard error how many files there are so far, if that is a terminal and there are many. The
/// line is wiped at the end.
class FileProgress {
  public:
    FileProgress() = default;
    FileProgress(const FileProgress&) = delete;
    FileProgress& operator=(const FileProgress&) = delete;
    ~FileProgress();

    void count();

  private:
    std::size_t files_ = 0;
    bool isShown_ = false;
};

/// Lays down files below a new root that nobody else uses yet. Paths are the Mac's own; missing parents are
/// made (root, 0755). Every operation throws a Refusal if it fails.
class MacBuilder {
  public:
    /// `root` exists and is empty; `programs` is the folder where the simulator's own programs were built.
    MacBuilder(std::string root, std::string programs)
        : root_(std::move(root)), programs_(std::move(programs)) {}

    void folder(const std::string& path, const Access& access = {0755});
    void file(const std::string& path, std::string_view bytes, const Access& access = {0644});
    void link(const std::string& path, const std::string& target);
    void propertyList(const std::string& path, const PropertyList& value, PropertyListForm form);
    /// Copies one of the simulator's programs.
    void program(const std::string& name, const std::string& path, const Access& access = {0755});
    /// Copies a folder that was built beside them.
    void programFolder(const std::string& name, const std::string& path) {
        copyFolder(programs_ + "/" + name, path);
    }
    /// Copies a folder of the host with everything in it.
    void copyFolder(const std::string& source, const std::string& path);
    [[nodiscard]] bool exists(const std::string& path) const;

    [[nodiscard]] std::string hostPath(const std::string& path) const { return root_ + path; }

  private:
    void makeParent(const std::string& path);
    void setAccess(const std::string& path, const Access& access);

    std::string root_;
    std::string programs_;
    /// The last folder known to exist: many files lie side by side.
    std::string lastParent_ = "/";
    FileProgress progress_;
};

}  // namespace Simulator
