#include "macsim/Sandbox.h"

#include <unistd.h>

#include "macsim/Display.h"
#include "macsim/SystemLayout.h"

namespace Simulator {

namespace {

using Words = std::vector<std::string>;

void add(Words& command, const Words& words) {
    command.insert(command.end(), words.begin(), words.end());
}

/// Room for the one file that fills the disk.
constexpr const char* kTinyDisk = "16384";

}  // namespace

std::vector<std::string> sandboxCommand(const std::string& folder, const Session& session) {
    Words command{"bwrap", "--bind", folder, "/"};
    for (const std::string& borrowed : borrowedFolders()) {
        add(command, {"--ro-bind-try", borrowed, borrowed});
    }
    add(command, {"--proc", "/proc", "--dev", "/dev", "--perms", "1777", "--tmpfs", "/dev/shm"});
    if (const std::string socket = displaySocket(session); !socket.empty()) {
        add(command, {"--perms", "1777", "--tmpfs", kDisplaysFolder, "--ro-bind", socket, socket});
    }
    if (session.faults.contains("disk-full")) {
        add(command, {"--size", kTinyDisk, "--tmpfs", std::string(kRuntimeFolder)});
    }
    if (session.faults.contains("unreadable-passwd")) {
        add(command, {"--ro-bind", "/dev/null", "/etc/passwd"});
    }
    add(command, {"--unshare-pid", "--unshare-ipc", "--unshare-net", "--unshare-uts", "--hostname", "Mac",
                  "--as-pid-1", "--die-with-parent", "--cap-add", "ALL", "--chdir", "/", "--clearenv"});
    for (const auto& [name, value] : session.environment) {
        if (name.ends_with("SAN_OPTIONS")) {
            add(command, {"--setenv", name, value});
        }
    }
    add(command, {"--", "/sbin/launchd"});
    return command;
}

void execSandbox(const std::vector<std::string>& command) {
    Words words = command;
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    ::execvp(pointers.front(), pointers.data());
    ::_exit(kNoSandbox);
}

}  // namespace Simulator
