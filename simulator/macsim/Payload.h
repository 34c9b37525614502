#pragma once

#include <string>
#include <vector>

namespace Simulator {

/// An item of a payload. Both paths are absolute: in a Mac on which the product is installed, and in the
/// payload's folder as if that were the root.
struct PayloadItem {
    std::string installed;
    std::string inPayload;
};

/// Everything that an installation copies out of a payload, as its commands demand it.
[[nodiscard]] std::vector<PayloadItem> payloadItems();

/// The two versions of a bundle.
struct BundleVersion {
    std::string shortVersion;
    std::string build;
};

/// The version of the product in a payload. Throws a Refusal that names the missing item if `folder` is not a
/// payload.
[[nodiscard]] BundleVersion versionOfPayload(const std::string& folder);

/// Gives a bundle another version. Throws a Refusal if its Info.plist cannot be rewritten.
void setBundleVersion(const std::string& bundle, const BundleVersion& version);

}  // namespace Simulator
