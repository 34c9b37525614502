#pragma once

#include <string>
#include <vector>

/// What an uninstallation touches, word by word and in its order, written out by hand: nothing here comes
/// from the product's own catalogue, so a wrong catalogue is seen.
namespace TestSupport::ProductPlaces {

/// The labels of the daemons and agents that are stopped; some come several times.
[[nodiscard]] const std::vector<std::string>& daemons();
[[nodiscard]] const std::vector<std::string>& agents();
[[nodiscard]] std::string daemonPropertyList(const std::string& label);
[[nodiscard]] std::string agentPropertyList(const std::string& label);

/// The extension is unloaded this many times.
inline constexpr int kUnloads = 2;
inline const std::string kExtension = "com.norvik.kext.FileAccessFilter";
inline const std::string kExtensionBundle = "FileAccessFilter.kext";

/// The names of the processes that are closed; some come several times.
[[nodiscard]] const std::vector<std::string>& processes();

/// The 43 items that are deleted one by one.
[[nodiscard]] const std::vector<std::string>& items();
/// The folders that go after them.
[[nodiscard]] const std::vector<std::string>& folders();
/// The helper tools and their property lists, which go last, each group in any order.
[[nodiscard]] const std::vector<std::string>& helperTools();
[[nodiscard]] const std::vector<std::string>& helperPropertyLists();
/// Everything of the four lists above, each path once.
[[nodiscard]] const std::vector<std::string>& everything();

/// Where the repair copy of an item is.
[[nodiscard]] std::string repairCopy(const std::string& path);

}  // namespace TestSupport::ProductPlaces
