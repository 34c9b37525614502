#include "macsim/Namespaces.h"

#include <cerrno>
#include <cstring>
#include <string>
#include <vector>

#include <pwd.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/Files.h"
#include "macsim/Refusal.h"

namespace Simulator {

namespace {

/// 0 if a child process could unshare `flags`, or its errno.
int tryUnshare(int flags) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(::unshare(flags) == 0 ? 0 : errno);
    }
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : EAGAIN;
}

bool settingIs(const char* path, const std::string& value) {
    const auto text = readFile(path);
    return text && *text == value + "\n";
}

std::string settingToChange(int error) {
    if (settingIs("/proc/sys/kernel/unprivileged_userns_clone", "0")) {
        return "set sysctl kernel.unprivileged_userns_clone=1";
    }
    if (settingIs("/proc/sys/user/max_user_namespaces", "0")) {
        return "set sysctl user.max_user_namespaces to more than 0";
    }
    if (settingIs("/proc/sys/kernel/apparmor_restrict_unprivileged_userns", "1")) {
        return "set sysctl kernel.apparmor_restrict_unprivileged_userns=0";
    }
    if (error == ENOSPC) {
        return "raise the limits in sysctl user.max_*_namespaces";
    }
    return std::string("run macsim as root with CAP_SYS_ADMIN, or allow user namespaces (") +
           std::strerror(error) + ")";
}

std::string ownName() {
    const passwd* user = ::getpwuid(::getuid());
    return user == nullptr ? std::to_string(::getuid()) : user->pw_name;
}

/// Whether /etc/subuid or /etc/subgid has ids for this user.
bool hasSubordinateIds(const char* path) {
    const std::string lines = "\n" + readFile(path).value_or("");
    return lines.find("\n" + ownName() + ":") != std::string::npos ||
           lines.find("\n" + std::to_string(::getuid()) + ":") != std::string::npos;
}

}  // namespace

void needNamespaces(char** arguments, bool toRun) {
    if (::geteuid() == 0) {
        const int flags = CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWIPC | CLONE_NEWUTS | CLONE_NEWNET;
        if (const int error = toRun ? tryUnshare(flags) : 0; error != 0) {
            throw Refusal("the kernel denies namespaces: " + settingToChange(error));
        }
        return;
    }
    if (const int error = tryUnshare(CLONE_NEWUSER); error != 0) {
        throw Refusal("the kernel denies user namespaces: " + settingToChange(error));
    }
    for (const char* path : {"/etc/subuid", "/etc/subgid"}) {
        if (!hasSubordinateIds(path)) {
            throw Refusal("this user has no subordinate ids: add the line \"" + ownName() +
                          ":100000:65536\" to " + path);
        }
    }
    if (::access("/usr/bin/newuidmap", X_OK) != 0) {
        throw Refusal("newuidmap is missing: install the package uidmap");
    }
    std::vector<char*> command;
    for (const char* word : {"unshare", "--user", "--map-root-user", "--map-auto", "--", "/proc/self/exe"}) {
        command.push_back(const_cast<char*>(word));
    }
    for (char** argument = arguments + 1; *argument != nullptr; ++argument) {
        command.push_back(*argument);
    }
    command.push_back(nullptr);
    // In the new program /proc/self/exe would be unshare itself.
    std::string self(4096, '\0');
    const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size());
    self.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
    command[5] = self.data();
    ::execvp(command.front(), command.data());
    throw Refusal(std::string("cannot start unshare: ") + std::strerror(errno));
}

}  // namespace Simulator
