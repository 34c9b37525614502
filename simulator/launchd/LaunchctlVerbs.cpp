#include "launchd/LaunchctlVerbs.h"

#include <csignal>
#include <map>
#include <memory>

#include "Base/WholeNumber.h"
#include "launchd/LaunchctlMessages.h"

namespace Simulator {

namespace {

const char* stateName(const Job& job) {
    return job.pid ? "running" : "not running";
}

std::string describe(const Job& job) {
    std::string text = job.domain.name() + "/" + job.definition.label + " = {\n\tpath = " + job.plist +
                       "\n\tstate = " + stateName(job) + "\n\tprogram = " + job.definition.program + "\n";
    if (job.pid) {
        text += "\tpid = " + std::to_string(*job.pid) + "\n";
    }
    return text + "}\n";
}

std::string pidColumn(const Job& job) {
    return job.pid ? std::to_string(*job.pid) : "-";
}

std::optional<int> signalNumber(const std::string& text) {
    static const std::map<std::string, int> names{{"HUP", SIGHUP},   {"INT", SIGINT},   {"KILL", SIGKILL},
                                                  {"TERM", SIGTERM}, {"USR1", SIGUSR1}, {"USR2", SIGUSR2},
                                                  {"STOP", SIGSTOP}, {"CONT", SIGCONT}, {"QUIT", SIGQUIT}};
    const auto found = names.find(text.starts_with("SIG") ? text.substr(3) : text);
    if (found != names.end()) {
        return found->second;
    }
    const auto number = Base::wholeNumber<int>(text);
    return number && *number > 0 && *number < NSIG ? number : std::nullopt;
}

}  // namespace

LaunchctlVerbs::LaunchctlVerbs(EventLoop& loop, JobRegistry& jobs, const Faults& faults)
    : loop_(loop), jobs_(jobs), faults_(faults) {}

std::optional<LaunchctlVerbs::Target> LaunchctlVerbs::parseTarget(const std::string& text) {
    Target target;
    const std::size_t slash = text.find('/');
    const std::string kind = text.substr(0, slash);
    std::string rest = slash == std::string::npos ? "" : text.substr(slash + 1);
    if (kind == "system") {
        target.label = rest;
        return target;
    }
    if (kind != "gui" && kind != "user" && kind != "login" && kind != "pid" && kind != "session") {
        return std::nullopt;
    }
    const std::size_t end = rest.find('/');
    const auto uid = Base::wholeNumber<std::uint32_t>(rest.substr(0, end));
    if (!uid) {
        return std::nullopt;
    }
    target.domain.uid = *uid;
    target.known = kind == "gui";
    target.label = end == std::string::npos ? "" : rest.substr(end + 1);
    return target;
}

bool LaunchctlVerbs::mayModify(const Caller& caller, const DomainId& domain) {
    return caller.uid == 0 || domain.uid == caller.uid;
}

void LaunchctlVerbs::run(const Caller& caller, const Arguments& arguments, const Done& done) {
    if (const auto seconds = faultNumber(faults_, "launchctl-hang")) {
        loop_.after(std::chrono::milliseconds(static_cast<std::int64_t>(*seconds * 1000)),
                    [this, caller, arguments, done] { dispatch(caller, arguments, done); });
        return;
    }
    dispatch(caller, arguments, done);
}

void LaunchctlVerbs::dispatch(const Caller& caller, const Arguments& arguments, const Done& done) {
    static const std::map<std::string, Verb> verbs{
        {"bootstrap", &LaunchctlVerbs::bootstrap}, {"bootout", &LaunchctlVerbs::bootout},
        {"enable", &LaunchctlVerbs::enable},       {"disable", &LaunchctlVerbs::enable},
        {"print", &LaunchctlVerbs::print},         {"list", &LaunchctlVerbs::list},
        {"kickstart", &LaunchctlVerbs::kickstart}, {"kill", &LaunchctlVerbs::kill},
        {"remove", &LaunchctlVerbs::remove},       {"print-disabled", &LaunchctlVerbs::printDisabled}};
    if (arguments.empty() || arguments.front() == "help") {
        done({arguments.empty() ? kUsage : 0, arguments.empty() ? "" : launchctlHelp(),
              arguments.empty() ? launchctlHelp() : ""});
        return;
    }
    const auto verb = verbs.find(arguments.front());
    if (verb == verbs.end()) {
        done({kUsage, "", "Unrecognized subcommand: " + arguments.front() + "\n" + launchctlHelp()});
        return;
    }
    if (faultValue(faults_, "launchctl-fail") == arguments.front()) {
        done(failed(phrase(arguments.front()), kInputOutputError));
        return;
    }
    (this->*verb->second)(caller, arguments, done);
}

void LaunchctlVerbs::bootstrap(const Caller& caller, const Arguments& arguments, const Done& done) {
    const auto target = arguments.size() > 1 ? parseTarget(arguments[1]) : std::nullopt;
    if (!target || !target->label.empty()) {
        done(badTarget("bootstrap <domain-target> [service-path, service-path2, ...]"));
        return;
    }
    int code = exists(*target) ? 0 : kDomainRefuses;
    if (!mayModify(caller, target->domain)) {
        code = kNotPermitted;
    } else if (arguments.size() < 3) {
        code = kInvalidArgument;
    }
    for (std::size_t index = 2; index < arguments.size() && code == 0; ++index) {
        code = jobs_.bootstrap(target->domain, arguments[index]);
    }
    done(code == 0 ? LaunchctlReply{} : failed("Bootstrap failed", code));
}

void LaunchctlVerbs::bootout(const Caller& caller, const Arguments& arguments, const Done& done) {
    const auto target = arguments.size() > 1 ? parseTarget(arguments[1]) : std::nullopt;
    if (!target || (target->label.empty() ? arguments.size() < 3 : arguments.size() > 2)) {
        done(badTarget("bootout <domain-target> [service-path1, service-path2, ...] | <service-target>"));
        return;
    }
    if (!mayModify(caller, target->domain)) {
        done(failed("Boot-out failed", kNotPermitted));
        return;
    }
    if (!exists(*target)) {
        done(failed("Boot-out failed", kDomainRefuses));
        return;
    }
    std::vector<std::string> labels;
    if (!target->label.empty()) {
        labels.push_back(target->label);
    }
    for (std::size_t index = 2; index < arguments.size(); ++index) {
        int code = 0;
        std::string why;
        const auto job = readJobDefinition(arguments[index], target->domain.uid.value_or(0), code, why);
        if (!job) {
            done(failed("Boot-out failed", code));
            return;
        }
        labels.push_back(job->label);
    }
    bootoutAll(target->domain, labels, done);
}

void LaunchctlVerbs::bootoutAll(const DomainId& domain, const std::vector<std::string>& labels,
                                const Done& done) {
    const auto left = std::make_shared<std::size_t>(labels.size());
    const auto worst = std::make_shared<int>(0);
    for (const std::string& label : labels) {
        jobs_.bootout(domain, label, [left, worst, done](int result) {
            *worst = result != 0 ? result : *worst;
            if (--*left == 0) {
                done(*worst == 0 ? LaunchctlReply{} : failed("Boot-out failed", *worst));
            }
        });
    }
}

void LaunchctlVerbs::enable(const Caller& caller, const Arguments& arguments, const Done& done) {
    const std::string& verb = arguments.front();
    const auto target = arguments.size() == 2 ? parseTarget(arguments[1]) : std::nullopt;
    if (!target || target->label.empty()) {
        done(badTarget(verb + " <service-target>"));
        return;
    }
    int code = kNotPermitted;
    if (mayModify(caller, target->domain)) {
        code = exists(*target) ? jobs_.setEnabled(target->domain, target->label, verb == "enable")
                               : kDomainRefuses;
    }
    done(code == 0 ? LaunchctlReply{} : failed("Could not " + verb + " service", code));
}

void LaunchctlVerbs::print(const Caller& /*caller*/, const Arguments& arguments, const Done& done) {
    const auto target = arguments.size() == 2 ? parseTarget(arguments[1]) : std::nullopt;
    if (!target) {
        done(badTarget("print <domain-target> | <service-target>"));
        return;
    }
    if (!exists(*target)) {
        done(noDomain(target->domain.description()));
        return;
    }
    if (!target->label.empty()) {
        const Job* job = jobs_.find(target->domain, target->label);
        done(job == nullptr ? noService(target->domain, target->label)
                            : LaunchctlReply{0, describe(*job), ""});
        return;
    }
    std::string text = target->domain.name() + " = {\n\tservices = {\n";
    for (const Job* job : jobs_.jobs(target->domain)) {
        text += "\t\t" + pidColumn(*job) + "\t" + job->definition.label + "\n";
    }
    done({0, text + "\t}\n}\n", ""});
}

void LaunchctlVerbs::printDisabled(const Caller& /*caller*/, const Arguments& arguments, const Done& done) {
    const auto target = arguments.size() == 2 ? parseTarget(arguments[1]) : std::nullopt;
    if (!target || !target->label.empty()) {
        done(badTarget("print-disabled <domain-target>"));
        return;
    }
    if (!exists(*target)) {
        done(noDomain(target->domain.description()));
        return;
    }
    std::string text = "\tdisabled services = {\n";
    for (const auto& [label, isDisabled] : jobs_.overrides(target->domain)) {
        text += "\t\t\"" + label + "\" => " + (isDisabled ? "true" : "false") + "\n";
    }
    done({0, text + "\t}\n", ""});
}

void LaunchctlVerbs::list(const Caller& caller, const Arguments& arguments, const Done& done) {
    const DomainId domain = caller.uid == 0 ? DomainId{} : DomainId{caller.uid};
    if (arguments.size() > 2) {
        done(usage("list [service-name]"));
        return;
    }
    if (arguments.size() == 2) {
        const Job* job = jobs_.find(domain, arguments[1]);
        done(job == nullptr ? noService(domain, arguments[1]) : LaunchctlReply{0, describe(*job), ""});
        return;
    }
    std::string text = "PID\tStatus\tLabel\n";
    for (const Job* job : jobs_.jobs(domain)) {
        text += pidColumn(*job) + "\t0\t" + job->definition.label + "\n";
    }
    done({0, text, ""});
}

void LaunchctlVerbs::kickstart(const Caller& caller, const Arguments& arguments, const Done& done) {
    bool killFirst = false;
    std::size_t index = 1;
    for (; index < arguments.size() && arguments[index].starts_with('-'); ++index) {
        killFirst = killFirst || arguments[index].find('k') != std::string::npos;
    }
    const auto target = index + 1 == arguments.size() ? parseTarget(arguments[index]) : std::nullopt;
    if (!target || target->label.empty()) {
        done(badTarget("kickstart [-k] <service-target>"));
        return;
    }
    if (!mayModify(caller, target->domain)) {
        done(failed("Could not kickstart service \"" + target->label + "\"", kNotPermitted));
        return;
    }
    const int code = exists(*target) ? jobs_.kickstart(target->domain, target->label, killFirst) : kNoDomain;
    if (code == kNoService) {
        done(noService(target->domain, target->label));
        return;
    }
    done(code == 0 ? LaunchctlReply{}
                   : failed("Could not kickstart service \"" + target->label + "\"", code));
}

void LaunchctlVerbs::kill(const Caller& caller, const Arguments& arguments, const Done& done) {
    const auto signal = arguments.size() == 3 ? signalNumber(arguments[1]) : std::nullopt;
    const auto target = arguments.size() == 3 ? parseTarget(arguments[2]) : std::nullopt;
    if (!signal || !target || target->label.empty()) {
        done(usage("kill <signal-number|signal-name> <service-target>"));
        return;
    }
    if (!mayModify(caller, target->domain)) {
        done(failed("Could not kill service", kNotPermitted));
        return;
    }
    const int code = exists(*target) ? jobs_.kill(target->domain, target->label, *signal) : kNoDomain;
    if (code == kNoService) {
        done(noService(target->domain, target->label));
        return;
    }
    done(code == 0 ? LaunchctlReply{} : failed("Could not kill service", code));
}

void LaunchctlVerbs::remove(const Caller& caller, const Arguments& arguments, const Done& done) {
    if (arguments.size() != 2) {
        done(usage("remove <service-name>"));
        return;
    }
    jobs_.bootout(caller.uid == 0 ? DomainId{} : DomainId{caller.uid}, arguments[1],
                  [done](int code) { done(code == 0 ? LaunchctlReply{} : failed("Remove failed", code)); });
}

}  // namespace Simulator
