#include "Helpers/RefusalLog.h"

#include "NorvikCommon/InstallerLog.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

constexpr const char* kOtherKind = "for other reasons";
constexpr std::uint64_t kStep = 10;

std::string kindOf(const std::string& why) {
    const std::size_t colon = why.find(": ");
    return colon == std::string::npos ? why : why.substr(colon + 2);
}

void writeCount(const char* when, std::uint64_t count, const std::string& kind) {
    NorvikCommon::logInstallerLine(std::string("Refused ") + when + ": " + std::to_string(count) +
                                   " times, " + kind);
}

}  // namespace

RefusalLog::RefusalLog()
    : queue_(Platform::SystemPorts::current().dispatch->makeSerialQueue("com.norvik.refusals")) {}

void RefusalLog::note(const std::string& why) {
    queue_->sync([this, &why] { noteAlone(why); });
}

RefusalLog::Count& RefusalLog::countOf(const std::string& kind) {
    const auto found = counts_.find(kind);
    if (found != counts_.end()) {
        return found->second;
    }
    return counts_[counts_.size() < kMostKinds ? kind : kOtherKind];
}

void RefusalLog::noteAlone(const std::string& why) {
    const std::string kind = kindOf(why);
    Count& count = countOf(kind);
    ++count.refused;
    if (count.refused <= kWhole) {
        NorvikCommon::logInstallerLine("Refused " + why);
        count.written = count.refused;
    } else if (count.refused == count.next) {
        writeCount("so far", count.refused, counts_.contains(kind) ? kind : kOtherKind);
        count.written = count.refused;
        count.next *= kStep;
    }
}

void RefusalLog::summarize() {
    queue_->sync([this] {
        for (auto& [kind, count] : counts_) {
            if (count.refused > count.written) {
                writeCount("in all", count.refused, kind);
                count.written = count.refused;
            }
        }
    });
}

}  // namespace Helpers
