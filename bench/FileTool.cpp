// A command line over the file manager, so that it can be measured side by side with the system's tools.
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

#include "Platform/Posix/PosixFileManager.h"

namespace {

constexpr int kFailed = 1;
constexpr int kMisuse = 2;

int report(const std::optional<Platform::Error>& error) {
    if (!error) {
        return 0;
    }
    std::fprintf(stderr, "%s\n", error->description.c_str());
    return kFailed;
}

int misuse() {
    std::fputs(
        "usage: FileTool remove ITEM | copy SOURCE DESTINATION | chown UID GID ITEM  (absolute paths)\n",
        stderr);
    return kMisuse;
}

bool parseNumber(std::string_view text, std::uint32_t& number) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

int changeOwner(Platform::FileManager& files, std::uint32_t owner, std::uint32_t group,
                const Base::URL& item) {
    int status = 0;
    const auto failed = [&status](const Base::URL& each, int error) {
        std::fprintf(stderr, "%s: error %d\n", each.path().c_str(), error);
        status = kFailed;
    };
    if (const int error = files.setOwner(item, owner, group); error != 0) {
        failed(item, error);
    }
    files.setOwnerOfContents(item, owner, group, failed);
    return status;
}

/// What this process has taken at most; its parent cannot know it, for whom a child begins as big as itself.
void showPeakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:")) {
            std::printf("peak memory %s\n", line.substr(line.find_first_of("0123456789")).c_str());
        }
    }
}

int run(int count, char** arguments) {
    Platform::Posix::PosixFileManager files;
    const std::string_view verb = count > 1 ? arguments[1] : "";
    const auto item = [arguments](int index) { return Base::URL::fileURL(arguments[index]); };
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    if (verb == "remove" && count == 3) {
        return report(files.removeItem(item(2)));
    }
    if (verb == "copy" && count == 4) {
        return report(files.copyItem(item(2), item(3)));
    }
    if (verb == "chown" && count == 5 && parseNumber(arguments[2], owner) &&
        parseNumber(arguments[3], group)) {
        return changeOwner(files, owner, group, item(4));
    }
    return misuse();
}

}  // namespace

int main(int count, char** arguments) {
    const int status = run(count, arguments);
    if (std::getenv("PEAK_MEMORY") != nullptr) {
        showPeakMemory();
    }
    return status;
}
