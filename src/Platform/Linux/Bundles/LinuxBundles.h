#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "Platform/Bundles.h"

namespace Platform::Linux {

class StringTables;

/// Bundles as folders. The information dictionary is Contents/Info.plist, at most 1 MiB, read with libplist
/// when the bundle is opened; a larger one, or one that nests too deeply to be read safely, counts as broken.
/// The same bounds hold for string tables and for the user's preferences. A bundle has a localization if it
/// has its .lproj folder. It is chosen at the first query for a text, and a table is read at its first query;
/// both then stay as they are for that bundle.
///
/// mainBundle() never returns null: the program's starting location is recorded when this object is made, and
/// the bundle of a program whose files have been removed since has no information dictionary. String tables
/// read so far are shared by all main bundles that this object returns: a program that removes itself keeps
/// its texts.
class LinuxBundles final : public Bundles {
  public:
    LinuxBundles();
    /// As if the running program's executable were at `executable`, and the user's preferences at
    /// `preferencesFile`.
    explicit LinuxBundles(std::string executable, std::string preferencesFile = {});

    [[nodiscard]] std::unique_ptr<Bundle> open(const Base::URL& location) override;
    [[nodiscard]] std::unique_ptr<Bundle> mainBundle() override;

  private:
    const std::string executable_;
    const std::string preferencesFile_;
    std::mutex mutex_;
    std::shared_ptr<StringTables> mainTables_;
};

}  // namespace Platform::Linux
