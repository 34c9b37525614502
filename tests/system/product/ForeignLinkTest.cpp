// A link on the way to the product's items that leads into somebody else's folder.

#include <gtest/gtest.h>

#include "support/InstallerLine.h"
#include "support/ProductMac.h"

namespace {

using TestSupport::installerLine;
using namespace SystemTests;
using Lines = std::vector<std::string>;

const std::string kFolder = "/Applications/NORVIK/";

// Bob, an administrator without root's rights, points the maker's folder at Alice's private one.
TEST(ForeignLink, LeadsTheHelperNowhere) {
    ProductMac mac({"--installed", "current", "--users", "alice:501,bob:502"});
    const auto made = mac.shell(
        "set -e; cd /Users/alice; mkdir -p 'Private/SNT/View Logs.app' 'Private/View Logs.app';"
        "echo hers > 'Private/SNT/View Logs.app/file'; echo hers > 'Private/View Logs.app/file';"
        "chown -R alice Private; chmod 700 Private;"
        "ln -s /Users/alice/Private /Applications/NORVIK; chown -h bob /Applications/NORVIK");
    ASSERT_EQ(made.status, 0) << made.err;
    EXPECT_EQ(mac.uninstall().status, 0);
    const auto left = mac.shell(
        "cd /Users/alice; find Private | LC_ALL=C sort; find Private ! -user alice;"
        "cat Private/*/*/file Private/*/file; stat -c %a Private");
    EXPECT_EQ(left.out,
              "Private\nPrivate/SNT\nPrivate/SNT/View Logs.app\nPrivate/SNT/View Logs.app/file\n"
              "Private/View Logs.app\nPrivate/View Logs.app/file\nhers\nhers\n700\n");
    EXPECT_EQ(mac.uninstallerLog(), kSuccess);
    const std::string start = installerLine("Error removing: \"");
    Lines refused;
    for (const std::string& line : mac.helperLog()) {
        if (line.starts_with(start + kFolder) || line.starts_with(installerLine("Removed at ") + kFolder)) {
            refused.push_back(line);
        }
    }
    Lines expected;
    for (const char* each :
         {"SNT/Run Diagnostics.app", "SNT/Software Update.app", "SNT/View Logs.app", "SNT/NORVIK Scanner.app",
          "SNT/Sentrel Scanner.app", "SNT/Agent.app", "SNT/TrayMenu.app", "SNT"}) {
        expected.push_back(
            start + kFolder + each +
            "\" could not be removed: \"/Applications/NORVIK\" on the way to it is a link that "
            "root alone does not control");
    }
    EXPECT_EQ(refused, expected);
    // The link itself bears the maker's name and goes.
    EXPECT_FALSE(mac.exists("/Applications/NORVIK"));
}

}  // namespace
