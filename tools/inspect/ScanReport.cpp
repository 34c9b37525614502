#include "ScanReport.h"

#include <algorithm>
#include <cstdint>

#include "DisplayText.h"
#include "ItemText.h"

namespace Inspect {

namespace {

using Inventory::Verdict;
namespace Product = ::Inventory;

constexpr int kScanFormat = 1;
constexpr std::size_t kUnbroken = SIZE_MAX;

std::string joined(const std::vector<std::string>& parts) {
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : ", ") + part;
    }
    return text;
}

std::string versionText(const Product::Version& version) {
    return shown(std::string_view(version.shortVersion)) + " (" + shown(std::string_view(version.build)) +
           ")";
}

std::string where(const Scan& scan) {
    return scan.inventory.root.empty() ? "on this Mac" : "in " + shown(std::string_view(scan.inventory.root));
}

std::string headline(const Scan& scan) {
    switch (scan.verdict()) {
        case Verdict::nothing:
            return "Nothing of Sentrel is " + where(scan) + ".";
        case Verdict::unknown:
            return "It is unknown whether any part of Sentrel is " + where(scan) + ".";
        case Verdict::installed:
            return "Sentrel " +
                   (scan.inventory.version ? versionText(*scan.inventory.version) + " " : std::string()) +
                   "is installed " + where(scan) + ".";
        case Verdict::leftovers:
            return "Sentrel is not installed " + where(scan) + ", but something of it is left.";
        case Verdict::restart:
            return "Sentrel is not installed " + where(scan) + "; a restart removes what is left of it.";
    }
    return {};
}

Colour colourOf(Verdict verdict) {
    switch (verdict) {
        case Verdict::nothing:
        case Verdict::installed:
            return Colour::good;
        case Verdict::leftovers:
        case Verdict::restart:
            return Colour::warning;
        case Verdict::unknown:
            return Colour::bad;
    }
    return Colour::bad;
}

void appendSection(std::string& text, const std::string& title, const std::vector<std::string>& lines,
                   std::size_t width) {
    if (lines.empty()) {
        return;
    }
    text += "\n" + title + "\n";
    for (const std::string& line : lines) {
        appendFolded(text, line, 2, width);
    }
}

