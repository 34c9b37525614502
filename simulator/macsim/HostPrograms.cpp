#include "macsim/HostPrograms.h"

#include <cerrno>
#include <filesystem>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "macsim/Refusal.h"

namespace Simulator {

namespace fs = std::filesystem;

std::string ownFolder() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path().string();
}

std::string ownBundle(const std::string& name) {
    return (fs::path(ownFolder()) / name).string();
}

std::string simulatorPrograms() {
    const fs::path folder = fs::path(ownFolder()).parent_path() / "libexec" / "macsim";
    std::error_code error;
    if (!fs::exists(folder / "launchd", error)) {
        throw Refusal("the simulator's programs are not in " + folder.string());
    }
    return folder.string();
}

std::optional<int> runProgram(const std::vector<std::string>& command) {
    std::vector<std::string> arguments = command;
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawnp(&child, pointers.front(), nullptr, nullptr, pointers.data(), environ) != 0) {
        return std::nullopt;
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace Simulator
