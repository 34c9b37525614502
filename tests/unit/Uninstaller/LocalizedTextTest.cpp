#include "Uninstaller/LocalizedText.h"

#include <gtest/gtest.h>

#include "support/FakeMac.h"

namespace {

using Uninstall_Sentrel::formatted;
using Uninstall_Sentrel::localizedText;

TEST(LocalizedText, ComesFromTheNamedTable) {
    TestSupport::FakeMac mac;
    mac.bundles.mainTexts = {{{"WebInstaller", "367"}, "%@ entfernen"}, {{"macstrings", "367"}, "other"}};
    EXPECT_EQ(localizedText("367", "WebInstaller", ""), "%@ entfernen");
}

TEST(LocalizedText, AMissingKeyGivesTheDefaultValueNotTheKey) {
    TestSupport::FakeMac mac;
    EXPECT_EQ(localizedText("367", "WebInstaller", ""), "");
    EXPECT_EQ(localizedText("d129c1", "WebInstaller", "OK"), "OK");
}

TEST(Formatted, PutsTheNameForEachConversion) {
    EXPECT_EQ(formatted("Uninstall %@", "Sentrel"), "Uninstall Sentrel");
    EXPECT_EQ(formatted("%@ und %1$@", "S"), "S und S");
    EXPECT_EQ(formatted("%@", "%@"), "%@");
}

TEST(Formatted, LeavesEverythingElseUnchanged) {
    EXPECT_EQ(formatted("", "Sentrel"), "");
    EXPECT_EQ(formatted("no name", "Sentrel"), "no name");
    EXPECT_EQ(formatted("100 %% of %@", "Sentrel"), "100 % of Sentrel");
    EXPECT_EQ(formatted("%d %s %n %", "Sentrel"), "%d %s %n %");
    EXPECT_EQ(formatted("%2$@", "Sentrel"), "%2$@");
}

}  // namespace
