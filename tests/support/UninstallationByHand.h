#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/FakeLaunchd.h"

namespace TestSupport {

/// Carries out an uninstallation on the parts of a fake Mac, step by step as a person with the list of
/// ProductPlaces would: no code of the product takes part. Afterwards `mac` is what an uninstallation must
/// leave, mac.log has the lines that it must write, launchd.calls its calls of launchctl, and mac.clock its
/// pauses. `users` are the ids that agents are stopped for, in the order in which that happens.
void uninstallByHand(FakeMac& mac, FakeLaunchd& launchd, const std::vector<std::uint32_t>& users);

/// The users whom the first agent of a log was stopped for, after user 0, in the log's order, which means
/// nothing.
[[nodiscard]] std::vector<std::uint32_t> usersOfAgents(const std::vector<std::string>& log);

/// Sorts the lines of the helper tools at the end of a log, and those of their property lists: both come in
/// any order.
void sortHelperTools(std::vector<std::string>& log);

}  // namespace TestSupport
