#include "launchd/DistantNames.h"

#include <algorithm>

#include "launchd/Caller.h"

namespace Simulator {

std::optional<DistantNames::Owner> DistantNames::processOf(const std::string& label) const {
    const Job* job = jobs_.find(DomainId{}, label);
    const auto start = job != nullptr && job->pid ? startOfProcess(*job->pid) : std::nullopt;
    // A process that has ended but is not yet reaped has no executable any more.
    return start && executableOfProcess(*job->pid) ? std::optional(Owner{*job->pid, *start}) : std::nullopt;
}

std::optional<DistantNames::Owner> DistantNames::owner(const std::string& name) const {
    for (const auto& [label, names] : machine_.distantObjects) {
        if (std::find(names.begin(), names.end(), name) != names.end()) {
            if (const auto owner = processOf(label)) {
                return owner;
            }
        }
    }
    return std::nullopt;
}

std::vector<std::string> DistantNames::names() const {
    std::vector<std::string> found;
    for (const auto& [label, names] : machine_.distantObjects) {
        if (processOf(label)) {
            found.insert(found.end(), names.begin(), names.end());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

}  // namespace Simulator
