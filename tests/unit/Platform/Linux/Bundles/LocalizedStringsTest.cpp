#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

#include "Platform/Linux/Bundles/LinuxBundles.h"
#include "Platform/Linux/Bundles/Localizations.h"
#include "Posix/OwnRoot.h"
#include "PropertyLists.h"
#include "support/Scratch.h"

namespace PlatformTests {
namespace {

using Platform::Linux::LinuxBundles;
using Platform::Linux::localizationNames;
using Names = std::vector<std::string>;
using namespace std::string_literals;

std::string plist(const std::string& contents) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + contents + "</plist>\n";
}

std::string dictionary(const std::string& entries) {
    return plist("<dict>" + entries + "</dict>");
}

std::string languages(const Names& names) {
    std::string list;
    for (const std::string& name : names) {
        list += "<string>" + name + "</string>";
    }
    return dictionary("<key>AppleLanguages</key><array>" + list + "</array>");
}

/// An application whose every localization names itself under the key "name" of the table "Texts".
class LocalizedString : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* folder : {"X.app", "X.app/Contents", "X.app/Contents/Resources"}) {
            makeFolder(scratch.path(folder));
        }
    }
    void localize(const std::string& name) {
        makeFolder(scratch.path(kResources + name + ".lproj"));
        table(name, dictionary("<key>name</key><string>" + name + "</string>"));
    }
    void table(const std::string& localization, const std::string& bytes) {
        makeFile(scratch.path(kResources + localization + ".lproj/Texts.strings"), bytes);
    }
    void developmentRegion(const std::string& region) {
        makeFile(scratch.path("X.app/Contents/Info.plist"),
                 dictionary("<key>CFBundleDevelopmentRegion</key><string>" + region + "</string>"));
    }
    void preferences(const std::string& bytes) { makeFile(scratch.path("preferences"), bytes); }
    /// The localization that somebody with these languages reads.
    std::optional<std::string> readBy(const Names& names) {
        preferences(languages(names));
        return text("name");
    }
    std::optional<std::string> text(const std::string& key, const std::string& name = "Texts") {
        return bundles.open(scratch.url("X.app"))->localizedString(key, name);
    }

    inline static const std::string kResources = "X.app/Contents/Resources/";
    Scratch scratch;
    LinuxBundles bundles{scratch.path("X.app/Contents/MacOS/X"), scratch.path("preferences")};
};

TEST_F(LocalizedString, IsOfTheFirstLanguageThatTheBundleHas) {
    localize("en");
    localize("de");
    localize("fr");
    EXPECT_EQ(readBy({"de", "fr"}), "de");
    EXPECT_EQ(readBy({"fr", "de"}), "fr");
    EXPECT_EQ(readBy({"ja", "it-IT", "fr-CA", "de"}), "fr");
}

TEST_F(LocalizedString, PrefersTheRegionsOwnLocalization) {
    localize("pt");
    localize("pt-BR");
    EXPECT_EQ(readBy({"pt-BR"}), "pt-BR");
    EXPECT_EQ(readBy({"pt-PT"}), "pt");
}

TEST_F(LocalizedString, KnowsTheTwoWaysOfWritingChinese) {
    localize("en");
    localize("zh-Hans");
    EXPECT_EQ(readBy({"zh-Hans-CN"}), "zh-Hans");
    EXPECT_EQ(readBy({"zh-CN"}), "zh-Hans");
    EXPECT_EQ(readBy({"zh-SG"}), "zh-Hans");
    EXPECT_EQ(readBy({"zh"}), "zh-Hans");
    EXPECT_EQ(readBy({"zh-TW"}), "en");
    EXPECT_EQ(readBy({"zh-HK", "zh-CN"}), "zh-Hans");
    EXPECT_EQ(readBy({"zh-Hant"}), "en");
    EXPECT_EQ(readBy({"zh-Hant-CN"}), "en");
    localize("zh-Hant");
    EXPECT_EQ(readBy({"zh-TW"}), "zh-Hant");
    EXPECT_EQ(readBy({"zh-Hant-HK"}), "zh-Hant");
}