std::string rightAligned(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::vector<std::string> placeLines(const Scan& scan) {
    constexpr std::size_t kKindWidth = 6;
    constexpr std::size_t kSizeWidth = 9;
    constexpr std::size_t kFilesWidth = 6;
    std::vector<std::string> lines;
    for (std::size_t index = 0; index < scan.inventory.places.size(); ++index) {
        const Product::Place& place = scan.inventory.places[index];
        std::string line;
        appendCell(line, nameOf(place.kind), kKindWidth);
        if (!scan.sizes.empty()) {
            const Platform::TreeSize& size = scan.sizes[index];
            const bool isFolder = place.kind == Platform::ItemKind::folder;
            line += rightAligned((size.unread > 0 ? ">" : "") + sizeText(size.bytes), kSizeWidth) + "  " +
                    rightAligned(isFolder ? std::to_string(size.files) : "", kFilesWidth) + "  ";
        }
        const std::string indent(columnsOf(line), ' ');
        lines.push_back(line + shown(std::string_view(place.paths.front())));
        for (std::size_t spelling = 1; spelling < place.paths.size(); ++spelling) {
            lines.push_back(indent + "= " + shown(std::string_view(place.paths[spelling])));
        }
    }
    if (!lines.empty() && !scan.sizes.empty()) {
        lines.insert(lines.begin(), "kind         size   files  path");
    }
    return lines;
}

std::string jobText(const Product::RegisteredJob& job) {
    return shown(std::string_view(job.target())) +
           (job.pid ? ", running as process " + std::to_string(*job.pid) : ", not running") +
           (job.filesAreGone ? ", its files are gone" : "");
}

std::string processText(const Product::RunningProcess& process) {
    return std::to_string(process.pid) + ", user " + std::to_string(process.uid) + ", " +
           shown(std::string_view(process.path));
}

std::string overrideText(const Product::JobOverride& each) {
    return shown(std::string_view(each.domain + "/" + each.label)) +
           (each.isDisabled ? ", disabled" : ", enabled");
}

template <class Thing, class Text>
std::vector<std::string> linesOf(const std::vector<Thing>& things, const Text& text) {
    std::vector<std::string> lines;
    std::transform(things.begin(), things.end(), std::back_inserter(lines), text);
    return lines;
}

std::string shownLine(const std::string& text) {
    return shown(std::string_view(text));
}

std::vector<std::string> removal(const Scan& scan) {
    return linesOf(Product::leftoversOf(scan.inventory, scan.verdict()),
                   [](const Product::Leftover& leftover) { return leftover.line; });
}

Json placeJson(const Scan& scan, std::size_t index) {
    const Product::Place& place = scan.inventory.places[index];
    Json object{{"path", place.paths.front()},
                {"alsoSpelled", Json(std::vector<std::string>(place.paths.begin() + 1, place.paths.end()))},
                {"kind", nameOf(place.kind)},
                {"role", nameOf(place.role)},
                {"generations", place.generations}};
    if (!scan.sizes.empty()) {
        const Platform::TreeSize& size = scan.sizes[index];
        object["bytes"] = size.bytes;
        object["files"] = size.files;
        object["isComplete"] = size.unread == 0;
    }
    return object;
}

template <class Thing, class ToObject>
Json arrayOf(const std::vector<Thing>& things, const ToObject& toObject) {
    Json array = Json::array();
    for (const Thing& thing : things) {
        array.push_back(toObject(thing));
    }
    return array;
}

Json optionalText(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

Json jobJson(const Product::RegisteredJob& job) {
    return {{"domain", job.domain},
            {"label", job.label},
            {"pid", job.pid ? Json(*job.pid) : Json(nullptr)},
            {"plist", optionalText(job.plist)},
            {"program", optionalText(job.program)},
            {"filesAreGone", job.filesAreGone}};
}

Json versionJson(const std::optional<Product::Version>& version) {
    return version ? Json{{"short", version->shortVersion}, {"build", version->build}} : Json(nullptr);
}

}  // namespace

std::string scanText(const Scan& scan, bool inColour, std::size_t width) {
    const Product::Inventory& found = scan.inventory;
    const Verdict verdict = scan.verdict();
    std::string text = coloured(headline(scan), colourOf(verdict), inColour) + "\n";
    const auto answer = Product::uninstallerAnswer(found, scan.uninstaller);
    if (verdict == Verdict::installed && answer == Product::UninstallerAnswer::refusesNewer) {
        text += "The uninstaller " + versionText(scan.uninstaller) + " refuses it: it is newer.\n";
    }
    if (const auto generations = Product::generationsOf(found); !generations.empty()) {
        text += "Generations: " + joined(generations) + "\n";
    }
    const auto section = [&](const char* title, const std::vector<std::string>& lines) {
        appendSection(text, title, lines, width);
    };
    section("Items", placeLines(scan));
    section("Jobs", linesOf(found.jobs, jobText));
    section("Processes", linesOf(found.processes, processText));
    section("Loaded kernel extensions", linesOf(found.extensions, shownLine));
    section("Launchd overrides (launchd keeps them; they do no harm)",
            linesOf(found.overrides, overrideText));
    if (found.hasRuntimeSupport) {
        section("Runtime support (stays: other programs may use it)",
                {shown(std::string_view(Product::runtimeSupport().path()))});
    }
    appendSection(text, "These lines remove what is left", linesOf(removal(scan), shownLine), kUnbroken);
    section("Not looked at", linesOf(found.notLookedAt, shownLine));
    section("Could not look", linesOf(found.blind, shownLine));
    return text;
}

std::string verifyText(const Scan& scan) {
    const Product::Inventory& found = scan.inventory;
    std::vector<std::string> things = linesOf(found.places, [](const Product::Place& place) {
        return std::string(nameOf(place.kind)) + " " + shown(std::string_view(place.paths.front()));
    });
    for (const auto& job : found.jobs) {
        things.push_back("job " + jobText(job));
    }
    for (const auto& process : found.processes) {
        things.push_back("process " + processText(process));
    }
    for (const auto& identifier : found.extensions) {
        things.push_back("loaded kernel extension " + shownLine(identifier));
    }
    std::string text;
    for (const auto& thing : things) {
        text += "found: " + thing + "\n";
    }
    for (const auto& each : found.notLookedAt) {
        text += "not looked at: " + shownLine(each) + "\n";
    }
    for (const auto& each : found.blind) {
        text += "could not look: " + shownLine(each) + "\n";
    }
    const Verdict verdict = scan.verdict();
    return text + "result: " + std::string(nameOf(verdict)) + ", " + std::to_string(things.size()) +
           " found, exit status " + std::to_string(Product::exitStatusOf(verdict)) + "\n";
}

Json scanJson(const Scan& scan) {
    const Product::Inventory& found = scan.inventory;
    const Verdict verdict = scan.verdict();
    Json items = Json::array();
    for (std::size_t index = 0; index < found.places.size(); ++index) {
        items.push_back(placeJson(scan, index));
    }
    return {
        {"formatVersion", kScanFormat},
        {"root", optionalText(found.root)},
        {"verdict", nameOf(verdict)},
        {"exitStatus", Product::exitStatusOf(verdict)},
        {"version", versionJson(found.version)},
        {"uninstallerVersion", versionJson(scan.uninstaller)},
        {"uninstaller", nameOf(Product::uninstallerAnswer(found, scan.uninstaller))},
        {"generations", Product::generationsOf(found)},
        {"items", std::move(items)},
        {"jobs", arrayOf(found.jobs, jobJson)},
        {"processes",
         arrayOf(found.processes,
                 [](const Product::RunningProcess& process) {
                     return Json{{"pid", process.pid}, {"uid", process.uid}, {"path", process.path}};
                 })},
        {"loadedExtensions", found.extensions},
        {"overrides",
         arrayOf(
             found.overrides,
             [](const Product::JobOverride& each) {
                 return Json{{"domain", each.domain}, {"label", each.label}, {"isDisabled", each.isDisabled}};
             })},
        {"hasRuntimeSupport", found.hasRuntimeSupport},
        {"leftovers", arrayOf(Product::leftoversOf(found, verdict),
                              [](const Product::Leftover& leftover) {
                                  return Json{{"what", leftover.what}, {"line", leftover.line}};
                              })},
        {"notLookedAt", found.notLookedAt},
        {"couldNotLook", found.blind}};
}

std::string removalLines(const Scan& scan) {
    std::string text;
    for (const std::string& line : removal(scan)) {
        text += line + "\n";
    }
    return text;
}

}  // namespace Inspect
