#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Support/Machine.h"

namespace Simulator {

struct CreateOptions {
    std::string folder;
    /// Generations of the product, in the order of the command line.
    std::vector<std::string> installed;
    /// States explicitly that there are none.
    bool empty = false;
    std::string shortVersion;
    std::string build;
    /// With their passwords' hashes.
    std::vector<User> users;
    /// Of every user, in their order.
    std::vector<std::string> languages{"en"};
    /// off, on or refused.
    std::string parentalControl = "off";
    /// Executable names, or "all".
    std::vector<std::string> running;
    std::vector<std::string> otherAntivirus;
    bool realSize = false;
    /// The uninstaller's bundle; empty for the one next to macsim.
    std::string uninstaller;
    bool withoutUninstaller = false;
};

struct RunOptions {
    std::string folder;
    std::string user = "root";
    Faults faults;
    /// For `user` from now on; empty to keep the current ones.
    std::vector<std::string> languages;
    /// ":N", "host" for the one in the environment, or empty for none.
    std::string display;
    /// Seconds that helpers may continue after the command has ended.
    unsigned wait = kUsualWait;
    std::vector<std::string> command;
};

struct PayloadOptions {
    std::string folder;
    std::string shortVersion;
    std::string build;
    bool realSize = false;
};

struct InstallOptions {
    std::string folder;
    std::string payload;
    bool forceOverinstall = false;
    /// Seconds that the installer waits for the end.
    unsigned timeout = 120;
    Faults faults;
};

/// The commands of macsim. Each returns macsim's exit status or throws a Refusal.
int createMac(const CreateOptions& options);
int runMac(const RunOptions& options);
int makePayload(const PayloadOptions& options);
int installProduct(const InstallOptions& options);
int printLog(const std::string& folder, bool follow);
int printState(const std::string& folder, bool json);
int printTranscript(const std::string& folder, bool json);
int printFaults();
int printGenerations();
int deleteMac(const std::string& folder);

/// "NAME:UID", optionally followed by ":admin" or ":logged-out" or both, comma-separated. If no user is
/// marked as administrator the first one is. A password is "USER=WORD"; a user's own name by default. Throws
/// a Refusal for anything else.
[[nodiscard]] std::vector<User> parseUsers(const std::string& text,
                                           const std::vector<std::string>& passwords);
/// Languages as "de-AT", comma-separated; throws a Refusal for anything else.
[[nodiscard]] std::vector<std::string> parseLanguages(const std::string& text);

}  // namespace Simulator