TEST_F(LocalizedString, FallsBackToTheDevelopmentRegionAndThenToEnglish) {
    localize("en");
    localize("de");
    EXPECT_EQ(readBy({"ja"}), "en");
    developmentRegion("de");
    EXPECT_EQ(readBy({"ja"}), "de");
    developmentRegion("ru");
    EXPECT_EQ(readBy({"ja"}), "en");
    developmentRegion("../../outside");
    EXPECT_EQ(readBy({"ja"}), "en");
}

TEST_F(LocalizedString, IsEnglishWithoutReadablePreferences) {
    localize("en");
    localize("de");
    developmentRegion("de");
    EXPECT_EQ(text("name"), "en");
    for (const std::string& broken :
         {"no property list"s, dictionary(""), plist("<array><string>de</string></array>"),
          dictionary("<key>AppleLanguages</key><string>de</string>"),
          dictionary("<key>AppleLanguages</key><array/>"),
          dictionary("<key>AppleLanguages</key><array><integer>1</integer><true/></array>"),
          nestedArraysXML(100'000)}) {
        preferences(broken);
        EXPECT_EQ(text("name"), "en") << broken.substr(0, 200);
    }
}

TEST(GlobalPreferences, AreNowhereForAUserWithoutAnAccount) {
    constexpr unsigned kNobodysId = 1'234'567'890;
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(becomeUser(kNobodysId) && Platform::Linux::globalPreferencesFile().empty() ? 7 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
    EXPECT_TRUE(
        Platform::Linux::globalPreferencesFile().ends_with("/Library/Preferences/.GlobalPreferences.plist"));
}

TEST_F(LocalizedString, SkipsInvalidLanguages) {
    localize("en");
    localize("de");
    preferences(
        dictionary("<key>AppleLanguages</key><array><integer>5</integer><string></string>"
                   "<string>../../../../de</string><string>-</string><string>de</string></array>"));
    EXPECT_EQ(text("name"), "de");
    EXPECT_EQ(localizationNames("../de"), Names{});
    EXPECT_EQ(localizationNames("de-"), Names{});
    EXPECT_EQ(localizationNames(""), Names{});
}

TEST_F(LocalizedString, DropsTheRegionAndKeepsTheScript) {
    EXPECT_EQ(localizationNames("de-AT"), (Names{"de-AT", "de"}));
    EXPECT_EQ(localizationNames("de_AT"), (Names{"de_AT", "de"}));
    EXPECT_EQ(localizationNames("sr-Latn-RS"), (Names{"sr-Latn-RS", "sr-Latn"}));
    EXPECT_EQ(localizationNames("zh-Hans-CN"), (Names{"zh-Hans-CN", "zh-Hans", "zh"}));
    EXPECT_EQ(localizationNames("zh-TW"), (Names{"zh-TW", "zh-Hant"}));
}

TEST_F(LocalizedString, IsNothingWhenTheLocalizationLacksTheTableOrTheKey) {
    localize("en");
    makeFolder(scratch.path(kResources + "de.lproj"));
    EXPECT_EQ(readBy({"de", "en"}), std::nullopt) << "the folder alone makes the localization";
    EXPECT_EQ(readBy({"en"}), "en");
    EXPECT_EQ(text("absent"), std::nullopt);
    EXPECT_EQ(text("name", "NoSuchTable"), std::nullopt);
    EXPECT_EQ(text("", ""), std::nullopt);
}

TEST_F(LocalizedString, IsNothingInABundleWithoutLocalizations) {
    EXPECT_EQ(readBy({"en"}), std::nullopt);
    makeFile(scratch.path(kResources + "en.lproj"), "no folder");
    EXPECT_EQ(readBy({"en"}), std::nullopt);
}

TEST_F(LocalizedString, IsReadFromABinaryTable) {
    localize("en");
    table("en", binaryPropertyList({"\xD1\1\2"s,
                                    "\x54"
                                    "name"s,
                                    "\x55"
                                    "plain"s}));
    EXPECT_EQ(text("name"), "plain");
}

TEST_F(LocalizedString, MayBeEmptyAndHoldAnyCharacter) {
    localize("en");
    table("en", dictionary("<key>empty</key><string></string>"
                           "<key>name</key><string>%@ &amp; \xe2\x80\x9c\xe4\xb8\xad\xe2\x80\x9d</string>"));
    EXPECT_EQ(text("empty"), "");
    EXPECT_EQ(text("name"), "%@ & \xe2\x80\x9c\xe4\xb8\xad\xe2\x80\x9d");
}

TEST_F(LocalizedString, IsNothingForValuesOfOtherTypes) {
    localize("en");
    table("en", dictionary("<key>number</key><integer>1</integer><key>name</key><string>x</string>"
                           "<key>dict</key><dict><key>name</key><string>y</string></dict>"));
    EXPECT_EQ(text("number"), std::nullopt);
    EXPECT_EQ(text("dict"), std::nullopt);
    EXPECT_EQ(text("name"), "x");
}

TEST_F(LocalizedString, StandsBrokenTables) {
    localize("en");
    for (const std::string& broken :
         {""s, "\"name\" = \"old style\";\n"s, plist("<array><string>name</string></array>"), "bplist00"s,
          "bplist00" + std::string(40, '\xFF'), std::string(2 << 20, '<'), nestedArraysXML(100'000),
          nestedArraysBinary(100'000), dictionary("<key>name</key>")}) {
        table("en", broken);
        EXPECT_EQ(text("name"), std::nullopt) << broken.substr(0, 200);
    }
    ASSERT_EQ(::unlink(scratch.path(kResources + "en.lproj/Texts.strings").c_str()), 0);
    ASSERT_EQ(::mkfifo(scratch.path(kResources + "en.lproj/Texts.strings").c_str(), 0600), 0);
    EXPECT_EQ(text("name"), std::nullopt);
}

TEST_F(LocalizedString, StaysUnchangedForAnOpenBundle) {
    localize("en");
    localize("de");
    preferences(languages({"en"}));
    const auto bundle = bundles.open(scratch.url("X.app"));
    EXPECT_EQ(bundle->localizedString("name", "Texts"), "en");
    table("en", dictionary("<key>name</key><string>changed</string>"));
    preferences(languages({"de"}));
    EXPECT_EQ(bundle->localizedString("name", "Texts"), "en");
    EXPECT_EQ(text("name"), "de");
}

// The uninstaller removes its own bundle and shows more texts afterwards.
TEST_F(LocalizedString, OfTheMainBundleOutlivesItsFiles) {
    localize("en");
    EXPECT_EQ(bundles.mainBundle()->localizedString("name", "Texts"), "en");
    ASSERT_EQ(::rename(scratch.path("X.app").c_str(), scratch.path("Y.app").c_str()), 0);
    EXPECT_EQ(bundles.mainBundle()->localizedString("name", "Texts"), "en");
    EXPECT_EQ(bundles.mainBundle()->localizedString("name", "Other"), std::nullopt);
}

TEST_F(LocalizedString, CanBeAskedForOnSeveralThreads) {
    localize("en");
    const auto bundle = bundles.open(scratch.url("X.app"));
    std::vector<std::thread> readers;
    std::vector<std::optional<std::string>> texts(4);
    readers.reserve(texts.size());
    for (auto& result : texts) {
        readers.emplace_back([&] { result = bundle->localizedString("name", "Texts"); });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    EXPECT_EQ(texts, (std::vector<std::optional<std::string>>(4, "en")));
}

}  // namespace
}  // namespace PlatformTests
