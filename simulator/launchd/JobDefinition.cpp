#include "launchd/JobDefinition.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

#include "Support/Files.h"

namespace Simulator {

namespace {

constexpr std::size_t kMaximumName = 80;
constexpr std::size_t kMaximumServices = 16;
constexpr std::size_t kMaximumPlist = 1U << 20U;

bool flagOf(const PropertyList& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    return found != dictionary.end() && found->is_boolean() && found->get<bool>();
}

std::int64_t secondsOf(const PropertyList& dictionary, const char* key, std::int64_t otherwise) {
    const auto found = dictionary.find(key);
    if (found == dictionary.end() || !found->is_number_integer()) {
        return otherwise;
    }
    return std::clamp<std::int64_t>(found->get<std::int64_t>(), 0, 3600);
}

KeepAlive keepAliveOf(const PropertyList& dictionary) {
    const auto found = dictionary.find("KeepAlive");
    if (found == dictionary.end()) {
        return KeepAlive::no;
    }
    if (found->is_object()) {
        const auto onSuccess = found->find("SuccessfulExit");
        if (onSuccess == found->end() || !onSuccess->is_boolean()) {
            return KeepAlive::always;
        }
        return onSuccess->get<bool>() ? KeepAlive::afterSuccess : KeepAlive::afterFailure;
    }
    return found->is_boolean() && found->get<bool>() ? KeepAlive::always : KeepAlive::no;
}

bool readProgram(const PropertyList& dictionary, JobDefinition& job) {
    const auto arguments = dictionary.find("ProgramArguments");
    if (arguments != dictionary.end() && arguments->is_array()) {
        for (const PropertyList& argument : *arguments) {
            if (!argument.is_string()) {
                return false;
            }
            job.arguments.push_back(argument.get<std::string>());
        }
    }
    job.program = stringOf(dictionary, "Program");
    if (job.program.empty() && !job.arguments.empty()) {
        job.program = job.arguments.front();
    }
    if (job.arguments.empty()) {
        job.arguments.push_back(job.program);
    }
    return job.program.starts_with('/');
}

bool readServices(const PropertyList& dictionary, JobDefinition& job) {
    const auto services = dictionary.find("MachServices");
    if (services == dictionary.end()) {
        return true;
    }
    if (!services->is_object() || services->size() > kMaximumServices) {
        return false;
    }
    for (const auto& [name, value] : services->items()) {
        if (!isUsableName(name)) {
            return false;
        }
        job.machServices.push_back(name);
    }
    return true;
}

}  // namespace

bool isUsableName(const std::string& name) {
    return !name.empty() && name.size() <= kMaximumName && name.front() != '.' &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return c > ' ' && c < 127 && c != '/' && c != ':'; });
}

std::optional<JobDefinition> makeJobDefinition(const PropertyList& dictionary, std::string& why) {
    JobDefinition job;
    job.label = stringOf(dictionary, "Label");
    if (!isUsableName(job.label)) {
        why = "has no usable Label";
        return std::nullopt;
    }
    if (!readProgram(dictionary, job)) {
        why = "names no program by an absolute path";
        return std::nullopt;
    }
    if (!readServices(dictionary, job)) {
        why = "has unusable MachServices";
        return std::nullopt;
    }
    const auto environment = dictionary.find("EnvironmentVariables");
    if (environment != dictionary.end() && environment->is_object()) {
        for (const auto& [name, value] : environment->items()) {
            if (value.is_string()) {
                job.environment[name] = value.get<std::string>();
            }
        }
    }
    job.keepAlive = keepAliveOf(dictionary);
    job.runAtLoad = flagOf(dictionary, "RunAtLoad");
    job.disabled = flagOf(dictionary, "Disabled");
    job.workingDirectory = stringOf(dictionary, "WorkingDirectory");
    job.exitTimeOut = secondsOf(dictionary, "ExitTimeOut", job.exitTimeOut);
    job.throttleInterval = secondsOf(dictionary, "ThrottleInterval", job.throttleInterval);
    return job;
}

std::optional<JobDefinition> readJobDefinition(const std::string& path, std::uint32_t owner, int& code,
                                               std::string& why) {
    code = kInputOutputError;
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (!file.valid() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        why = "is no file that can be read";
        return std::nullopt;
    }
    if ((status.st_uid != 0 && status.st_uid != owner) || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        code = kBadOwnership;
        why = "has bad ownership or permissions";
        return std::nullopt;
    }
    const auto bytes = readAll(file.get(), kMaximumPlist);
    const auto dictionary = bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
    if (!dictionary) {
        why = "is no property list";
        return std::nullopt;
    }
    return makeJobDefinition(*dictionary, why);
}

}  // namespace Simulator
