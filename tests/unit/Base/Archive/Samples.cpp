#include "Samples.h"

#include <array>

#include "Base/Archive/KeyedArchiver.h"

namespace Samples {
namespace {

using Base::CodedClass;
using Base::CodedObject;
using Base::CodedRecord;
using Base::Coder;
using Base::URL;

void encodeOptional(Coder& coder, std::string_view key, const std::optional<std::string>& value) {
    value ? coder.encodeString(key, *value) : coder.encodeNil(key);
}

void encodeOptional(Coder& coder, std::string_view key, const std::optional<URL>& value) {
    value ? coder.encodeURL(key, *value) : coder.encodeNil(key);
}

template <class Record>
std::optional<Record> recordIn(const CodedObject* object) {
    const auto* holder = dynamic_cast<const CodedRecord<Record>*>(object);
    return holder != nullptr ? std::optional(holder->value()) : std::nullopt;
}

std::string text(const std::optional<std::string>& value) {
    return value ? '"' + *value + '"' : "nil";
}

std::string text(const std::optional<URL>& value) {
    return value ? '<' + value->path() + '>' : "nil";
}

std::string text(const File& file) {
    return "File(" + text(file.name) + ' ' + text(file.location) + ')';
}

std::string text(const Job& job) {
    return "Job(" + text(job.label) + ' ' + (job.plist ? text(*job.plist) : "nil") + ')';
}

std::string described(const CodedObject* object) {
    if (const auto* removal = dynamic_cast<const Removal*>(object)) {
        std::string line = "Removal(" + text(std::optional(removal->description));
        for (const URL& path : removal->paths) {
            line += ' ' + text(std::optional(path));
        }
        for (const bool flag : removal->flags) {
            line += flag ? " yes" : " no";
        }
        return line + ')';
    }
    if (const auto* step = dynamic_cast<const JobStep*>(object)) {
        return "JobStep(" + text(std::optional(step->description)) + ' ' + text(step->job) +
               (step->isDaemon ? " daemon)" : " agent)");
    }
    if (const auto* link = dynamic_cast<const Link*>(object)) {
        return "Link(" + text(link->target) + ' ' + text(link->title) + ')';
    }
    if (const auto* nest = dynamic_cast<const Nest*>(object)) {
        return "Nest(" + (nest->inner ? described(nest->inner.get()) : "") + ')';
    }
    if (const auto file = recordIn<File>(object)) {
        return text(*file);
    }
    if (const auto bundle = recordIn<Bundle>(object)) {
        return "Bundle(" + text(bundle->file) + ' ' + text(bundle->bundleId) + ')';
    }
    const auto job = recordIn<Job>(object);
    return job ? text(*job) : "unknown";
}

}  // namespace

const CodedClass& File::codedClass() {
    static constexpr CodedClass kClass{"SampleFile", nullptr, &CodedRecord<File>::make};
    return kClass;
}

void File::encode(Coder& coder) const {
    encodeOptional(coder, "name", name);
    encodeOptional(coder, "location", location);
}

std::optional<File> File::decode(Coder& coder) {
    return File{coder.decodeString("name"), coder.decodeURL("location")};
}

const CodedClass& Bundle::codedClass() {
    static const CodedClass kClass{"SampleBundle", &File::codedClass(), &CodedRecord<Bundle>::make};
    return kClass;
}

void Bundle::encode(Coder& coder) const {
    file.encode(coder);
    encodeOptional(coder, "bundleId", bundleId);
}

std::optional<Bundle> Bundle::decode(Coder& coder) {
    auto file = File::decode(coder);
    return Bundle{std::move(*file), coder.decodeString("bundleId")};
}

const CodedClass& Job::codedClass() {
    static constexpr CodedClass kClass{"SampleJob", nullptr, &CodedRecord<Job>::make};
    return kClass;
}

void Job::encode(Coder& coder) const {
    encodeOptional(coder, "label", label);
    plist ? coder.encodeObject("plist", CodedRecord(*plist)) : coder.encodeNil("plist");
}

std::optional<Job> Job::decode(Coder& coder) {
    Job job{coder.decodeString("label"), std::nullopt};
    const auto plist = coder.decodeObject("plist", File::codedClass());
    job.plist = recordIn<File>(plist.get());
    if (const auto bundle = recordIn<Bundle>(plist.get())) {
        job.plist = bundle->file;
    }
    return job;
}

const CodedClass& Step::classDescription() {
    static constexpr CodedClass kClass{"_TtC7Samples4Step", nullptr, nullptr};
    return kClass;
}

void Step::encode(Coder& coder) const {
    coder.encodeString("commandDescription", description);
}

const CodedClass& Removal::classDescription() {
    static const CodedClass kClass{
        "_TtC7Samples7Removal", &Step::classDescription(), [](Coder& coder) -> std::unique_ptr<CodedObject> {
            auto paths = coder.decodeURLs("source");
            auto flags = paths ? coder.decodeBools("destination") : std::nullopt;
            auto text = flags ? coder.decodeString("commandDescription") : std::nullopt;
            return text ? std::make_unique<Removal>(std::move(*text), std::move(*paths), std::move(*flags))
                        : nullptr;
        }};
    return kClass;
}

void Removal::encode(Coder& coder) const {
    coder.encodeURLs("source", paths);
    coder.encodeBools("destination", flags);
    Step::encode(coder);
}

const CodedClass& JobStep::classDescription() {
    static const CodedClass kClass{
        "_TtC7Samples7JobStep", &Step::classDescription(), [](Coder& coder) -> std::unique_ptr<CodedObject> {
            const auto agent = coder.decodeObject("agent", Job::codedClass());
            auto job = recordIn<Job>(agent.get());
            if (!job) {
                return nullptr;
            }
            const bool isDaemon = coder.decodeBool("isDaemon");
            auto text = coder.decodeString("commandDescription");
            return text ? std::make_unique<JobStep>(std::move(*text), std::move(*job), isDaemon) : nullptr;
        }};
    return kClass;
}

void JobStep::encode(Coder& coder) const {
    coder.encodeObject("agent", CodedRecord(job));
    coder.encodeBool("isDaemon", isDaemon);
    Step::encode(coder);
}

const CodedClass& Link::classDescription() {
    static const CodedClass kClass{"SampleLink", nullptr, [](Coder& coder) -> std::unique_ptr<CodedObject> {
                                       auto link = std::make_unique<Link>();
                                       link->target = coder.decodeURL("target");
                                       link->title = coder.decodeString("title");
                                       return link;
                                   }};
    return kClass;
}

void Link::encode(Coder& coder) const {
    encodeOptional(coder, "target", target);
    encodeOptional(coder, "title", title);
}

const CodedClass& Nest::classDescription() {
    static const CodedClass kClass{"SampleNest", nullptr, [](Coder& coder) -> std::unique_ptr<CodedObject> {
                                       auto nest = std::make_unique<Nest>();
                                       nest->inner = coder.decodeObject("inner", classDescription());
                                       return nest;
                                   }};
    return kClass;
}

void Nest::encode(Coder& coder) const {
    inner ? coder.encodeObject("inner", *inner) : coder.encodeNil("inner");
}

const Base::AllowedClasses& allowedClasses() {
    static const std::array<const CodedClass*, 7> kObjects{
        &File::codedClass(),          &Bundle::codedClass(),        &Job::codedClass(),
        &Removal::classDescription(), &JobStep::classDescription(), &Link::classDescription(),
        &Nest::classDescription()};
    static constexpr std::array<std::string_view, 4> kValues{"NSArray", "NSURL", "NSString", "NSNumber"};
    static const Base::AllowedClasses kAllowed{kObjects, kValues};
    return kAllowed;
}

std::vector<std::uint8_t> archive(const Base::CodedObjectList& objects) {
    std::vector<const CodedObject*> pointers;
    pointers.reserve(objects.size());
    for (const auto& each : objects) {
        pointers.push_back(each.get());
    }
    return Base::archivedArray(pointers);
}

Base::CodedObjectList oneOfEach() {
    const File plist{"com.example.job.plist", URL::fileURL("/Library/LaunchDaemons/com.example.job.plist")};
    Base::CodedObjectList objects;
    objects.push_back(std::make_unique<Removal>(
        "Removing...", std::vector{URL::fileURL("/Applications/A B;C.app"), URL::fileURL("/")},
        std::vector{true, false}));
    objects.push_back(std::make_unique<JobStep>("Stopping...", Job{"com.example.job", plist}, true));
    objects.push_back(std::make_unique<CodedRecord<Bundle>>(
        Bundle{{"B\xC3\xBCro.kext", URL::fileURL("/Library/B\xC3\xBCro.kext")}, "com.example.kext"}));
    objects.push_back(std::make_unique<Link>());
    auto nest = std::make_unique<Nest>();
    nest->inner = std::make_unique<Nest>();
    objects.push_back(std::move(nest));
    objects.push_back(std::make_unique<CodedRecord<File>>(plist));
    return objects;
}

std::string described(const Base::CodedObjectList& objects) {
    std::string lines;
    for (const auto& each : objects) {
        lines += described(each.get()) + '\n';
    }
    return lines;
}

}  // namespace Samples
