#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Support/Faults.h"

namespace Simulator {

/// Where the simulator keeps its own files, inside the Mac.
inline constexpr std::string_view kSimulatorFolder = "/var/macsim";
inline constexpr std::string_view kMachineFile = "/var/macsim/machine.json";
inline constexpr std::string_view kSessionFile = "/var/macsim/session.json";
inline constexpr std::string_view kStateFile = "/var/macsim/state.json";
inline constexpr std::string_view kLockFile = "/var/macsim/lock";
inline constexpr std::string_view kHelperFaultsLibrary = "/var/macsim/lib/libhelper-faults.so";
inline constexpr std::string_view kSystemLog = "/var/log/system.log";
/// Where the runtime package installs its files; the fault disk-full mounts a full file system here.
inline constexpr std::string_view kRuntimeFolder = "/usr/local/lib/swift";

struct User {
    std::string name;
    std::uint32_t uid = 0;
    bool loggedIn = true;
};

/// A program that runs from the start without being a job.
struct RunningProgram {
    std::string path;
    std::uint32_t uid = 0;
};

/// What stays the same from one boot to the next. Written by `macsim create`, read by launchd.
struct Machine {
    std::vector<User> users;
    std::vector<RunningProgram> running;
    /// Folders whose kernel extensions are loaded at boot.
    std::vector<std::string> extensionFolders;

    /// The user of that name; root is one too.
    [[nodiscard]] std::optional<User> user(std::string_view name) const;
};

/// What one boot is for. Written by `macsim run`, read by launchd.
struct Session {
    std::vector<std::string> command;
    std::string user = "root";
    Faults faults;
    /// Environment that the command gets in addition to a Mac's own.
    std::map<std::string, std::string> environment;
};

/// The group of all ordinary users.
inline constexpr std::uint32_t kStaffGroup = 20;
inline constexpr std::uint32_t kAdminGroup = 80;

[[nodiscard]] std::string encode(const Machine& machine);
[[nodiscard]] std::string encode(const Session& session);
/// Nothing when the text is not what `encode` writes.
[[nodiscard]] std::optional<Machine> decodeMachine(std::string_view text);
[[nodiscard]] std::optional<Session> decodeSession(std::string_view text);

}  // namespace Simulator
