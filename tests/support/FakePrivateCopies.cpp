#include "support/FakePrivateCopies.h"

#include <algorithm>
#include <cerrno>

namespace TestSupport {

namespace {

class FakeCopy final : public Platform::PrivateCopy {
  public:
    FakeCopy(FakePrivateCopies::File file, std::string path, CallList& calls)
        : file_(std::move(file)), path_(std::move(path)), calls_(calls) {}
    FakeCopy(const FakeCopy&) = delete;
    FakeCopy& operator=(const FakeCopy&) = delete;
    ~FakeCopy() override { calls_.push_back({"remove private copy", path_}); }

    [[nodiscard]] std::uint64_t size() const override { return file_.size; }
    [[nodiscard]] const std::string& sha256() const override { return file_.sha256; }

  private:
    FakePrivateCopies::File file_;
    std::string path_;
    CallList& calls_;
};

}  // namespace

std::unique_ptr<Platform::PrivateCopy> FakePrivateCopies::copy(const Base::URL& file,
                                                               const Base::URL& destination,
                                                               std::uint64_t atMost, Platform::Error& error) {
    lastLimit = atMost;
    calls_.push_back({"private copy", file.path(), destination.path()});
    if (const auto failure = failures.extract(file.path())) {
        error = failure.mapped();
        return nullptr;
    }
    const auto found = files.find(file.path());
    if (found == files.end()) {
        error = {"\"" + file.path() + "\" could not be read: No such file or directory", ENOENT};
        return nullptr;
    }
    File copied = found->second;
    copied.size = std::min(copied.size, atMost);
    if (copied.size < found->second.size) {
        copied.sha256 = "of the first part";
    }
    return std::make_unique<FakeCopy>(copied, destination.path(), calls_);
}

std::optional<Platform::Error> FakePrivateCopies::removeFolder(const Base::URL& folder) {
    calls_.push_back({"remove private folder", folder.path()});
    if (auto failure = failures.extract(folder.path())) {
        return std::move(failure.mapped());
    }
    return std::nullopt;
}

}  // namespace TestSupport
