#include "launchd/JobRegistry.h"

#include <algorithm>
#include <filesystem>

#include <signal.h>

#include "Support/PropertyList.h"

namespace Simulator {

namespace {

constexpr const char* kDisabledFolder = "/var/db/com.apple.xpc.launchd";

}  // namespace

std::string DomainId::name() const {
    return uid ? "gui/" + std::to_string(*uid) : "system";
}

std::string DomainId::description() const {
    return uid ? "user gui: " + std::to_string(*uid) : "system";
}

JobRegistry::JobRegistry(EventLoop& loop, SystemLogFile& log, const Machine& machine, const Session& session)
    : loop_(loop), log_(log), machine_(machine), session_(session) {}

void JobRegistry::boot() {
    domains_.insert(DomainId{});
    for (const User& user : machine_.users) {
        if (user.loggedIn) {
            domains_.insert(DomainId{user.uid});
        }
    }
    for (const DomainId& domain : domains_) {
        readDisabled(domain);
        loadFolder(domain, domain.uid ? "/Library/LaunchAgents" : "/Library/LaunchDaemons");
    }
}

void JobRegistry::loadFolder(const DomainId& domain, const std::string& folder) {
    std::vector<std::string> plists;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == ".plist") {
            plists.push_back(entry->path().string());
        }
    }
    std::sort(plists.begin(), plists.end());
    for (const std::string& plist : plists) {
        static_cast<void>(bootstrap(domain, plist));
    }
}

bool JobRegistry::hasDomain(const DomainId& domain) const {
    return domains_.contains(domain);
}

Job* JobRegistry::findMutable(const DomainId& domain, const std::string& label) {
    const auto found = jobs_.find({domain, label});
    return found == jobs_.end() ? nullptr : found->second.get();
}

const Job* JobRegistry::find(const DomainId& domain, const std::string& label) const {
    const auto found = jobs_.find({domain, label});
    return found == jobs_.end() ? nullptr : found->second.get();
}

std::vector<const Job*> JobRegistry::jobs(const DomainId& domain) const {
    std::vector<const Job*> found;
    for (const auto& [key, job] : jobs_) {
        if (key.first == domain) {
            found.push_back(job.get());
        }
    }
    return found;
}

int JobRegistry::bootstrap(const DomainId& domain, const std::string& plist) {
    if (!hasDomain(domain)) {
        return kDomainRefuses;
    }
    int code = 0;
    std::string why;
    auto definition = readJobDefinition(plist, owner(domain), code, why);
    if (!definition) {
        log_.write("Job not loaded into " + domain.name() + ": " + plist + " " + why);
        return code;
    }
    const auto& overrides = disabled_[domain];
    const auto found = overrides.find(definition->label);
    if (found == overrides.end() ? definition->disabled : found->second) {
        log_.write("Job not loaded into " + domain.name() + ": " + definition->label + " is disabled");
        return kServiceDisabled;
    }
    if (find(domain, definition->label) != nullptr) {
        return kAlreadyInProgress;
    }
    auto job = std::make_unique<Job>();
    job->domain = domain;
    job->definition = std::move(*definition);
    job->plist = plist;
    Job& registered = *job;
    jobs_[{domain, registered.definition.label}] = std::move(job);
    openServices(registered);
    if (registered.definition.runAtLoad || registered.definition.keepAlive == KeepAlive::always) {
        start(registered);
    }
    return 0;
}

void JobRegistry::bootout(const DomainId& domain, const std::string& label, std::function<void(int)> done) {
    Job* job = findMutable(domain, label);
    if (job == nullptr) {
        done(kNoSuchProcess);
        return;
    }
    if (job->state == Job::State::stopping) {
        done(kNowInProgress);
        return;
    }
    job->waiting.push_back(std::move(done));
    if (job->state == Job::State::waiting) {
        forget(*job);
        return;
    }
    job->state = Job::State::stopping;
    // First, so that nobody reaches a process that has been asked to go; connected peers may still be served.
    withdrawServices(*job);
    ::kill(*job->pid, SIGTERM);
    const pid_t pid = *job->pid;
    job->timer =
        loop_.after(std::chrono::seconds(job->definition.exitTimeOut), [pid] { ::kill(pid, SIGKILL); });
}

