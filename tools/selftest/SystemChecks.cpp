// Services of the system that the program asks through its ports.

#include <unistd.h>

#include <atomic>

#include "Check.h"
#include "Folder.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "Platform/SystemPorts.h"

namespace Selftest {

namespace {

using Platform::SystemPorts;

constexpr std::int64_t kSecond = 1'000'000'000;

/// Never shows a dialog. Only root is given the right without one.
Outcome checkAuthorization() {
    const auto session = NorvikCommon::AuthorizationUtils::authorizationForRootAction(false);
    const bool isRoot = ::geteuid() == 0;
    if ((session != nullptr) != isRoot) {
        return failed(isRoot ? "root is refused the right" : "this user is given the right without a dialog");
    }
    if (isRoot && session->authorizationRef() == nullptr) {
        return failed("the session has no reference");
    }
    return passed(isRoot ? "root has the right" : "refused at once, as it should be");
}

Outcome checkAuthorizationReference() {
    return SystemPorts::current().authorization->create()->authorizationRef() != nullptr
               ? passed()
               : failed("a new session has no reference; blessing would be refused without a word");
}

constexpr const char* kInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>CFBundleIdentifier</key><string>com.norvik.selftest</string>
<key>CFBundleShortVersionString</key><string>6.4</string>
<key>CFBundleDevelopmentRegion</key><string>en</string>
<key>Number</key><integer>7</integer>
</dict></plist>
)";
constexpr const char* kTexts = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict><key>greeting</key><string>Hello</string></dict></plist>
)";

Outcome checkBundle() {
    const Folder folder;
    for (const char* const each :
         {"A.app", "A.app/Contents", "A.app/Contents/Resources", "A.app/Contents/Resources/en.lproj"}) {
        folder.makeFolder(each);
    }
    folder.makeFile("A.app/Contents/Info.plist", kInformation);
    folder.makeFile("A.app/Contents/Resources/Runtime.pkg");
    folder.makeFile("A.app/Contents/Resources/en.lproj/Texts.strings", kTexts);
    const auto bundle = SystemPorts::current().bundles->open(folder.url("A.app"));
    if (bundle == nullptr || bundle->infoString("CFBundleShortVersionString") != "6.4") {
        return failed("the version of a bundle is not read");
    }
    if (bundle->infoString("Number") || bundle->infoString("Absent")) {
        return failed("a value that is no text is taken for one");
    }
    const std::optional<Base::URL> resource = bundle->resource("Runtime", "pkg");
    if (!resource || resource->lastPathComponent() != "Runtime.pkg" || bundle->resource("Absent", "pkg")) {
        return failed("a resource of a bundle is not found");
    }
    if (bundle->localizedString("greeting", "Texts") != "Hello") {
        return failed("a text of a bundle is not found");
    }
    folder.makeFile("A.app/Contents/Info.plist",
                    std::string(kInformation).replace(std::string(kInformation).find("6.4"), 3, "6.5"));
    const auto afresh = SystemPorts::current().bundles->open(folder.url("A.app"));
    return afresh->infoString("CFBundleShortVersionString") == "6.5"
               ? passed()
               : failed("an updated bundle is told by its old version");
}

Outcome checkNoBundle() {
    const Folder folder;
    return SystemPorts::current().bundles->open(folder.url("Absent.app")) == nullptr
               ? passed()
               : failed("a bundle that is not there was opened");
}

Outcome checkSemaphore() {
    Platform::Clock& clock = SystemPorts::current().clock;
    const auto semaphore = SystemPorts::current().dispatch->makeSemaphore(1);
    if (!semaphore->wait(clock.time(0))) {
        return failed("a count is not taken");
    }
    const std::uint64_t before = clock.now();
    if (semaphore->wait(clock.time(kSecond / 20))) {
        return failed("a count was taken that nobody gave");
    }
    return clock.now() - before >= static_cast<std::uint64_t>(kSecond / 20)
               ? passed()
               : failed("the wait ends before its deadline");
}

Outcome checkQueues() {
    std::vector<int> order;
    {
        const auto queue = SystemPorts::current().dispatch->makeSerialQueue("com.norvik.selftest");
        for (int i = 0; i < 1000; ++i) {
            queue->async([&order, i] { order.push_back(i); });
        }
    }
    for (int i = 0; i < static_cast<int>(order.size()); ++i) {
        if (order[static_cast<std::size_t>(i)] != i) {
            return failed("a serial queue runs its blocks out of order");
        }
    }
    std::atomic<int> ran = 0;
    {
        const auto queue = SystemPorts::current().dispatch->makeConcurrentQueue("com.norvik.selftest");
        for (int i = 0; i < 1000; ++i) {
            queue->async([&ran] { ++ran; });
        }
    }
    return order.size() == 1000 && ran == 1000 ? passed() : failed("blocks were lost");
}

Outcome checkTimer() {
    Platform::Clock& clock = SystemPorts::current().clock;
    const auto semaphore = SystemPorts::current().dispatch->makeSemaphore(0);
    const auto timer = SystemPorts::current().dispatch->makeTimer([&] { semaphore->signal(); });
    timer->schedule(Platform::kTimeNow, kSecond / 100, 0);
    timer->resume();
    for (int i = 0; i < 3; ++i) {
        if (!semaphore->wait(clock.time(20 * kSecond))) {
            return failed("the timer does not fire");
        }
    }
    timer->cancel();
    return passed();
}

Outcome checkDistantObject() {
    return SystemPorts::current().distantObjects->rootProxy("com.norvik.selftest.nobody") == nullptr
               ? passed()
               : failed("an object that nobody registered was found");
}

Outcome checkCodeModule() {
    void* address = nullptr;
    const auto error = SystemPorts::current().codeModules->load(Base::URL::fileURL("/nothing/here.dylib"),
                                                                "symbol", address);
    return error && address == nullptr && !error->description.empty()
               ? passed()
               : failed("a library that is not there was loaded");
}

}  // namespace

Checks authorizationChecks() {
    return {{"authorization.right", checkAuthorization},
            {"authorization.reference", checkAuthorizationReference}};
}

Checks systemChecks() {
    return {{"system.bundle", checkBundle},         {"system.no-bundle", checkNoBundle},
            {"system.semaphore", checkSemaphore},   {"system.queues", checkQueues},
            {"system.timer", checkTimer},           {"system.distant-object", checkDistantObject},
            {"system.code-module", checkCodeModule}};
}

}  // namespace Selftest
