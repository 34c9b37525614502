#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// sentrel-selftest: whether a real Mac does what the macOS side of the program relies on.
namespace Selftest {

enum class Verdict : std::uint8_t { pass, fail, skip };

/// What a check found. The reason is one line: why it failed or could not be done; for one that passed, what
/// was seen, or nothing.
struct Outcome {
    Verdict verdict = Verdict::fail;
    std::string reason;

    friend bool operator==(const Outcome&, const Outcome&) = default;
};

[[nodiscard]] inline Outcome passed(std::string seen = {}) {
    return {Verdict::pass, std::move(seen)};
}
[[nodiscard]] inline Outcome failed(std::string why) {
    return {Verdict::fail, std::move(why)};
}
[[nodiscard]] inline Outcome skipped(std::string why) {
    return {Verdict::skip, std::move(why)};
}

/// One question to the system. Each runs in a process of its own, on the main thread.
struct Check {
    /// "group.what"; unique.
    std::string_view name;
    Outcome (*run)();
};

using Checks = std::vector<Check>;

// The groups, in the order of the report.
[[nodiscard]] Checks runtimeChecks();
[[nodiscard]] Checks connectionChecks();
[[nodiscard]] Checks refusalChecks();
[[nodiscard]] Checks peerChecks();
[[nodiscard]] Checks authorizationChecks();
[[nodiscard]] Checks systemChecks();
[[nodiscard]] Checks processChecks();
[[nodiscard]] Checks fileChecks();
[[nodiscard]] Checks protectionChecks();
[[nodiscard]] Checks windowChecks();

/// All that run on the system that is built for.
[[nodiscard]] Checks allChecks();

}  // namespace Selftest
