#pragma once

#include <string>

namespace TestSupport {

/// A line of the log as the installer's programs write it. That they do, InstallerLogTest shows.
[[nodiscard]] inline std::string installerLine(const std::string& text) {
    return "[SNTM Installer] " + text;
}

}  // namespace TestSupport
