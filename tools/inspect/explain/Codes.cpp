#include "inspect/explain/Codes.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <span>
#include <system_error>

namespace Inspect {

namespace {

struct Code {
    std::int64_t number;
    CodeMeaning meaning;
};

constexpr std::string_view kReport = "Send the report to support.";

// The low bits of a kernel extension's return code; the others are kKextSystem.
constexpr std::uint32_t kKextSystem = 0xdc008000;
constexpr std::array kKextCodes{
    Code{0x01, {"kOSKextReturnInternalError", "internal error of the system", kReport}},
    Code{0x02, {"kOSKextReturnNoMemory", "out of memory", "Restart the Mac and run the uninstaller again."}},
    Code{0x04, {"kOSKextReturnNotPrivileged", "not permitted", kReport}},
    Code{0x05, {"kOSKextReturnInvalidArgument", "the identifier is not valid", kReport}},
    Code{0x06, {"kOSKextReturnNotFound", "not loaded", "", true}},
    Code{0x09, {"kOSKextReturnUnsupported", "not supported on this Mac", "", true}},
    Code{0x0e, {"kOSKextReturnDependencies", "another extension depends on it", "Restart the Mac."}},
    Code{0x17,
         {"kOSKextReturnStartStopError", "the extension refuses to stop",
          "Restart the Mac: the extension is gone from the disk and is not loaded again."}},
    Code{0x18,
         {"kOSKextReturnInUse", "in use",
          "Restart the Mac: the extension is gone from the disk and is not loaded again."}},
    Code{0x19,
         {"kOSKextReturnTimeout", "the extension did not stop in time",
          "Restart the Mac: the extension is gone from the disk and is not loaded again."}},
    Code{0x1b, {"kOSKextReturnSystemPolicy", "refused by the system's policy", "Restart the Mac."}},
};

constexpr std::array kLaunchctlCodes{
    Code{1, {"EPERM", "not permitted", kReport}},
    Code{3, {"ESRCH", "the job is not loaded", "", true}},
    Code{5,
         {"EIO", "launchd refused without a reason",
          "Restart the Mac: the job's files are gone and it is not loaded again."}},
    Code{22, {"EINVAL", "launchctl did not understand the request", kReport}},
    Code{36, {"EINPROGRESS", "the job is still stopping", "It ends by itself; check again in a minute."}},
    Code{37, {"EALREADY", "the job is already being stopped", "It ends by itself; check again in a minute."}},
    Code{64, {"EX_USAGE", "launchctl did not understand the request", kReport}},
    Code{112, {"", "the user is not logged in", "", true}},
    Code{113, {"", "the job is not loaded", "", true}},
    Code{119, {"", "the job is disabled", "", true}},
    Code{122, {"", "the job's file has the wrong owner or mode", kReport}},
    Code{125, {"", "the user has no session that can hold the job", "", true}},
    Code{134, {"", "the job cannot be loaded in that session", "", true}},
    Code{150, {"", "System Integrity Protection forbids it", kReport}},
};

constexpr std::array kBlessingCodes{
    Code{2,
         {"kSMErrorInternalFailure", "launchd could not install the helper",
          "Check that /Library/PrivilegedHelperTools and /Library/LaunchDaemons can be written, allow the "
          "item under Login Items if it is switched off there, and run the uninstaller again."}},
    Code{3,
         {"kSMErrorInvalidSignature", "the signature does not match",
          "Use an unmodified copy of the uninstaller."}},
    Code{4,
         {"kSMErrorAuthorizationFailure", "no authorization",
          "Run it as an administrator; with --silent, as root."}},
    Code{5,
         {"kSMErrorToolNotValid", "the helper is not valid", "Use an unmodified copy of the uninstaller."}},
    Code{6,
         {"kSMErrorJobNotFound", "the uninstaller does not contain the helper",
          "Use a whole copy of the uninstaller."}},
    Code{7, {"kSMErrorServiceUnavailable", "the system's service is not available", "Restart the Mac."}},
    Code{8,
         {"kSMErrorJobPlistNotFound", "the helper carries no property list",
          "Use an unmodified copy of the uninstaller."}},
    Code{9,
         {"kSMErrorJobMustBeEnabled", "the helper is switched off",
          "Allow the item in System Settings, General, Login Items, and run the uninstaller again."}},
    Code{10,
         {"kSMErrorInvalidPlist", "the helper's property list is not valid",
          "Use an unmodified copy of the uninstaller."}},
};

std::optional<CodeMeaning> meaningOf(std::span<const Code> codes, std::int64_t number) {
    const auto found = std::find_if(codes.begin(), codes.end(),
                                    [number](const Code& code) { return code.number == number; });
    return found == codes.end() ? std::nullopt : std::optional(found->meaning);
}

}  // namespace

std::optional<CodeMeaning> kextCode(std::string_view text) {
    std::int32_t code = 0;
    constexpr int kHexadecimal = 16;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), code, kHexadecimal);
    if (error != std::errc() || end != text.data() + text.size()) {
        return std::nullopt;
    }
    const auto bits = static_cast<std::uint32_t>(code);
    const std::uint32_t low = bits & 0xFFF;
    return bits - low == kKextSystem ? meaningOf(kKextCodes, low) : std::nullopt;
}

std::optional<CodeMeaning> launchctlStatus(std::int32_t status) {
    return meaningOf(kLaunchctlCodes, status);
}

std::optional<CodeMeaning> blessingCode(std::int32_t code) {
    return meaningOf(kBlessingCodes, code);
}

}  // namespace Inspect
