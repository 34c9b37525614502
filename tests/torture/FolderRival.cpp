// Somebody who is at work in the product's folders while they are removed:
//   folder-rival grow MILLISECONDS FOLDER...     adds files and folders as fast as it can, for so long
//   folder-rival vanish MICROSECONDS FOLDER...   so long after the first application began to go, removes the
//                                                folders itself, all at once

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr const char* kFirstItem = "/Applications/Sentrel.app/Contents/Info.plist";
constexpr auto kPatience = std::chrono::seconds(60);

void grow(const std::string& folder, Clock::time_point end) {
    constexpr unsigned kFolders = 40;
    for (unsigned long number = 0; Clock::now() < end; ++number) {
        const std::string sub = folder + "/grown " + std::to_string(number % kFolders);
        ::mkdir(sub.c_str(), 0755);
        ::close(::open((sub + "/" + std::to_string(number)).c_str(), O_CREAT | O_WRONLY, 0644));
    }
}

void vanish(const std::string& folder, std::chrono::microseconds delay) {
    const auto end = Clock::now() + kPatience;
    while (::access(kFirstItem, F_OK) == 0 && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    std::this_thread::sleep_for(delay);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 4) {
        return 2;
    }
    const bool grows = std::string(argv[1]) == "grow";
    const long time = std::atol(argv[2]);
    std::vector<std::thread> all;
    for (int index = 3; index < argc; ++index) {
        const std::string folder = argv[index];
        if (grows) {
            all.emplace_back(grow, folder, Clock::now() + std::chrono::milliseconds(time));
        } else {
            all.emplace_back(vanish, folder, std::chrono::microseconds(time));
        }
    }
    for (std::thread& each : all) {
        each.join();
    }
    return 0;
}
