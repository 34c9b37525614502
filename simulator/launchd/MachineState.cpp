#include "launchd/MachineState.h"

#include <filesystem>

#include <nlohmann/json.hpp>

#include "Support/Files.h"
#include "launchd/Caller.h"

namespace Simulator {

namespace {

using Json = nlohmann::json;

Json jobsOf(const JobRegistry& registry) {
    Json domains = Json::object();
    for (const DomainId& domain : registry.domains()) {
        Json jobs = Json::array();
        for (const Job* job : registry.jobs(domain)) {
            jobs.push_back({{"label", job->definition.label},
                            {"pid", job->pid ? Json(*job->pid) : Json(nullptr)},
                            {"plist", job->plist}});
        }
        domains[domain.name()] = std::move(jobs);
    }
    return domains;
}

Json processes() {
    Json list = Json::array();
    for (const pid_t pid : allProcesses()) {
        const auto path = executableOfProcess(pid);
        const auto uid = userOfProcess(pid);
        if (pid != 1 && path && uid) {
            list.push_back({{"pid", pid},
                            {"uid", *uid},
                            {"name", std::filesystem::path(*path).filename().string()},
                            {"path", *path}});
        }
    }
    return list;
}

}  // namespace

bool recordMachineState(const JobRegistry& jobs, const LoadedExtensions& extensions,
                        const DistantNames& distantNames, int exitStatus) {
    const Json state{{"exitStatus", exitStatus},
                     {"jobs", jobsOf(jobs)},
                     {"processes", processes()},
                     {"kexts", extensions.identifiers()},
                     {"distantObjects", distantNames.names()}};
    return replaceFile(std::string(kStateFile),
                       state.dump(2, ' ', false, Json::error_handler_t::replace) + "\n", 0644);
}

}  // namespace Simulator
