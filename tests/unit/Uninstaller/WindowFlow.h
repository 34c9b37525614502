#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Uninstaller/AppDelegate.h"
#include "support/FakeApplication.h"
#include "support/FakeHelper.h"

namespace ProductTests {

/// A window with its delegate, over an installed product of the uninstaller's version.
class WindowFlow : public testing::Test {
  protected:
    WindowFlow() {
        helper_.serve(mac_);
        mac_.bundles.mainInfo = {{"CFBundleShortVersionString", "6.4"}, {"CFBundleVersion", "640"}};
        mac_.bundles.mainResources = {"SwiftRuntimeForCommandLineTools.pkg"};
        mac_.bundles.mainTexts = {{{"WebInstaller", "d129c1"}, "Gut"},
                                  {{"WebInstaller", "368"}, "%@ ist weg."},
                                  {{"WebInstaller", "d234c1075"}, "Fertig"},
                                  {{"macstrings", "204"}, "%@ fehlt."}};
        mac_.bundles.install("/Applications/Sentrel.app", "6.4", "640");
        mac_.files.addFolder("/Applications/Sentrel.app");
        mac_.files.addFolder("/Library/Application Support/NORVIK/SNT");
        framework_.window->controller = &controller_;
        framework_.shouldTerminate = [this] { return delegate_->applicationShouldTerminate(); };
        delegate_->setWindow(framework_.window);
        controller_.awakeFromNib();
        delegate_->applicationDidFinishLaunching();
        mac_.calls.clear();
    }

    ~WindowFlow() override {
        // The client's block holds the delegate, and the delegate the client: on a Mac until the process
        // ends.
        if (delegate_ != nullptr) {
            delegate_->installationClient().setProgressNotificationBlock({});
        }
    }

    void removeProduct() {
        mac_.files.nodes.clear();
        mac_.bundles.infoByPath.clear();
    }

    [[nodiscard]] TestSupport::CallList alerts() const { return mac_.callsOf("alert"); }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
    TestSupport::FakeApplicationFramework framework_{mac_};
    Uninstall_Sentrel::UninstallerWindowController controller_{framework_, framework_.outlets()};
    std::shared_ptr<Uninstall_Sentrel::AppDelegate> delegate_ =
        std::make_shared<Uninstall_Sentrel::AppDelegate>(framework_);
};

}  // namespace ProductTests
