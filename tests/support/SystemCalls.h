#pragma once

#include <array>
#include <cstdint>
#include <functional>

namespace PlatformTests {

/// fchmodat2(2), which headers before Linux 6.6 do not know.
constexpr long kChangeModeCall = 452;

/// A system call: its SYS_ number, as which it can be used, and its arguments.
struct Call {
    long number;
    std::array<std::uint64_t, 6> arguments;

    operator long() const { return number; }
};

/// Does `work` on a thread of its own, where the kernel asks `codeOf`, on the caller's thread, about each
/// call that deals with files, attributes or sockets: 0 lets it happen, a code of errno(3)
/// is what it fails with; the threads that `work` starts count too (seccomp_unotify(2)). Returns how many
/// such calls there were. Throws std::system_error where the kernel cannot do this.
int askAboutEachCall(const std::function<int(const Call& call)>& codeOf, const std::function<void()>& work);

/// The same, where every call succeeds. Returns how many of them make a descriptor that a program would have
/// which a child process runs.
[[nodiscard]] int descriptorsLeftToChildren(const std::function<void()>& work);

/// The same, where one call is refused with `code`: the one of this number, from 0.
[[nodiscard]] int callsWhileOneIsRefused(int number, int code, const std::function<void()>& work);

/// Does everything again and again, with the next call of `work` refused each time, and at last with none:
/// prepares, works, and has the result checked. Returns how many calls were refused.
[[nodiscard]] int refuseEachCall(int code, const std::function<void()>& prepare,
                                 const std::function<void()>& work,
                                 const std::function<void(bool isRefused)>& check);

}  // namespace PlatformTests
