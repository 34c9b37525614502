#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "support/FakeMac.h"
#include "support/InstallerLine.h"

/// What the tests of the environment put on a fake Mac, and what is logged of it.
namespace InstalledProductTests {

using TestSupport::installerLine;

using TestSupport::CallList;
using TestSupport::FakeBundle;

inline const std::string kConsole = "/Applications/Sentrel.app";
inline const std::vector<std::string> kOtherPaths{"/Applications/Kaspersky Anti-Virus For Mac.app",
                                                  "/Applications/ESET Cyber Security.app",
                                                  "/Library/Bitdefender/AVP/AntivirusforMac.app"};

inline const std::vector<std::string> kProductFolders{
    "/Library/Application Support/NORVIK/SNT", "/Library/Application Support/Norvik/AntiVir",
    "/Library/Application Support/Norvik/Antivirus",
    "/Library/Application Support/NORVIK/SNT/FileAccessDaemon", "/Applications/NORVIK/SNT"};

inline const std::string kUpdatableLine = installerLine("found installed version true, updatable: true");
inline const std::string kNotUpdatableLine = installerLine("found installed version true, updatable: false");

inline FakeBundle newBundle(const std::map<std::string, std::string>& info) {
    return {Base::URL::fileURL("/Volumes/New/Uninstall Sentrel.app"), info, {}};
}

inline FakeBundle newBundle(const std::string& shortVersion, const std::string& build) {
    return newBundle({{"CFBundleShortVersionString", shortVersion}, {"CFBundleVersion", build}});
}

}  // namespace InstalledProductTests
