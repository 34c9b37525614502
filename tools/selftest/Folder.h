#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Base/URL.h"
#include "Platform/Error.h"
#include "Platform/FileManager.h"

namespace Selftest {

/// A scratch folder, removed at the end with what is left in it.
class Folder {
  public:
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    [[nodiscard]] const std::string& path() const { return path_; }
    [[nodiscard]] std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }
    [[nodiscard]] Base::URL url(std::string_view name) const { return Base::URL::fileURL(path(name)); }

    /// Makes a file, a folder, a link in it.
    void makeFile(std::string_view name, std::string_view contents = "contents") const;
    void makeFolder(std::string_view name) const;
    void makeLink(const std::string& target, std::string_view name) const;
    [[nodiscard]] bool has(std::string_view name) const;
    [[nodiscard]] std::string contentsOf(std::string_view name) const;

  private:
    std::string path_;
};

/// The program's file operations, which are being asked about.
[[nodiscard]] Platform::FileManager& files();
/// "\"DESCRIPTION\" CODE", or "no error".
[[nodiscard]] std::string textOf(const std::optional<Platform::Error>& error);

}  // namespace Selftest
