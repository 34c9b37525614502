#pragma once

#include <string_view>

#include "Platform/Authorization.h"
#include "Platform/XPCMethod.h"

namespace InstallCommon {

/// The support helper from its clients' side. Stateless; every call blocks the calling thread.
struct SupportPrivilegedHelperClient {
    SupportPrivilegedHelperClient() = delete;

    /// The helper's launchd label and mach service.
    static constexpr std::string_view machServiceName = "com.norvik.SupportPrivilegedHelper";
    /// The method that installs a package; replies with an optional error.
    static constexpr Platform::XPCTypedMethod<Base::URL> installPackage{
        "installSwiftSupportPackage:completion:", true};

    /// Installs the helper with launchd; logs as BlessHelperWithLabel does.
    [[nodiscard]] static bool blessHelper(const Platform::SFAuthorization& auth);

    /// Has the helper install the runtime support package of the running program's bundle. True only if the
    /// helper reported success. False without a log line if the package is not in the bundle; false with the
    /// error's description as the whole line if the helper cannot be reached or reports an error. A helper
    /// that dies or is replaced is such an error at once; one that has not answered after an hour ends the
    /// wait with one, too.
    [[nodiscard]] static bool installSwiftSupportPackage();

    /// The protocol NVKSupportPrivilegedHelper.
    [[nodiscard]] static Platform::XPCInterface xpcInterface();
};

}  // namespace InstallCommon
