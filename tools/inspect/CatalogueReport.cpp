#include "CatalogueReport.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "DisplayText.h"
#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"

namespace Inspect {

namespace {

Json systemPaths() {
    using Provider = NorvikCommon::SystemPathProvider;
    return {{"daemonsPlists", toJson(Provider::daemonsPlists())},
            {"userAgentsPlists", toJson(Provider::userAgentsPlists())},
            {"extensions", toJson(Provider::extensions())},
            {"lsRegisterDatabase", toJson(Provider::lsRegisterDatabase())},
            {"launchctlExecutable", toJson(Provider::launchctlExecutable())},
            {"localApplications", toJson(Provider::localApplications())},
            {"localApplicationSupport", toJson(Provider::localApplicationSupport())}};
}

Json currentComponents() {
    using Provider = NorvikCommon::ComponentPathProvider;
    return {{"productName", Provider::productName},
            {"allNorvikProductsAppSupport", toJson(Provider::allNorvikProductsAppSupport())},
            {"productAppSupport", toJson(Provider::productAppSupport())},
            {"workflow", toJson(Provider::workflow())},
            {"managementConsole", toJson(Provider::managementConsole())},
            {"diagnostics", toJson(Provider::diagnostics())},
            {"viewLogs", toJson(Provider::viewLogs())},
            {"scanner", toJson(Provider::scanner())},
            {"uninstaller", toJson(Provider::uninstaller())},
            {"fileAccessDaemon", toJson(Provider::fileAccessDaemon())},
            {"containmentDaemon", toJson(Provider::containmentDaemon())},
            {"userAgent", toJson(Provider::userAgent())},
            {"trayMenu", toJson(Provider::trayMenu())},
            {"fileAccessFilterKext", toJson(Provider::fileAccessFilterKext())}};
}

Json legacyComponents() {
    using Provider = InstallCommon::ComponentPathProvider;
    return {{"legacyInstallationPaths", toJson(Provider::legacyInstallationPaths())},
            {"legacyProductsPaths", toJson(Provider::legacyProductsPaths())},
            {"legacyWorkflowPaths", toJson(Provider::legacyWorkflowPaths())},
            {"legacyVersionsFileAccessFilterKexts", toJson(Provider::legacyVersionsFileAccessFilterKexts())},
            {"legacyVersionsDaemons", toJson(Provider::legacyVersionsDaemons())},
            {"legacyVersionsBundleDaemons", toJson(Provider::legacyVersionsBundleDaemons())},
            {"legacyVersionsUserAgents", toJson(Provider::legacyVersionsUserAgents())},
            {"legacyVersionsGuiApps", toJson(Provider::legacyVersionsGuiApps())},
            {"auxiliaryHelperTools", toJson(Provider::auxiliaryHelperTools())}};
}

Json components() {
    Json all = currentComponents();
    all.update(legacyComponents());
    return all;
}

Json featurePaths() {
    using Provider = NorvikCommon::FeaturePathProvider;
    return {{"quarantineFolder", toJson(Provider::quarantineFolder())},
            {"quarantineDatabase", toJson(Provider::quarantineDatabase())},
            {"settingsPlist", toJson(Provider::settingsPlist())},
            {"avBases", toJson(Provider::avBases())},
            {"repairFolder", toJson(Provider::repairFolder())},
            {"flsStorage", toJson(Provider::flsStorage())},
            {"verdictStorage", toJson(Provider::verdictStorage())},
            {"fileRatingStorage", toJson(Provider::fileRatingStorage())},
            {"logDirectory", toJson(Provider::logDirectory())},
            {"logFileExtension", Provider::logFileExtension},
            {"preferencesFolder", toJson(Provider::preferencesFolder())},
            {"containmentServiceFolder", toJson(Provider::containmentServiceFolder())}};
}

struct Line {
    std::string property;
    std::string field;
    std::string value;
};

std::string valueText(const Json& value) {
    if (!value.is_string()) {
        return std::string(kNone);
    }
    // An empty bundle identifier is a value, not a missing one.
    const auto& text = value.get_ref<const std::string&>();
    return text.empty() ? "\"\"" : shown(std::string_view(text));
}

// Follows the records, which come from the program itself and nest at most four deep.
void flatten(const Json& value, const std::string& property, const std::string& field,
             std::vector<Line>& lines) {
    if (value.is_object()) {
        for (const auto& [name, member] : value.items()) {
            flatten(member, property, field.empty() ? name : field + '.' + name, lines);
        }
    } else if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            flatten(value[i], property, std::to_string(i + 1), lines);
        }
    } else {
        lines.push_back({property, field, valueText(value)});
    }
}

std::size_t columnsOfAll(const std::vector<Line>& lines, bool records, std::string Line::*column) {
    std::size_t width = 0;
    for (const Line& line : lines) {
        width = line.field.empty() == records ? width : std::max(width, (line.*column).size());
    }
    return width;
}

// A plain property is one line; a record or a list is a heading with its fields under it.
std::string providerText(const std::string& name, const std::vector<Line>& lines) {
    const std::size_t propertyWidth = columnsOfAll(lines, false, &Line::property);
    const std::size_t fieldWidth = columnsOfAll(lines, true, &Line::field);
    std::string text = name + '\n';
    std::string_view previous;
    for (const Line& each : lines) {
        if (each.field.empty()) {
            std::string line = "  ";
            appendCell(line, each.property, propertyWidth);
            appendLine(text, line + each.value);
            continue;
        }
        if (each.property != previous) {
            appendLine(text, "  " + each.property);
        }
        std::string line = "    ";
        appendCell(line, each.field, fieldWidth);
        appendLine(text, line + each.value);
        previous = each.property;
    }
    return text;
}

}  // namespace

Json catalogue() {
    return {{"SystemPathProvider", systemPaths()},
            {"ComponentPathProvider", components()},
            {"FeaturePathProvider", featurePaths()}};
}

std::string catalogueText(const Json& catalogue) {
    std::string text;
    for (const auto& [provider, properties] : catalogue.items()) {
        std::vector<Line> lines;
        for (const auto& [property, value] : properties.items()) {
            flatten(value, property, "", lines);
        }
        text += text.empty() ? "" : "\n";
        text += providerText(provider, lines);
    }
    return text;
}

}  // namespace Inspect
