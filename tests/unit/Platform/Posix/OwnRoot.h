#pragma once

#include <functional>

#include "support/Scratch.h"

namespace PlatformTests {

/// A small Mac as a child process's root folder: "/" and everything in it belong to root and nobody else
/// may change them, except /Applications (mode 0775), /Users/alice, which belongs to user 1501, and
/// /private/tmp (01777). /tmp, /var and /etc are links into /private; the password database contains root
/// and alice.
class OwnRoot {
  public:
    OwnRoot();

    /// Runs `check` in there, as root (of a user namespace when this process is not root) and says whether it
    /// ended without a failed expectation.
    [[nodiscard]] bool run(const std::function<void()>& check) const;
    /// Whether items can belong to somebody else than root in there.
    [[nodiscard]] static bool knowsOthers();

  private:
    Scratch scratch_;
};

constexpr unsigned kAlice = 1501;

/// Makes this process one of another user: for good if it is root's, else in a namespace that knows this user
/// alone (user_namespaces(7)). False if neither can be.
[[nodiscard]] bool becomeUser(unsigned user);

}  // namespace PlatformTests