void JobRegistry::afterRemoval(const DomainId& domain, const std::string& label,
                               const std::function<void()>& done) {
    Job* job = findMutable(domain, label);
    if (job == nullptr || job->state != Job::State::stopping) {
        done();
        return;
    }
    job->waiting.emplace_back([done](int) { done(); });
}

void JobRegistry::withdrawServices(const Job& job) {
    for (const std::string& name : job.serviceNames) {
        std::error_code ignored;
        std::filesystem::remove("/var/run/mach/" + name, ignored);
    }
}

void JobRegistry::forget(Job& job) {
    disarm(job);
    if (job.timer) {
        loop_.cancel(*job.timer);
    }
    withdrawServices(job);
    const auto waiting = std::move(job.waiting);
    jobs_.erase({job.domain, job.definition.label});
    for (const auto& done : waiting) {
        done(0);
    }
}

int JobRegistry::kickstart(const DomainId& domain, const std::string& label, bool killFirst) {
    Job* job = findMutable(domain, label);
    if (job == nullptr) {
        return kNoService;
    }
    if (job->state == Job::State::stopping) {
        return kNowInProgress;
    }
    if (job->state == Job::State::running) {
        if (killFirst) {
            job->restart = true;
            ::kill(*job->pid, SIGKILL);
        }
        return killFirst ? 0 : kAlreadyInProgress;
    }
    start(*job);
    return job->state == Job::State::running ? 0 : kInputOutputError;
}

int JobRegistry::kill(const DomainId& domain, const std::string& label, int signal) {
    Job* job = findMutable(domain, label);
    if (job == nullptr) {
        return kNoService;
    }
    return job->pid && ::kill(*job->pid, signal) == 0 ? 0 : kNoSuchProcess;
}

int JobRegistry::setEnabled(const DomainId& domain, const std::string& label, bool enabled) {
    if (!hasDomain(domain)) {
        return kDomainRefuses;
    }
    if (!isUsableName(label)) {
        return kInvalidArgument;
    }
    auto& overrides = disabled_[domain];
    overrides[label] = !enabled;
    std::error_code ignored;
    std::filesystem::create_directories(kDisabledFolder, ignored);
    const PropertyList list = overrides;
    return replaceFile(disabledFile(domain), writePropertyList(list, PropertyListForm::xml), 0600)
               ? 0
               : kInputOutputError;
}

const std::map<std::string, bool>& JobRegistry::overrides(const DomainId& domain) const {
    static const std::map<std::string, bool> none;
    const auto found = disabled_.find(domain);
    return found == disabled_.end() ? none : found->second;
}

std::string JobRegistry::disabledFile(const DomainId& domain) const {
    return std::string(kDisabledFolder) +
           (domain.uid ? "/disabled." + std::to_string(*domain.uid) : "/disabled") + ".plist";
}

void JobRegistry::readDisabled(const DomainId& domain) {
    const auto bytes = readFile(disabledFile(domain));
    const auto list = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
    if (!list) {
        return;
    }
    for (const auto& [label, flag] : list->items()) {
        if (flag.is_boolean()) {
            disabled_[domain][label] = flag.get<bool>();
        }
    }
}

std::vector<std::string> JobRegistry::runningOnDemandJobs() const {
    std::vector<std::string> labels;
    for (const auto& [key, job] : jobs_) {
        if (job->onDemand() && job->pid && job->definition.keepAlive != KeepAlive::always) {
            labels.push_back(job->definition.label);
        }
    }
    return labels;
}

}  // namespace Simulator
