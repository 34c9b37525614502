// Who may use a helper, over code-signing services that stand in for the system's own.
#include <gtest/gtest.h>

#include "stand-ins/Security.h"

namespace {

using StandIns::refusal;
using StandIns::signing;
using StandIns::Token;
using Texts = std::vector<std::string>;

const Texts kRequirements{"identifier one", "identifier two"};
const char* const kNotAllowed = "its identity is not an authorized client's";
const char* const kNotHardened = "its code is not signed with the hardened runtime";

class PeerIdentity : public testing::Test {
  protected:
    PeerIdentity() {
        signing = {};
        signing.satisfied = {kRequirements.front()};
        signing.token = {1, 2, 3, 4, 5, 6, 7, 8};
    }
    ~PeerIdentity() override {
        EXPECT_FALSE(signing.askedOtherwise);
        EXPECT_EQ(signing.objects, 0) << "something was not released";
    }
};

TEST_F(PeerIdentity, IsAskedOfItsAuditTokenAlone) {
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
    EXPECT_EQ(signing.asked, std::vector<Token>{signing.token});
}

TEST_F(PeerIdentity, OfAnyOfTheRequirementsIsEnough) {
    signing.satisfied = {kRequirements.back()};
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
}

TEST_F(PeerIdentity, IsHeldAgainstAllRequirementsByTheSystemToo) {
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
    EXPECT_EQ(
        signing.held,
        Texts{"((identifier one) or (identifier two))"
              " and !(entitlement[\"com.apple.security.get-task-allow\"] exists)"
              " and !(entitlement[\"com.apple.security.cs.disable-library-validation\"] exists)"
              " and !(entitlement[\"com.apple.security.cs.allow-dyld-environment-variables\"] exists)"});
}

TEST_F(PeerIdentity, IsEnoughOnASystemThatHoldsNothingAgainstMessages) {
    signing.takesRequirement = false;
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
    EXPECT_EQ(signing.held, Texts{});
}

TEST_F(PeerIdentity, OfNoRequirementIsRefused) {
    signing.satisfied = {"identifier three"};
    EXPECT_EQ(refusal(kRequirements), kNotAllowed);
    EXPECT_EQ(refusal({}), kNotAllowed);
    EXPECT_EQ(signing.held, Texts{});
}

// The requirement decides as a whole; that its parts hold one by one is not enough.
TEST_F(PeerIdentity, IsRefusedWithTheFirstConditionThatItsProgramDoesNotMeet) {
    const Texts requirements{"identifier one and team us and version 2", "identifier two and team us"};
    signing.satisfied = {"identifier two", "identifier one", "team us"};
    EXPECT_EQ(refusal(requirements), std::string(kNotAllowed) + ", not: version 2");
    signing.satisfied = {"identifier two"};
    EXPECT_EQ(refusal(requirements), std::string(kNotAllowed) + ", not: team us");
    signing.satisfied = {"team us", "version 2"};
    EXPECT_EQ(refusal(requirements), kNotAllowed);
    signing.satisfied = {"identifier one", "team us", "version 2"};
    EXPECT_EQ(refusal(requirements), kNotAllowed);
}

TEST_F(PeerIdentity, WithAnEntitlementThatOpensTheHardenedRuntimeIsRefused) {
    for (const char* const entitlement :
         {"com.apple.security.get-task-allow", "com.apple.security.cs.disable-library-validation",
          "com.apple.security.cs.allow-dyld-environment-variables"}) {
        signing.entitlements = {"com.apple.security.app-sandbox", entitlement};
        EXPECT_EQ(refusal(kRequirements), std::string("its code has the entitlement ") + entitlement);
        EXPECT_EQ(signing.held, Texts{});
    }
    signing.entitlements = {"com.apple.security.app-sandbox"};
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
}

TEST_F(PeerIdentity, OfCodeThatIsNotValidIsRefused) {
    signing.isValid = false;
    EXPECT_EQ(refusal(kRequirements), kNotAllowed);
}

// Else any code with a valid signature would do.
TEST_F(PeerIdentity, IsNotTakenForGoodBecauseARequirementIsNone) {
    signing.satisfied = {};
    signing.malformed = kRequirements;
    EXPECT_EQ(refusal(kRequirements), kNotAllowed);
    signing.tellsOfMalformed = false;
    EXPECT_EQ(refusal(kRequirements), kNotAllowed);
}

TEST_F(PeerIdentity, WithoutTheHardenedRuntimeIsRefused) {
    for (const std::optional<std::uint32_t> flags :
         {std::optional<std::uint32_t>(0), std::optional<std::uint32_t>(0xFFFEFFFF),
          std::optional<std::uint32_t>()}) {
        signing.flags = flags;
        EXPECT_EQ(refusal(kRequirements), kNotHardened);
    }
    signing.flags = 0x12000;
    EXPECT_EQ(refusal(kRequirements), std::nullopt);
}

TEST_F(PeerIdentity, OfAProcessThatHasGoneIsRefused) {
    signing.isRunning = false;
    EXPECT_EQ(refusal(kRequirements), "its code has no identity that can be trusted");
}

TEST_F(PeerIdentity, WithoutAnAuditTokenIsRefusedUnasked) {
    signing.hasToken = false;
    EXPECT_EQ(refusal(kRequirements), "the system does not tell who it is");
    EXPECT_TRUE(signing.asked.empty());
}

}  // namespace
