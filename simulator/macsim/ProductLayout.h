#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "macsim/Commands.h"
#include "macsim/MacBuilder.h"

namespace Simulator {

/// The generations of the product that can be laid down, earliest first, without "all".
[[nodiscard]] std::span<const std::string_view> generations();

/// Lays down the generations that `options` names, with the catalogue's names and places: bundles,
/// executables, job property lists, workflows, data folders, helper tools. If two generations use one path
/// as a file and as a folder, it becomes the folder; in any other conflict, the later generation's item
/// stays.
void buildProduct(MacBuilder& mac, const CreateOptions& options);

/// Lays down the result of installing the current generation, in its final places: the console with
/// everything that it contains, the jobs' property lists, the Finder service, the first settings and
/// databases; the console's help and the databases in realistic amount if `options` asks for it. Of `options`
/// only versions, size and uninstaller count.
void buildInstallableProduct(MacBuilder& mac, const CreateOptions& options);

/// Existing executables of the product's applications; several if more than one generation has the name. For
/// "all", every application except the uninstaller.
[[nodiscard]] std::vector<std::string> installedApplications(const MacBuilder& mac, const std::string& name);

/// The names that the product's daemon registers for its objects, by the label of its job.
[[nodiscard]] std::map<std::string, std::vector<std::string>> distantObjects();

/// Folders that hold kernel extensions.
[[nodiscard]] std::vector<std::string> extensionFolders();

/// Every path of the catalogue that belongs to the product, without duplicates.
[[nodiscard]] std::vector<std::string> productPaths();

}  // namespace Simulator
