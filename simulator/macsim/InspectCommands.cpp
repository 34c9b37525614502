// The commands that only look at a Mac: log, state, transcript, list-faults, list-generations; and the one
// that removes it.

#include <array>
#include <cerrno>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <sstream>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include "macsim/Commands.h"
#include "macsim/MacRoot.h"
#include "macsim/ProductLayout.h"
#include "macsim/Refusal.h"
#include "macsim/Trees.h"

namespace Simulator {

namespace {

using Json = nlohmann::json;

constexpr useconds_t kFollowInterval = 100'000;

std::string text(const Json& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void printList(const char* title, const Json& list) {
    std::cout << title << (list.empty() ? ": none\n" : ":\n");
    for (const Json& entry : list) {
        std::cout << "  " << text(entry) << '\n';
    }
}

/// The reason why a Mac has no recorded state. Every run removes the previous one when it begins.
Refusal notRecorded(const MacRoot& mac, const std::string& folder) {
    const Descriptor lock = mac.open(kLockFile, O_RDONLY);
    const bool isRunning =
        lock.valid() && ::flock(lock.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    return Refusal(folder + (isRunning ? " is running; its state is recorded when the run ends"
                                       : " has not been run yet"));
}

void printTable(const Json& state) {
    const Json domains = state.value("jobs", Json::object());
    for (const auto& [domain, jobs] : domains.items()) {
        std::cout << "Jobs in " << domain << (jobs.empty() ? ": none\n" : ":\n");
        for (const Json& job : jobs) {
            const Json pid = job.value("pid", Json());
            std::cout << "  " << std::setw(6) << (pid.is_null() ? "-" : pid.dump()) << "  " << std::left
                      << std::setw(40) << text(job.value("label", Json(""))) << std::right << ' '
                      << text(job.value("plist", Json(""))) << '\n';
        }
    }
    const Json processes = state.value("processes", Json::array());
    std::cout << "Processes" << (processes.empty() ? ": none\n" : ":\n");
    for (const Json& process : processes) {
        std::cout << "  " << std::setw(6) << text(process.value("pid", Json(0))) << "  " << std::setw(5)
                  << text(process.value("uid", Json(0))) << "  " << text(process.value("path", Json("")))
                  << '\n';
    }
    printList("Loaded kernel extensions", state.value("kexts", Json::array()));
    printList("Names of distant objects", state.value("distantObjects", Json::array()));
    printList("Paths of the product", state.value("productPaths", Json::array()));
    std::cout << "Exit status of the command: " << text(state.value("exitStatus", Json())) << '\n';
}

}  // namespace

int printLog(const std::string& folder, bool follow) {
    const MacRoot mac(folder);
    const Descriptor log = mac.open(kSystemLog, O_RDONLY | O_NONBLOCK);
    if (!log.valid()) {
        throw Refusal("cannot read the system log: " + std::string(std::strerror(errno)));
    }
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = ::read(log.get(), buffer.data(), buffer.size());
        if (count > 0 && !std::cout.write(buffer.data(), count).flush()) {
            throw Refusal(std::string("cannot write to standard output: ") + std::strerror(errno));
        }
        if (count <= 0 && !follow) {
            return 0;
        }
        if (count <= 0) {
            ::usleep(kFollowInterval);
        }
    }
}

int printState(const std::string& folder, bool json) {
    const MacRoot mac(folder);
    const auto recorded = mac.read(kStateFile);
    if (!recorded) {
        throw notRecorded(mac, folder);
    }
    const Json state = Json::parse(*recorded, nullptr, false);
    if (!state.is_object()) {
        throw Refusal("the recorded state of " + folder + " is broken");
    }
    if (json) {
        std::cout << *recorded;
        return 0;
    }
    printTable(state);
    return 0;
}

int printTranscript(const std::string& folder, bool json) {
    const MacRoot mac(folder);
    const auto recorded = mac.read(kTranscriptFile);
    if (!recorded) {
        throw Refusal(folder + " has not been run yet");
    }
    if (json) {
        std::cout << *recorded;
        return 0;
    }
    std::istringstream lines(*recorded);
    for (std::string line; std::getline(lines, line);) {
        const Json call = Json::parse(line, nullptr, false);
        if (!call.is_object()) {
            throw Refusal("the transcript of " + folder + " is broken");
        }
        std::cout << std::setw(6) << text(call.value("realUser", Json())) << std::setw(7)
                  << text(call.value("effectiveUser", Json())) << "  "
                  << text(call.value("program", Json("")));
        for (const Json& argument : call.value("arguments", Json::array())) {
            std::cout << ' ' << text(argument);
        }
        std::cout << '\n';
    }
    return 0;
}

int printFaults() {
    for (const FaultKind& kind : faultKinds()) {
        const std::string name =
            std::string(kind.name) + (kind.value.empty() ? "" : "=" + std::string(kind.value));
        std::cout << std::left << std::setw(24) << name << kind.explanation << '\n';
    }
    return 0;
}

int printGenerations() {
    for (const std::string_view generation : generations()) {
        std::cout << generation << '\n';
    }
    return 0;
}

int deleteMac(const std::string& folder) {
    const MacRoot mac(folder);
    const Descriptor lock = mac.open(kLockFile, O_RDWR | O_CREAT, 0600);
    if (lock.valid() && ::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
        throw Refusal(folder + " is running");
    }
    // An item stays immutable if the run that made it so was killed.
    const auto session = decodeSession(mac.read(kSessionFile).value_or(""));
    const auto path = session ? faultValue(session->faults, "immutable") : std::nullopt;
    if (path) {
        const Descriptor item = mac.open(*path, O_RDONLY | O_NONBLOCK);
        int flags = 0;
        if (item.valid() && ::ioctl(item.get(), FS_IOC_GETFLAGS, &flags) == 0) {
            flags &= ~FS_IMMUTABLE_FL;
            static_cast<void>(::ioctl(item.get(), FS_IOC_SETFLAGS, &flags));
        }
    }
    if (!removeTree(mac.folder())) {
        throw Refusal("cannot remove all of " + folder);
    }
    return 0;
}

}  // namespace Simulator
