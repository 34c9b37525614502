#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Support/PropertyList.h"

namespace Simulator {

/// Whether a job is started again after it has ended.
enum class KeepAlive { no, always, afterFailure, afterSuccess };

/// The contents of a launchd property list.
struct JobDefinition {
    std::string label;
    /// The executable; absolute.
    std::string program;
    /// Begins with the name that the program sees as its own.
    std::vector<std::string> arguments;
    bool runAtLoad = false;
    bool disabled = false;
    KeepAlive keepAlive = KeepAlive::no;
    std::vector<std::string> machServices;
    std::map<std::string, std::string> environment;
    std::string workingDirectory;
    /// Seconds between SIGTERM and SIGKILL.
    std::int64_t exitTimeOut = 20;
    /// Seconds that must lie between two starts.
    std::int64_t throttleInterval = 10;
};

/// launchctl's numbers for what was refused.
inline constexpr int kNoSuchProcess = 3;
inline constexpr int kInputOutputError = 5;
inline constexpr int kInvalidArgument = 22;
inline constexpr int kNowInProgress = 36;
inline constexpr int kAlreadyInProgress = 37;
inline constexpr int kNoDomain = 112;
inline constexpr int kNoService = 113;
inline constexpr int kServiceDisabled = 119;
inline constexpr int kBadOwnership = 122;
inline constexpr int kDomainRefuses = 125;

/// The job that a dictionary describes; nothing, with `why` set, if it describes none.
[[nodiscard]] std::optional<JobDefinition> makeJobDefinition(const PropertyList& dictionary,
                                                             std::string& why);

/// The job of the property list at `path`, a stranger's file. It must be a regular file (links are followed)
/// that belongs to root or `owner` and that nobody else may write. Otherwise returns nothing and sets `code`
/// (one of the numbers above) and `why`.
[[nodiscard]] std::optional<JobDefinition> readJobDefinition(const std::string& path, std::uint32_t owner,
                                                             int& code, std::string& why);

/// Whether launchd accepts `name` as a label or the name of a mach service: it becomes part of a file name.
[[nodiscard]] bool isUsableName(const std::string& name);

}  // namespace Simulator
