#include "CodingFaults.h"

#include <utility>

#include "ArchiveBuilder.h"
#include "InstallCommon/Commands/Installation/CopyCommand.h"
#include "InstallCommon/Commands/Installation/StartLaunchdJobCommand.h"
#include "InstallCommon/Commands/Installation/UpdateLaunchServices.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/Commands/Uninstallation/UnloadKextCommand.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"

namespace CodingFaultTests {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::Coder;
using Base::URL;

void describe(Coder& coder) {
    coder.encodeString("commandDescription", "...");
}

Bytes removal(const std::function<ArchiveBuilder::Index(ArchiveBuilder&)>& path,
              const std::function<ArchiveBuilder::Index(ArchiveBuilder&)>& flag) {
    ArchiveBuilder archive;
    const auto paths = archive.array({path(archive)});
    const auto flags = archive.array({flag(archive)});
    const auto description = archive.string("...");
    return archive.finish({archive.object(archive.classNamed("_TtC13InstallCommon13RemoveCommand"),
                                          {{"source", archive.ref(paths)},
                                           {"destination", archive.ref(flags)},
                                           {"commandDescription", archive.ref(description)}})});
}

namespace {

Fault object(std::string name, const Base::CodedClass& coded, Foreign::Write write, std::string complaint) {
    return {std::move(name), [&coded, write = std::move(write)] { return archiveOf(foreign(coded, write)); },
            std::move(complaint)};
}

ArchiveBuilder::Index no(ArchiveBuilder& archive) {
    return archive.entry(archive.plist.boolean(false));
}

ArchiveBuilder::Index plainURL(ArchiveBuilder& archive) {
    return archive.url("file:///a");
}

Fault path(std::string name, std::string text) {
    return {std::move(name),
            [text = std::move(text)] {
                return removal([&text](ArchiveBuilder& archive) { return archive.url(text); }, no);
            },
            "key \"source\" has an item 1 that is not a file URL"};
}

Fault flag(std::string name, std::function<ArchiveBuilder::Index(ArchiveBuilder&)> make) {
    return {std::move(name), [make = std::move(make)] { return removal(plainURL, make); },
            "key \"destination\" has an item 1 that is not a boolean"};
}

std::vector<Fault> missingKeys() {
    return {
        object(
            "MissingDescription", UpdateLaunchServices::staticClass(), [](Coder&) {},
            "key \"commandDescription\" is missing"),
        object(
            "NilDescription", UpdateLaunchServices::staticClass(),
            [](Coder& coder) { coder.encodeNil("commandDescription"); },
            "key \"commandDescription\" is missing"),
        object(
            "ProcessUnderAnotherKey", KillProcessCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeString("process", "Sentrel");
                describe(coder);
            },
            "key \"kext\" is missing"),
        object(
            "MissingJob", StartLaunchdJobCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeBool("isDaemon", true);
                describe(coder);
            },
            "key \"agent\" is missing"),
        object(
            "MissingFlags", RemoveCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeURLs("source", std::vector<URL>{});
                describe(coder);
            },
            "key \"destination\" is missing"),
    };
}

std::vector<Fault> wrongTypes() {
    return {
        object(
            "URLAsProcess", KillProcessCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeURL("kext", URL::fileURL("/a"));
                describe(coder);
            },
            "key \"kext\" is not a string"),
        object(
            "BooleanAsDescription", UpdateLaunchServices::staticClass(),
            [](Coder& coder) { coder.encodeBool("commandDescription", true); },
            "key \"commandDescription\" cannot be decoded"),
        object(
            "StringAsBoolean", StartLaunchdJobCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeObject("agent", Base::CodedRecord(LaunchdInfo{}));
                coder.encodeString("isDaemon", "yes");
                describe(coder);
            },
            "key \"isDaemon\" is not a boolean"),
        object(
            "StringAsURLs", CopyCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeString("source", "file:///a");
                coder.encodeURLs("destination", std::vector<URL>{});
                describe(coder);
            },
            "key \"source\" is not an array"),
        object(
            "BooleansAsURLs", CopyCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeBools("source", {true});
                coder.encodeURLs("destination", std::vector<URL>{});
                describe(coder);
            },
            "key \"source\" has an item 1 that is not a file URL"),
        object(
            "URLsAsBooleans", RemoveCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeURLs("source", std::vector<URL>{URL::fileURL("/a")});
                coder.encodeURLs("destination", std::vector<URL>{URL::fileURL("/a")});
                describe(coder);
            },
            "key \"destination\" has an item 1 that is not a boolean"),
        object(
            "URLAsName", FilesystemItemInfo::codedClass(),
            [](Coder& coder) { coder.encodeURL("name", URL::fileURL("/a")); },
            "key \"name\" is not a string"),
        object(
            "StringAsLocation", FilesystemItemInfo::codedClass(),
            [](Coder& coder) { coder.encodeString("location", "file:///a"); },
            "key \"location\" is not a file URL"),
    };
}

