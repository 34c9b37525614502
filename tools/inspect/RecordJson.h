#pragma once

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Base/URL.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace Inspect {

/// JSON whose objects keep the order in which their members were added.
using Json = nlohmann::ordered_json;

/// The values of the catalogue in JSON: a record is an object of its properties under their own names, a URL
/// its plain absolute path, an empty property null. Strings are carried byte by byte; `jsonText` makes them
/// valid UTF-8.
[[nodiscard]] Json toJson(const std::string& text);
[[nodiscard]] Json toJson(const Base::URL& url);
[[nodiscard]] Json toJson(const NorvikCommon::FilesystemItemInfo& item);
[[nodiscard]] Json toJson(const NorvikCommon::BundleInfo& bundle);
[[nodiscard]] Json toJson(const NorvikCommon::LaunchdInfo& job);
[[nodiscard]] Json toJson(const NorvikCommon::ApplicationInfo& application);
[[nodiscard]] Json toJson(const NorvikCommon::DaemonInfo& daemon);
[[nodiscard]] Json toJson(const NorvikCommon::BundleDaemonInfo& daemon);
[[nodiscard]] Json toJson(const NorvikCommon::KextInfo& kext);

template <class Value>
[[nodiscard]] Json toJson(const std::vector<Value>& values) {
    Json list = Json::array();
    for (const Value& value : values) {
        list.push_back(toJson(value));
    }
    return list;
}

/// The document in its printed form: indented, valid UTF-8 whatever the strings contain (invalid bytes become
/// U+FFFD), with a line feed at its end.
[[nodiscard]] std::string jsonText(const Json& document);

}  // namespace Inspect
