#pragma once

#include "Base/URL.h"

namespace InstallCommon {

/// Keeps copies of installed items in the product's repair folder.
struct RepairItemsUtil {
    RepairItemsUtil() = delete;

    /// Copies an installed item below the repair folder, which mirrors its whole absolute path. The first
    /// call of a process creates that folder, with mode 000 and owner 0:0, so that only root may enter it;
    /// later calls leave it as it is. An existing copy stays. Logs "[SNTM Installer] Backup source: " + path
    /// + ", destination: " + path and then the lines of FileSystemUtil::copy; fails silently otherwise.
    static void backup(const Base::URL& item);
};

}  // namespace InstallCommon