std::vector<Fault> wrongClasses() {
    return {
        object("AbstractBase", CommandConcrete::staticClass(), describe, ""),
        object(
            "AbstractJobCommand", LaunchdJobCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeObject("agent", Base::CodedRecord(LaunchdInfo{}));
                coder.encodeBool("isDaemon", true);
                describe(coder);
            },
            ""),
        object(
            "KextAsJob", StartLaunchdJobCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeObject("agent", Base::CodedRecord(KextInfo{}));
                coder.encodeBool("isDaemon", true);
                describe(coder);
            },
            "key \"agent\" is not an object of the class LaunchdInfo"),
        object(
            "StringAsKext", UnloadKextCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeString("kext", "com.norvik.kext");
                describe(coder);
            },
            "key \"kext\" is not an object of the class KextInfo"),
        object(
            "ItemAsBundle", KextInfo::codedClass(),
            [](Coder& coder) { coder.encodeObject("bundle", Base::CodedRecord(FilesystemItemInfo{})); },
            "key \"bundle\" is not an object of the class BundleInfo"),
        object(
            "FaultDeepInside", UnloadKextCommand::staticClass(),
            [](Coder& coder) {
                coder.encodeObject("kext", Foreign(KextInfo::codedClass(), [](Coder& kext) {
                                       kext.encodeObject("bundle",
                                                         Foreign(BundleInfo::codedClass(), [](Coder& b) {
                                                             b.encodeURL("bundleId", URL::fileURL("/a"));
                                                         }));
                                   }));
                describe(coder);
            },
            "BundleInfo: key \"bundleId\" is not a string"),
        {"ForeignClass",
         [] {
             ArchiveBuilder archive;
             return archive.finish(
                 {archive.object(archive.classNamed("NSDate"),
                                 {{"NS.time", archive.plist.raw(std::string("\x23\0\0\0\0\0\0\0\0", 9))}})});
         },
         "command 1: it is not an object of a coded class"},
        {"StringAsCommand",
         [] {
             ArchiveBuilder archive;
             return archive.finish({archive.string("rm -rf /")});
         },
         "command 1: it is not an object of a coded class"},
        {"UnknownClass",
         [] {
             ArchiveBuilder archive;
             return archive.finish(
                 {archive.object(archive.classNamed("_TtC13InstallCommon10RunCommand"), {})});
         },
         ""},
    };
}

std::vector<Fault> unusableValues() {
    return {
        path("QueryInURL", "file:///a?b"),
        path("FragmentInURL", "file:///a#b"),
        path("OtherHostInURL", "file://host/a"),
        path("OtherSchemeInURL", "http:///a"),
        path("ParentInURL", "file:///Library/../etc"),
        path("EscapedParentInURL", "file:///Library/%2e%2E/etc"),
        path("NulInURL", "file:///a%00b"),
        path("RelativeURL", "a/b"),
        {"ParentAgainstBase",
         [] {
             return removal(
                 [](ArchiveBuilder& archive) {
                     return archive.url("../etc", archive.url("file:///Library/A/"));
                 },
                 no);
         },
         "key \"source\" has an item 1 that is not a file URL"},
        flag("TwoAsBoolean", [](ArchiveBuilder& archive) { return archive.entry(archive.plist.integer(2)); }),
        flag("RealAsBoolean",
             [](ArchiveBuilder& archive) {
                 return archive.entry(archive.plist.raw(std::string("\x23\x3F\xF0\0\0\0\0\0\0", 9)));
             }),
        flag("HugeAsBoolean",
             [](ArchiveBuilder& archive) { return archive.entry(archive.plist.integer(UINT64_MAX)); }),
        flag("StringAsFlag", [](ArchiveBuilder& archive) { return archive.string("1"); }),
        flag("ListAsFlag", [](ArchiveBuilder& archive) { return archive.array({no(archive)}); }),
    };
}

}  // namespace

std::vector<Fault> faults() {
    std::vector<Fault> all;
    for (const auto& group : {missingKeys(), wrongTypes(), wrongClasses(), unusableValues()}) {
        all.insert(all.end(), group.begin(), group.end());
    }
    return all;
}

}  // namespace CodingFaultTests
