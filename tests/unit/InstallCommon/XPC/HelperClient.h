#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "InstallCommon/XPC/InstallationHelperClient.h"
#include "support/FakeHelper.h"
#include "support/FakeMac.h"

/// A client of the installer helper on a fake Mac with a fake helper.
namespace HelperClientTests {

using InstallCommon::InstallationHelperClient;

class HelperClient : public testing::Test {
  protected:
    HelperClient() { helper_.serve(mac_); }

    void install(const std::string& shortVersion, const std::string& build) {
        mac_.bundles.install("/Applications/Sentrel.app", shortVersion, build);
    }

    struct Report {
        std::string description;
        std::int32_t total;
        std::int32_t executed;
        friend bool operator==(const Report&, const Report&) = default;
    };

    void recordReports() {
        client_->setProgressNotificationBlock(
            [this](const std::string& description, std::int32_t total, std::int32_t executed) {
                reports_.push_back({description, total, executed});
            });
    }

    TestSupport::FakeMac mac_;
    TestSupport::FakeHelper helper_;
    std::shared_ptr<InstallationHelperClient> client_ = std::make_shared<InstallationHelperClient>();
    std::vector<Report> reports_;
};

}  // namespace HelperClientTests
