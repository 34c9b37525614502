// Starts peers of the installer helper in a simulated Mac, many at a time, and watches the helper's memory:
//   peer-crowd COUNT SEED
// Prints one line for each peer and each measurement: "refused WHO", "taken WHO", "lost ...", "memory
// KILOBYTES".

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr const char* kHelper = "/Library/PrivilegedHelperTools/com.norvik.InstallerHelper";
constexpr std::size_t kAtOnce = 12;
constexpr unsigned kAlice = 501;
constexpr useconds_t kPoll = 20'000;
constexpr int kTaken = 10;

struct Who {
    std::string name;
    std::string program;
    unsigned uid = 0;
    bool trusted = false;
};

const std::vector<Who>& strangers() {
    static const std::vector<Who> all{
        {"root's program outside an application", "/tmp/torture/peer"},
        {"a user's program", "/tmp/torture/peer", kAlice},
        {"a copy of the client", "/Users/alice/copy", kAlice},
        {"a copy of its application", "/Users/alice/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel",
         kAlice},
        {"a hard link to the client", "/Users/alice/Link.app/Contents/MacOS/Uninstall Sentrel", kAlice},
        {"an application with the client's property list",
         "/Users/alice/Soft.app/Contents/MacOS/Uninstall Sentrel", kAlice},
        {"another maker's application", "/Applications/Stranger.app/Contents/MacOS/Stranger"},
        {"an application that everybody can write to",
         "/Applications/Open.app/Contents/MacOS/Uninstall Sentrel"},
    };
    return all;
}

const Who& client() {
    static const Who who{
        "the client", "/Volumes/Uninstall/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel", 0, true};
    return who;
}

pid_t start(const Who& who, const char* kind, const char* path, const char* seconds) {
    const pid_t child = ::fork();
    if (child == 0) {
        if (who.uid != 0 && (::setgid(who.uid) != 0 || ::setuid(who.uid) != 0)) {
            ::_exit(2);
        }
        ::execl(who.program.c_str(), who.program.c_str(), kind, path, seconds, nullptr);
        ::_exit(127);
    }
    return child;
}

/// The most memory that a helper which runs now has ever held.
long helperMemory() {
    std::error_code ignored;
    long kilobytes = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", ignored)) {
        if (fs::read_symlink(entry.path() / "exe", ignored) != kHelper) {
            continue;
        }
        std::ifstream status(entry.path() / "status");
        for (std::string word; status >> word;) {
            if (word == "VmHWM:" && status >> word) {
                kilobytes = std::max(kilobytes, std::atol(word.c_str()));
            }
        }
    }
    return kilobytes;
}

class Crowd {
  public:
    explicit Crowd(unsigned long seed) : chance_(seed) {}

    void run(int count) {
        for (int number = 0; number < count || !running_.empty();) {
            if (number < count && running_.size() < kAtOnce) {
                startOne();
                ++number;
            } else {
                ::usleep(kPoll);
            }
            collect();
            memory_ = std::max(memory_, helperMemory());
        }
        std::cout << "memory " << memory_ << std::endl;
    }

  private:
    void startOne() {
        constexpr const char* kKinds[] = {"whole", "half", "silent", "garbage", "flood"};
        constexpr unsigned long kTrustedOnes = 5;
        const bool trusted = chance_() % kTrustedOnes == 0;
        const Who& who = trusted ? client() : strangers()[chance_() % strangers().size()];
        const char* path = trusted ? "/tmp/nothing" : "/tmp/victim";
        // A client is not hung up on, and has time to be a burden.
        const char* seconds = trusted ? "4" : "0.8";
        const pid_t child = start(who, kKinds[chance_() % std::size(kKinds)], path, seconds);
        running_.emplace(child, &who);
    }

    void collect() {
        int status = 0;
        for (pid_t child = 0; (child = ::waitpid(-1, &status, WNOHANG)) > 0;) {
            const Who& who = *running_.at(child);
            running_.erase(child);
            const int result = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            if (result == kTaken && who.trusted) {
                std::cout << "taken " << who.name << "\n";
            } else if (result == 0) {
                std::cout << (who.trusted ? "lost " : "refused ") << who.name
                          << (who.trusted ? " was refused\n" : "\n");
            } else {
                std::cout << "lost " << who.name << " ended with status " << result << "\n";
            }
        }
    }

    std::mt19937_64 chance_;
    std::map<pid_t, const Who*> running_;
    long memory_ = 0;
};

}  // namespace

int main(int argc, char* argv[]) {
    if (argc != 3) {
        return 2;
    }
    Crowd(std::strtoul(argv[2], nullptr, 10)).run(std::atoi(argv[1]));
    return 0;
}
