#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace NorvikCommon {

/// The local users, and work under another effective user id. Nothing is logged.
struct UIDUtil {
    UIDUtil() = delete;

    /// The ids of the users whose home folder begins with usersDirectoryPath (a plain string prefix), each
    /// once, in no particular order. This leaves out system accounts, which live elsewhere.
    [[nodiscard]] static std::vector<std::uint32_t> allUsers();

    /// Runs `block` on this thread with the effective user id `uid`, then sets it back to the real user id. A
    /// change that fails is ignored: the block runs anyway. The id belongs to the whole process: one thread
    /// at a time.
    static void performWithUid(std::uint32_t uid, const std::function<void()>& block);

    /// The folder of the local users' homes, without a trailing slash; asked for once per process. /Users.
    [[nodiscard]] static const std::string& usersDirectoryPath();
};

}  // namespace NorvikCommon
