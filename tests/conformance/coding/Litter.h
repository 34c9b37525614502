#pragma once

/// Objects that are left to an autorelease pool, as the system's operations leave many. The program's calls
/// come from threads that have no pool of their own, so each has to make one: without it such an object stays
/// for good.
namespace Litter {

/// Leaves one object to the pool of this thread.
void leave();

/// How many of them are still there.
[[nodiscard]] int count();

/// From the first call on, how many more objects there are than at that call, of whatever class.
[[nodiscard]] long moreObjects();

}  // namespace Litter
