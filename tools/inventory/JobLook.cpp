#include "JobLook.h"

#include <algorithm>

#include "LaunchdTables.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "NorvikCommon/UIDUtil.h"
#include "PlaceLook.h"
#include "Platform/SystemPorts.h"

namespace Inventory {

namespace {

constexpr const char* kSystemDomain = "system";
// launchctl's exit statuses if there is no such domain (nobody is logged in) or job.
constexpr std::int32_t kNoDomain = 112;
constexpr std::int32_t kNoService = 113;
constexpr std::int32_t kDomainRefuses = 125;

struct Answer {
    bool exited = false;
    std::int32_t status = 0;
    std::string output;
    std::string error;

    [[nodiscard]] bool isGood() const { return exited && status == 0; }
};

/// Read before waiting: a Mac's table of jobs is longer than a pipe holds.
std::optional<Answer> askLaunchctl(const std::string& verb, const std::string& target) {
    const auto task = Platform::SystemPorts::current().tasks->launch(
        NorvikCommon::SystemPathProvider::launchctlExecutable().path(),
        std::vector<std::string>{verb, target});
    if (task == nullptr) {
        return std::nullopt;
    }
    Answer answer;
    answer.output = task->readOutputToEnd();
    answer.error = task->readErrorToEnd();
    task->waitUntilExit();
    answer.exited = task->terminationReason() == Platform::TerminationReason::exit;
    answer.status = task->terminationStatus();
    return answer;
}

/// Why an answer is useless, for people.
std::string reason(const std::optional<Answer>& answer) {
    if (!answer) {
        return "launchctl cannot be run";
    }
    if (!answer->exited) {
        return "launchctl was ended by signal " + std::to_string(answer->status);
    }
    if (answer->status == 0) {
        return "launchctl's answer has another form than expected";
    }
    const std::string line = answer->error.substr(0, answer->error.find('\n'));
    return "launchctl failed with status " + std::to_string(answer->status) +
           (line.empty() ? "" : ": " + line);
}

class JobLook {
  public:
    JobLook(const Viewpoint& viewpoint, Inventory& inventory)
        : viewpoint_(viewpoint), inventory_(inventory), labels_(knownLabels()) {}

    void lookAtDomain(const std::string& domain) {
        const auto answer = askLaunchctl("print", domain);
        if (domain != kSystemDomain && answer && answer->exited &&
            (answer->status == kNoDomain || answer->status == kNoService ||
             answer->status == kDomainRefuses)) {
            // A user who is not logged in has no jobs.
            return;
        }
        const auto listed = answer && answer->isGood() ? printedLabels(answer->output) : std::nullopt;
        if (!listed) {
            inventory_.blind.push_back("the jobs in " + domain + " could not be listed: " + reason(answer));
            return;
        }
        for (const std::string& label : *listed) {
            if (labels_.contains(label)) {
                lookAtJob(domain, label);
            }
        }
        lookAtOverrides(domain);
    }

  private:
    void lookAtJob(const std::string& domain, const std::string& label) {
        const auto answer = askLaunchctl("print", domain + "/" + label);
        if (answer && answer->exited && answer->status == kNoService) {
            // It has gone in between.
            return;
        }
        RegisteredJob job{domain, label, {}, {}, {}, false};
        if (answer && answer->isGood()) {
            const PrintedJob printed = printedJob(answer->output);
            job.pid = printed.pid;
            job.plist = printed.plist;
            job.program = printed.program;
            job.filesAreGone = isGone(job.plist) && isGone(job.program);
        } else {
            inventory_.blind.push_back("the job " + job.target() +
                                       " could not be looked at: " + reason(answer));
        }
        inventory_.jobs.push_back(std::move(job));
    }

    /// Whether a path that launchd remembers is gone, or it remembers none.
    bool isGone(const std::string& path) {
        Platform::Error error;
        if (!path.starts_with('/')) {
            return true;
        }
        if (viewpoint_.files.look(Base::URL::fileURL(path), error)) {
            return false;
        }
        if (!meansAbsent(error)) {
            inventory_.blind.push_back(error.description);
            return false;
        }
        return true;
    }

    void lookAtOverrides(const std::string& domain) {
        const auto answer = askLaunchctl("print-disabled", domain);
        const auto printed = answer && answer->isGood() ? printedOverrides(answer->output) : std::nullopt;
        if (!printed) {
            inventory_.notLookedAt.push_back("launchd overrides in " + domain);
            return;
        }
        for (const PrintedOverride& each : *printed) {
            if (labels_.contains(each.label)) {
                inventory_.overrides.push_back({domain, each.label, each.isDisabled});
            }
        }
    }

    const Viewpoint& viewpoint_;
    Inventory& inventory_;
    const std::set<std::string> labels_;
};

}  // namespace

void lookAtJobs(const Viewpoint& viewpoint, Inventory& inventory) {
    JobLook jobs(viewpoint, inventory);
    jobs.lookAtDomain(kSystemDomain);
    auto users = NorvikCommon::UIDUtil::allUsers();
    if (users.empty()) {
        inventory.blind.emplace_back(
            "the users' jobs could not be listed: the password database names no local user");
    }
    std::sort(users.begin(), users.end());
    for (const std::uint32_t user : users) {
        jobs.lookAtDomain("gui/" + std::to_string(user));
    }
}

}  // namespace Inventory
