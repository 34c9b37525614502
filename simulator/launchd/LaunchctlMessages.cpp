#include "launchd/LaunchctlMessages.h"

#include <cctype>

namespace Simulator {

namespace {

const char* wordsFor(int code) {
    switch (code) {
        case kNotPermitted:
            return "Operation not permitted";
        case kNoSuchProcess:
            return "No such process";
        case kInputOutputError:
            return "Input/output error";
        case kInvalidArgument:
            return "Invalid argument";
        case kNowInProgress:
            return "Operation now in progress";
        case kAlreadyInProgress:
            return "Operation already in progress";
        case kNoDomain:
            return "Could not find specified domain";
        case kNoService:
            return "Could not find specified service";
        case kServiceDisabled:
            return "Service is disabled";
        case kBadOwnership:
            return "Path had bad ownership/permissions";
        case kDomainRefuses:
            return "Domain does not support specified action";
        default:
            return "Unknown error";
    }
}

}  // namespace

const std::string& launchctlHelp() {
    static const std::string text =
        "Usage: launchctl <subcommand> ...\n"
        "Subcommands:\n"
        "\tbootstrap       Bootstraps a domain or a service into a domain.\n"
        "\tbootout         Tears down a domain or removes a service from a domain.\n"
        "\tenable          Enables an existing service.\n"
        "\tdisable         Disables an existing service.\n"
        "\tkickstart       Forces an existing service to start.\n"
        "\tkill            Sends a signal to the service instance.\n"
        "\tprint           Prints a description of a domain or service.\n"
        "\tprint-disabled  Prints which services are disabled.\n"
        "\tlist            Lists information about services.\n"
        "\tremove          Unloads the specified service name.\n";
    return text;
}

LaunchctlReply failed(const std::string& what, int code) {
    return {code, "", what + ": " + std::to_string(code) + ": " + wordsFor(code) + "\n"};
}

LaunchctlReply usage(const std::string& text) {
    return {kUsage, "", "Usage: launchctl " + text + "\n"};
}

LaunchctlReply badTarget(const std::string& text) {
    return {kUsage, "", "Unrecognized target specifier.\nUsage: launchctl " + text + "\n"};
}

LaunchctlReply noService(const DomainId& domain, const std::string& label) {
    return {kNoService, "",
            "Could not find service \"" + label + "\" in domain for " + domain.description() + "\n"};
}

LaunchctlReply noDomain(const std::string& text) {
    return {kNoDomain, "", "Could not find domain for " + text + "\n"};
}

std::string phrase(const std::string& verb) {
    if (verb == "bootstrap") {
        return "Bootstrap failed";
    }
    if (verb == "bootout") {
        return "Boot-out failed";
    }
    std::string text = verb;
    text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text + " failed";
}

}  // namespace Simulator
