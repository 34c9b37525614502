// /usr/sbin/installer of a simulated Mac: installs a flat package (xar with PackageInfo and a gzip cpio
// Payload). The container and the payload are read by bsdtar.

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Linux/Services/MacServices.h"
#include "Support/Files.h"
#include "Support/Machine.h"
#include "Support/PropertyList.h"

namespace fs = std::filesystem;

namespace {

using namespace Simulator;

constexpr std::size_t kMaximumListing = 64U << 20U;

/// A folder for the opened package, removed at the end.
class Staging {
  public:
    Staging() { ::mkdtemp(path_.data()); }
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;
    ~Staging() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_ = "/var/tmp/installer.XXXXXX";
};

struct PackageInfo {
    std::string identifier;
    std::string version;
};

/// Runs bsdtar quietly; its standard output, or nothing if it failed.
std::optional<std::string> bsdtar(std::vector<std::string> arguments) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const Descriptor input(ends[0]);
    Descriptor output(ends[1]);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, output.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    arguments.insert(arguments.begin(), "bsdtar");
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    pid_t child = 0;
    const int failure = ::posix_spawn(&child, "/usr/bin/bsdtar", &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    output.reset();
    if (failure != 0) {
        return std::nullopt;
    }
    auto text = readAll(input.get(), kMaximumListing);
    if (!text) {
        ::kill(child, SIGKILL);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status == 0 ? text : std::nullopt;
}

/// The value of an attribute of the element pkg-info.
std::string attribute(const std::string& element, const std::string& name) {
    const std::string start = " " + name + "=\"";
    const std::size_t begin = element.find(start);
    const std::size_t end = begin == std::string::npos ? begin : element.find('"', begin + start.size());
    return end == std::string::npos ? "" : element.substr(begin + start.size(), end - begin - start.size());
}

std::optional<PackageInfo> readPackageInfo(const std::string& path) {
    const auto text = readFile(path);
    const std::size_t begin = text ? text->find("<pkg-info") : std::string::npos;
    const std::size_t end = begin == std::string::npos ? begin : text->find('>', begin);
    if (end == std::string::npos) {
        return std::nullopt;
    }
    const std::string element = text->substr(begin, end - begin);
    PackageInfo info{attribute(element, "identifier"), attribute(element, "version")};
    const std::string location = attribute(element, "install-location");
    const bool isFine = !info.identifier.empty() && info.identifier.front() != '.' &&
                        info.identifier.find('/') == std::string::npos && info.identifier.size() < 200 &&
                        (location.empty() || location == "/");
    return isFine ? std::optional(info) : std::nullopt;
}

/// Whether every name of a listing stays below the target.
bool staysInside(const std::string& listing) {
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        for (const fs::path& part : fs::path(line)) {
            if (part == "..") {
                return false;
            }
        }
        if (line.starts_with('/')) {
            return false;
        }
    }
    return true;
}

bool isRegular(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool writeReceipt(const PackageInfo& info) {
    std::error_code ignored;
    fs::create_directories("/var/db/receipts", ignored);
    const PropertyList receipt{{"PackageIdentifier", info.identifier},
                               {"PackageVersion", info.version},
                               {"InstallPrefixPath", "/"},
                               {"InstallDate", static_cast<std::int64_t>(std::time(nullptr))}};
    return replaceFile("/var/db/receipts/" + info.identifier + ".plist",
                       writePropertyList(receipt, PropertyListForm::xml), 0644);
}

int fail(const std::string& why) {
    std::cerr << "installer: Error - " << why << '\n';
    return 1;
}

int install(const std::string& package) {
    const auto session = decodeSession(readFile(std::string(kSessionFile)).value_or(""));
    if (session && session->faults.contains("package")) {
        return fail("The Installer encountered an error that caused the installation to fail.");
    }
    if (!readFile(package, 1U << 30U)) {
        return fail("the package path specified was invalid: '" + package + "'.");
    }
    const Staging staging;
    const std::string info = staging.path() + "/PackageInfo";
    const std::string payload = staging.path() + "/Payload";
    if (!bsdtar({"-xf", package, "-C", staging.path(), "PackageInfo", "Payload"}) || !isRegular(info) ||
        !isRegular(payload)) {
        return fail("the package '" + package + "' is damaged: it is not a flat package.");
    }
    const auto description = readPackageInfo(info);
    if (!description) {
        return fail("the package '" + package + "' is damaged: its PackageInfo is unusable.");
    }
    const auto listing = bsdtar({"-tf", payload});
    if (!listing || !staysInside(*listing)) {
        return fail("the package '" + package + "' is damaged: its Payload is unusable.");
    }
    if (!bsdtar({"-xpf", payload, "-C", "/"}) || !writeReceipt(*description)) {
        return fail("The Installer could not install some files in \"/\".");
    }
    std::cout << "installer: Package name is " << description->identifier << '\n'
              << "installer: Installing at base path /\n"
              << "installer: The install was successful.\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> executed{"executed"};
    executed.insert(executed.end(), argv + (argc > 0 ? 1 : 0), argv + argc);
    static_cast<void>(Platform::Linux::MacServices().request(executed));
    std::string package;
    std::string target;
    for (int index = 1; index + 1 < argc; index += 2) {
        const std::string option = argv[index];
        if (option == "-pkg" || option == "-package") {
            package = argv[index + 1];
        } else if (option == "-target" || option == "-tgt") {
            target = argv[index + 1];
        }
    }
    if (package.empty() || target.empty()) {
        std::cerr << "usage: installer -pkg <path> -target <volume>\n";
        return 1;
    }
    if (target != "/") {
        return fail("the volume '" + target + "' cannot be installed to.");
    }
    if (::geteuid() != 0) {
        std::cerr << "installer: Must be run as root to install this package.\n";
        return 1;
    }
    return install(package);
}
