#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Support/Faults.h"

namespace Simulator {

/// Folder of the simulator's own files, inside the Mac.
inline constexpr std::string_view kSimulatorFolder = "/var/macsim";
inline constexpr std::string_view kMachineFile = "/var/macsim/machine.json";
inline constexpr std::string_view kSessionFile = "/var/macsim/session.json";
inline constexpr std::string_view kStateFile = "/var/macsim/state.json";
inline constexpr std::string_view kTranscriptFile = "/var/macsim/transcript.jsonl";
inline constexpr std::string_view kLockFile = "/var/macsim/lock";
inline constexpr std::string_view kHelperFaultsLibrary = "/var/macsim/lib/libhelper-faults.so";
/// Whether the product's parental-control lock is on; read by the maker's framework.
inline constexpr std::string_view kParentalControlFile = "/var/macsim/parental-control.plist";
/// The cookie of the session's display; belongs to the session's user.
inline constexpr std::string_view kDisplayCookieFile = "/var/macsim/Xauthority";
inline constexpr std::string_view kSystemLog = "/var/log/system.log";
/// Where the runtime package installs its files; the fault disk-full mounts a full file system here.
inline constexpr std::string_view kRuntimeFolder = "/usr/local/lib/swift";

/// The program that asks for an administrator's password.
inline constexpr const char* kSecurityAgent =
    "/System/Library/Frameworks/Security.framework/Versions/A/MachServices/SecurityAgent.bundle/Contents/"
    "MacOS/SecurityAgent";

struct User {
    std::string name;
    std::uint32_t uid = 0;
    bool loggedIn = true;
    bool administrator = false;
    /// Of the password, as hashPassword makes it; empty for a user without one, who cannot authenticate.
    std::string passwordHash{};
};

/// A program that runs from the start without being a job.
struct RunningProgram {
    std::string path;
    std::uint32_t uid = 0;
};

/// The configuration that persists from one boot to the next. Written by `macsim create`, read by launchd.
struct Machine {
    std::vector<User> users;
    std::vector<RunningProgram> running;
    /// Folders whose kernel extensions are loaded at boot.
    std::vector<std::string> extensionFolders;
    /// Names of distant objects that a job of the system registers while it runs, by its label.
    std::map<std::string, std::vector<std::string>> distantObjects;

    /// The user with that name; root is one too.
    [[nodiscard]] std::optional<User> user(std::string_view name) const;
};

inline constexpr unsigned kUsualWait = 10;

/// The purpose of one boot. Written by `macsim run`, read by launchd.
struct Session {
    std::vector<std::string> command;
    std::string user = "root";
    Faults faults;
    /// Environment of the command in addition to a Mac's own; it contains DISPLAY if the session has a
    /// display.
    std::map<std::string, std::string> environment;
    /// Seconds that jobs started by messages may continue after the command has ended.
    unsigned wait = kUsualWait;
};

/// The group of all ordinary users.
inline constexpr std::uint32_t kStaffGroup = 20;
inline constexpr std::uint32_t kAdminGroup = 80;

[[nodiscard]] std::string encode(const Machine& machine);
[[nodiscard]] std::string encode(const Session& session);
/// Returns nothing if `encode` did not write the text.
[[nodiscard]] std::optional<Machine> decodeMachine(std::string_view text);
[[nodiscard]] std::optional<Session> decodeSession(std::string_view text);

}  // namespace Simulator
