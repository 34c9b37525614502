#include <string>

#include "Platform/Foundation/ExceptionGuard.h"
#include "Platform/Foundation/FoundationStrings.h"
#include "Uninstaller/AppKit/AppKitFramework.h"
#include "Uninstaller/AppKit/System.h"

using Uninstall_Sentrel::AppKitFramework;
using Uninstall_Sentrel::ApplicationFramework;

namespace {

/// Makes the shared application. Returns the reason if it cannot be made, else nothing.
std::string makeApplication() {
    NSString* reason = nil;
    std::string unavailable;
    const BOOL made = Platform::Foundation::runGuarded(
        [&unavailable] {
            NSString* noDisplay = nil;
            if (!SNTDisplayIsAvailable(&noDisplay)) {
                unavailable = Platform::Foundation::text(noDisplay);
                return;
            }
            SNTMakeApplication();
        },
        &reason);
    if (!made) {
        Platform::Foundation::runGuarded([&] { unavailable = Platform::Foundation::text(reason); });
        if (unavailable.empty()) {
            unavailable = "The application framework cannot be started.";
        }
    }
    [reason release];
    return unavailable;
}

}  // namespace

/// The library's one symbol: an ApplicationFrameworkEntry. Main thread only.
extern "C" __attribute__((visibility("default"))) ApplicationFramework* SentrelApplicationFramework(
    std::string* error) {
    // Never destroyed: quitting ends the process inside a callback of the framework.
    static AppKitFramework* framework = nullptr;
    if (framework == nullptr) {
        const std::string unavailable = makeApplication();
        if (!unavailable.empty()) {
            *error = unavailable;
            return nullptr;
        }
        framework = new AppKitFramework;
    }
    return framework;
}
