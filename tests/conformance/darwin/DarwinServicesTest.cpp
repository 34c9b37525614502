// What the macOS side hands to the services that only a Mac has, over operations that stand in for them.
#include <gtest/gtest.h>

#include "Platform/Darwin/DarwinAuthorization.h"
#include "Platform/Darwin/DarwinKernelExtensions.h"
#include "Platform/Darwin/DarwinLoadedExtensions.h"
#include "Platform/Darwin/DarwinServiceManagement.h"
#include "stand-ins/Services.h"

namespace {

using Platform::Darwin::DarwinAuthorization;
using Platform::Darwin::DarwinAuthorizationReference;
using Platform::Darwin::DarwinKernelExtensions;
using Platform::Darwin::DarwinServiceManagement;
using StandIns::services;
using Items = std::vector<Platform::AuthorizationItem>;
using GivenItems = std::vector<StandIns::Item>;

class DarwinServices : public testing::Test {
  protected:
    DarwinServices() { services = {}; }
};

TEST_F(DarwinServices, HandRightsFlagsAndPromptToTheSession) {
    const auto session = DarwinAuthorization().create();
    ASSERT_TRUE(session);
    // The length is given in characters, and is less than that of the value.
    EXPECT_TRUE(session->obtainWithRights(Items{{"system.privilege.admin", std::nullopt, 0, 0}}, 3,
                                          Items{{"prompt",
                                                 "Schlie\xc3\x9f"
                                                 "en",
                                                 9, 0}}));
    EXPECT_EQ(services.rights, (GivenItems{{"system.privilege.admin", false, "", 0, 0}}));
    EXPECT_EQ(services.environment, (GivenItems{{"prompt", true,
                                                 "Schlie\xc3\x9f"
                                                 "en",
                                                 9, 0}}));
    EXPECT_EQ(services.flags, 3U);
    EXPECT_FALSE(services.askedForRightsOrError);
}

// An empty prompt is a value of no length, not the absence of one.
TEST_F(DarwinServices, HandAnEmptyPromptOver) {
    const auto session = DarwinAuthorization().create();
    EXPECT_TRUE(session->obtainWithRights(Items{{"system.privilege.admin", std::nullopt, 0, 0}}, 2,
                                          Items{{"prompt", "", 0, 0}}));
    EXPECT_EQ(services.environment, (GivenItems{{"prompt", true, "", 0, 0}}));
    EXPECT_EQ(services.flags, 2U);
}

TEST_F(DarwinServices, TellARefusal) {
    services.grants = false;
    EXPECT_FALSE(DarwinAuthorization().create()->obtainWithRights({}, 2, {}));
}

TEST_F(DarwinServices, EndTheSessionWithItsOwner) {
    auto session = DarwinAuthorization().create();
    EXPECT_EQ(services.sessions, 1);
    session.reset();
    EXPECT_EQ(services.sessions, 0);
}

TEST_F(DarwinServices, KnowWhetherASessionHasAReference) {
    EXPECT_NE(DarwinAuthorization().create()->authorizationRef(), nullptr);
    services.hasReference = false;
    EXPECT_EQ(DarwinAuthorization().create()->authorizationRef(), nullptr);
}

TEST(DarwinServicesDeathTest, EndTheProcessOverAnItemThatIsLongerThanItsValue) {
    EXPECT_DEATH((void)DarwinAuthorization().create()->obtainWithRights({}, 2, Items{{"prompt", "x", 2, 0}}),
                 "An authorization item is said to be longer than its value");
}

TEST_F(DarwinServices, BlessInTheSystemDomainWithTheSessionsReference) {
    const auto session = DarwinAuthorization().create();
    EXPECT_EQ(DarwinServiceManagement().blessJob(Platform::LaunchdDomain::system,
                                                 "com.norvik.InstallerHelper", *session->authorizationRef()),
              std::nullopt);
    EXPECT_EQ(services.domain, "the system domain");
    EXPECT_EQ(services.label, "com.norvik.InstallerHelper");
    EXPECT_EQ(services.reference, StandIns::sessionReference());
}

TEST_F(DarwinServices, GiveTheSystemsErrorOfARefusedBlessingAndReleaseIt) {
    services.blesses = false;
    const DarwinAuthorizationReference reference(StandIns::sessionReference());
    const auto error = DarwinServiceManagement().blessJob(Platform::LaunchdDomain::system, "x", reference);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code, 5);
    EXPECT_NE(error->description.find("No permission."), std::string::npos) << error->description;
    EXPECT_EQ(services.errors, 0);
}

TEST_F(DarwinServices, HaveAnErrorAlsoWhenTheSystemGivesNone) {
    services.blesses = false;
    services.errorCode = 0;
    const DarwinAuthorizationReference reference(StandIns::sessionReference());
    const auto error =
        DarwinServiceManagement().blessJob(Platform::LaunchdDomain::system, "com.norvik.x", reference);
    EXPECT_EQ(error, (Platform::Error{"The helper com.norvik.x could not be installed.", 0}));
}

TEST_F(DarwinServices, UnloadTheKernelExtensionOfAnIdentifier) {
    EXPECT_EQ(DarwinKernelExtensions().unload("com.norvik.kext"), 0);
    EXPECT_EQ(services.kext, "com.norvik.kext");
    services.kextResult = static_cast<std::int32_t>(0xdc008006);
    EXPECT_EQ(DarwinKernelExtensions().unload("com.norvik.kext"), static_cast<std::int32_t>(0xdc008006));
}

TEST_F(DarwinServices, TellWhetherAKernelExtensionIsLoaded) {
    Platform::Error error;
    services.loadedKexts = {"com.norvik.kext", "com.norvik.other"};
    EXPECT_EQ(Platform::Darwin::DarwinLoadedExtensions().isLoaded("com.norvik.kext", error), true);
    EXPECT_EQ(Platform::Darwin::DarwinLoadedExtensions().isLoaded("com.norvik", error), false);
    EXPECT_EQ(services.kextsAskedAbout, "com.norvik.kext com.norvik");
    EXPECT_EQ(error, Platform::Error{});
}

TEST_F(DarwinServices, DoNotCallAnExtensionUnloadedThatCannotBeLookedUp) {
    Platform::Error error;
    services.knowsKexts = false;
    EXPECT_EQ(Platform::Darwin::DarwinLoadedExtensions().isLoaded("com.norvik.kext", error), std::nullopt);
    EXPECT_EQ(error,
              (Platform::Error{"the kernel extension com.norvik.kext could not be looked up: the kernel "
                               "does not answer",
                               0}));
    EXPECT_EQ(Platform::Darwin::DarwinLoadedExtensions().isLoaded("\xff", error), std::nullopt);
}

TEST_F(DarwinServices, RefuseAnIdentifierThatIsNotText) {
    EXPECT_EQ(DarwinKernelExtensions().unload("\xff"), static_cast<std::int32_t>(0xdc008005));
    EXPECT_EQ(services.kext, "");
}

}  // namespace
