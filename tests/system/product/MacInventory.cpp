#include "MacInventory.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include <sys/stat.h>

#include "support/WholeFile.h"

namespace SystemTests {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;

std::string contentsOf(const fs::path& item, mode_t mode) {
    if (S_ISLNK(mode)) {
        return fs::read_symlink(item).string();
    }
    return S_ISREG(mode) ? TestSupport::contentsOf(item) : "";
}

char kindOf(mode_t mode) {
    if (S_ISDIR(mode)) {
        return 'd';
    }
    return S_ISLNK(mode) ? 'l' : S_ISREG(mode) ? '-' : '?';
}

ItemFacts factsOf(const fs::path& item) {
    struct stat status {};
    if (::lstat(item.c_str(), &status) != 0) {
        throw std::runtime_error("cannot look at " + item.string());
    }
    return {kindOf(status.st_mode),
            status.st_mode & 07777U,
            status.st_uid,
            status.st_gid,
            status.st_ino,
            status.st_mtim.tv_sec * kNanoseconds + status.st_mtim.tv_nsec,
            contentsOf(item, status.st_mode)};
}

template <class Value>
std::string inWords(const Value& value) {
    std::ostringstream text;
    text << value;
    return text.str();
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const ItemFacts& facts) {
    out << facts.kind << ' ' << std::oct << facts.mode << std::dec << ' ' << facts.owner << ':' << facts.group
        << " inode " << facts.inode << " changed " << facts.changed << ' ';
    return facts.kind == 'l' ? out << "-> " << facts.contents
                             : out << facts.contents.size() << " bytes " << std::hex
                                   << std::hash<std::string>()(facts.contents) << std::dec;
}

MacInventory inventoryOf(const TestSupport::SimulatedMac& mac) {
    MacInventory items;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(mac.path())) {
        items.emplace(entry.path().string().substr(mac.path().size()), factsOf(entry.path()));
    }
    return items;
}

std::vector<std::string> differences(const MacInventory& actual, const MacInventory& expected,
                                     const std::set<std::string>& refilled) {
    std::vector<std::string> lines;
    for (const auto& [path, facts] : expected) {
        const auto found = actual.find(path);
        if (found == actual.end()) {
            lines.push_back("lost: " + path);
            continue;
        }
        ItemFacts now = found->second;
        now.changed = refilled.contains(path) ? facts.changed : now.changed;
        if (now != facts) {
            lines.push_back("changed: " + path + " from " + inWords(facts) + " to " + inWords(now));
        }
    }
    for (const auto& [path, facts] : actual) {
        if (!expected.contains(path)) {
            lines.push_back("left or new: " + path + " " + inWords(facts));
        }
    }
    return lines;
}

bool isAtOrBelow(const std::string& path, const std::string& place) {
    return path.starts_with(place) && (path.size() == place.size() || path[place.size()] == '/');
}

bool isAtOrBelow(const std::string& path, const std::vector<std::string>& places) {
    return std::ranges::any_of(places,
                               [&path](const std::string& place) { return isAtOrBelow(path, place); });
}

}  // namespace SystemTests
