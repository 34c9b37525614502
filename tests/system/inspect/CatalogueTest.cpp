// sentrel-inspect catalogue.

#include "InspectRun.h"

namespace InspectTest {

namespace {

std::vector<std::string> keysOf(const nlohmann::json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) {
        keys.push_back(key);
    }
    return keys;
}

TEST_F(Inspect, ListsEveryPropertyOfTheThreeProviders) {
    const auto catalogue = json({"catalogue", "--json"});
    EXPECT_EQ(keysOf(catalogue), (std::vector<std::string>{"ComponentPathProvider", "FeaturePathProvider",
                                                           "SystemPathProvider"}));
    EXPECT_EQ(keysOf(catalogue.at("SystemPathProvider")),
              (std::vector<std::string>{"daemonsPlists", "extensions", "launchctlExecutable",
                                        "localApplicationSupport", "localApplications", "lsRegisterDatabase",
                                        "userAgentsPlists"}));
    EXPECT_EQ(keysOf(catalogue.at("ComponentPathProvider")),
              (std::vector<std::string>{"allNorvikProductsAppSupport",
                                        "auxiliaryHelperTools",
                                        "containmentDaemon",
                                        "diagnostics",
                                        "fileAccessDaemon",
                                        "fileAccessFilterKext",
                                        "legacyInstallationPaths",
                                        "legacyProductsPaths",
                                        "legacyVersionsBundleDaemons",
                                        "legacyVersionsDaemons",
                                        "legacyVersionsFileAccessFilterKexts",
                                        "legacyVersionsGuiApps",
                                        "legacyVersionsUserAgents",
                                        "legacyWorkflowPaths",
                                        "managementConsole",
                                        "productAppSupport",
                                        "productName",
                                        "scanner",
                                        "trayMenu",
                                        "uninstaller",
                                        "userAgent",
                                        "viewLogs",
                                        "workflow"}));
    EXPECT_EQ(keysOf(catalogue.at("FeaturePathProvider")),
              (std::vector<std::string>{"avBases", "containmentServiceFolder", "fileRatingStorage",
                                        "flsStorage", "logDirectory", "logFileExtension", "preferencesFolder",
                                        "quarantineDatabase", "quarantineFolder", "repairFolder",
                                        "settingsPlist", "verdictStorage"}));
}

TEST_F(Inspect, PrintsRecordsWithTheirPropertiesAndURLsAsPlainPaths) {
    const auto catalogue = json({"catalogue", "--json"});
    const auto& components = catalogue.at("ComponentPathProvider");
    EXPECT_EQ(catalogue.at("SystemPathProvider").at("localApplicationSupport"),
              "/Library/Application Support");
    EXPECT_EQ(components.at("productName"), "Sentrel");
    EXPECT_EQ(components.at("diagnostics"), nlohmann::json::parse(R"({
        "bundle": {"name": "Run Diagnostics.app",
                   "location": "/Applications/Sentrel.app/Contents/Applications/Run Diagnostics.app",
                   "bundleId": "com.NORVIK.DiagnosticUtil"},
        "executable": {"name": "Run Diagnostics", "location":
            "/Applications/Sentrel.app/Contents/Applications/Run Diagnostics.app/Contents/MacOS/Run Diagnostics"}})"));
    EXPECT_EQ(components.at("fileAccessDaemon").at("launchd").at("label"), "com.norvik.fileaccessd");
    EXPECT_EQ(components.at("fileAccessDaemon").at("app").at("bundle").at("bundleId"),
              "com.norvik.FileAccessDaemon");
    EXPECT_EQ(components.at("fileAccessFilterKext").at("ioClassName"), "FileAccessFilter");
    EXPECT_EQ(catalogue.at("FeaturePathProvider").at("settingsPlist"), nlohmann::json::parse(R"({
        "name": "settings.plist", "location": "/Library/Application Support/NORVIK/SNT/settings.plist"})"));
    EXPECT_EQ(catalogue.at("FeaturePathProvider").at("logFileExtension"), "log");
}

TEST_F(Inspect, ListsTheEarlierVersionsInFull) {
    const auto components = json({"catalogue", "--json"}).at("ComponentPathProvider");
    EXPECT_EQ(components.at("legacyInstallationPaths"),
              nlohmann::json::parse(R"(["/Library/Application Support/Norvik/AntiVir",
                                        "/Library/Application Support/Norvik/Antivirus",
                                        "/Library/Application Support/NORVIK/SNT/FileAccessDaemon",
                                        "/Applications/NORVIK/SNT"])"));
    EXPECT_EQ(components.at("legacyProductsPaths").size(), 3U);
    EXPECT_EQ(components.at("legacyWorkflowPaths").size(), 1U);
    EXPECT_EQ(components.at("legacyVersionsFileAccessFilterKexts").size(), 1U);
    EXPECT_EQ(components.at("legacyVersionsDaemons").size(), 2U);
    EXPECT_EQ(components.at("legacyVersionsBundleDaemons").size(), 2U);
    EXPECT_EQ(components.at("legacyVersionsUserAgents").size(), 8U);
    EXPECT_EQ(components.at("legacyVersionsGuiApps").size(), 11U);
    EXPECT_EQ(components.at("legacyVersionsGuiApps").at(0).at("bundle").at("bundleId"), "");
    EXPECT_EQ(components.at("auxiliaryHelperTools").size(), 4U);
}

TEST_F(Inspect, GroupsTheCatalogueByProvider) {
    const Outcome outcome = inspect({"catalogue"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    for (const char* expected :
         {"SystemPathProvider\n  daemonsPlists            /Library/LaunchDaemons\n",
          "\n\nComponentPathProvider\n  productName                  Sentrel\n",
          "\n  managementConsole\n    bundle.name                Sentrel.app\n",
          "\n  legacyProductsPaths\n    1                          /Library/Application Support/Norvik\n",
          "\n    1.bundle.bundleId          \"\"\n",
          "\n\nFeaturePathProvider\n  quarantineFolder          /Library/Application "
          "Support/NORVIK/SNT/Quarantine\n"}) {
        EXPECT_NE(outcome.output.find(expected), std::string::npos) << expected;
    }
    EXPECT_EQ(outcome.output.find(" \n"), std::string::npos);
}

}  // namespace

}  // namespace InspectTest
