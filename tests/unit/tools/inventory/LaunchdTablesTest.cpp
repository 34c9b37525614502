#include "LaunchdTables.h"

#include <gtest/gtest.h>

namespace {

using Inventory::PrintedJob;
using Inventory::printedJob;
using Inventory::printedLabels;
using Inventory::PrintedOverride;
using Inventory::printedOverrides;
using Labels = std::vector<std::string>;
using Overrides = std::vector<PrintedOverride>;

TEST(LaunchdTables, ReadTheLabelsOfADomain) {
    EXPECT_EQ(printedLabels("system = {\n"
                            "\ttype = system\n"
                            "\tactive count = 2\n"
                            "\tservices = {\n"
                            "\t\t       0      - \tcom.norvik.fileaccessd\n"
                            "\t\t     351      0 \tcom.example.other\n"
                            "\t\t12\tcom.norvik.containmentd \t\r\n"
                            "\t\t-\tcom.norvik.TrayMenu\n"
                            "\t}\n"
                            "\tendpoints = {\n"
                            "\t\t0x1 M D com.norvik.InstallerHelper\n"
                            "\t}\n"
                            "}\n"),
              (Labels{"com.norvik.fileaccessd", "com.example.other", "com.norvik.containmentd",
                      "com.norvik.TrayMenu"}));
    EXPECT_EQ(printedLabels("system = {\n\tservices = {\n\t}\n}\n"), Labels{});
}

TEST(LaunchdTables, DoNotTakeATextWithoutAListForAnEmptyList) {
    EXPECT_EQ(printedLabels(""), std::nullopt);
    EXPECT_EQ(printedLabels("system = {\n}\n"), std::nullopt);
    EXPECT_EQ(printedLabels("services\n"), std::nullopt);
    EXPECT_EQ(printedLabels("\tservices = {"), std::nullopt);
    // Cut off in the middle.
    EXPECT_EQ(printedLabels("\tservices = {\n\t\t12\tcom.norvik.fileaccessd\n"), std::nullopt);
}

TEST(LaunchdTables, ReadAJob) {
    EXPECT_EQ(printedJob("system/com.norvik.fileaccessd = {\n"
                         "\tactive count = 1\n"
                         "\tpath = /Library/LaunchDaemons/com.norvik.fileaccessd.plist\n"
                         "\tstate = running\n"
                         "\tprogram = /Applications/Sentrel.app/Contents/MacOS/with = sign\n"
                         "\tpid = 51\n"
                         "}\n"),
              (PrintedJob{51, "/Library/LaunchDaemons/com.norvik.fileaccessd.plist",
                          "/Applications/Sentrel.app/Contents/MacOS/with = sign"}));
    EXPECT_EQ(printedJob("system/x = {\n\tstate = not running\n}\n"), PrintedJob{});
    EXPECT_EQ(printedJob("system/x = {\n\tpid = none\n}\n"), PrintedJob{});
}

TEST(LaunchdTables, ReadOnlyTheJobsOwnLines) {
    EXPECT_EQ(printedJob("system/x = {\n"
                         "\tendpoints = {\n"
                         "\t\tpid = 7\n"
                         "\t\tpath = /wrong\n"
                         "\t}\n"
                         "\tpath = /right.plist\n"
                         "}\n"
                         "pid = 8\n"),
              (PrintedJob{std::nullopt, "/right.plist", ""}));
}

TEST(LaunchdTables, ReadOverridesInBothSpellings) {
    EXPECT_EQ(printedOverrides("\tdisabled services = {\n"
                               "\t\t\"com.norvik.Agent\" => true\n"
                               "\t\t\"com.norvik.TrayMenu\" => false\n"
                               "\t\t\"com.norvik.a\" => disabled\n"
                               "\t\t\"com.norvik.b\" => enabled\n"
                               "\t\tnot a line of the list\n"
                               "\t}\n"
                               "\tlogin item associations = {\n"
                               "\t\t\"x\" => true\n"
                               "\t}\n"),
              (Overrides{{"com.norvik.Agent", true},
                         {"com.norvik.TrayMenu", false},
                         {"com.norvik.a", true},
                         {"com.norvik.b", false}}));
    EXPECT_EQ(printedOverrides("disabled services = {\n}\n"), Overrides{});
    EXPECT_EQ(printedOverrides("nothing of the kind\n"), std::nullopt);
}

}  // namespace
