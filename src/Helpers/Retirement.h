#pragma once

#include <string>

namespace Helpers {

/// How the helpers leave nothing of themselves behind. A job stays registered with launchd until the next
/// restart even when its files are gone, and it could never start again; so its registration goes too.
/// Nothing is logged: these are the last acts of a process whose client has its result already.

/// For the installer helper, when its work is done and nobody is connected: if its own files are gone (a
/// product was removed), takes every helper tool's job whose files are gone out of launchd, its own last. Its
/// own bootout ends this process.
void retireRemovedTools(const std::string& ownLabel);

/// For a helper that is needed once per blessing: removes its own tool and property list and takes its job
/// out of launchd, which ends this process.
void retireSelf(const std::string& ownLabel);

}  // namespace Helpers
