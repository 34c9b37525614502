// What the adapters ask process 1, and what they make of its answers.

#include <gtest/gtest.h>

#include "FakeProcessOne.h"
#include "Platform/Linux/Services/LinuxLoadedExtensions.h"
#include "Platform/Linux/Services/LinuxServices.h"

namespace {

using namespace XPCTests;
using namespace Platform::Linux;
using Fields = FakeProcessOne::Fields;
using Requests = std::vector<Fields>;
using Items = std::vector<Platform::AuthorizationItem>;

constexpr std::int32_t kInternalError = static_cast<std::int32_t>(0xdc008001);

MacServices nobody() {
    return MacServices("/nonexistent/services");
}

TEST(LinuxKernelExtensions, UnloadsByBundleIdentifier) {
    const FakeProcessOne one(Fields{"0"});
    EXPECT_EQ(LinuxKernelExtensions(one.services()).unload("com.norvik.kext"), 0);
    EXPECT_EQ(one.requests(), (Requests{{"unload-kext", "com.norvik.kext"}}));
}

TEST(LinuxKernelExtensions, GivesTheKernelsCode) {
    const FakeProcessOne one(Fields{"-603947007"});
    EXPECT_EQ(LinuxKernelExtensions(one.services()).unload("com.norvik.kext"), -603947007);
}

TEST(LinuxKernelExtensions, AnAnswerThatNeverComesIsAnInternalError) {
    EXPECT_EQ(LinuxKernelExtensions(nobody()).unload("com.norvik.kext"), kInternalError);
}

TEST(LinuxKernelExtensions, AnAnswerThatMakesNoSenseIsAnInternalError) {
    for (const Fields& answer :
         {Fields{"0", "0"}, Fields{""}, Fields{"0x"}, Fields{"x"}, Fields{"99999999999"}}) {
        const FakeProcessOne one(answer);
        EXPECT_EQ(LinuxKernelExtensions(one.services()).unload("k"), kInternalError) << answer.front();
    }
}

TEST(LinuxLoadedExtensions, TellsWhetherAnExtensionIsLoaded) {
    FakeProcessOne one(Fields{"1"});
    LinuxLoadedExtensions extensions(one.services());
    Platform::Error error;
    EXPECT_EQ(extensions.isLoaded("com.norvik.kext", error), true);
    one.answerWith({"0"});
    EXPECT_EQ(extensions.isLoaded("com.norvik.kext", error), false);
    EXPECT_EQ(one.requests(),
              (Requests{{"is-kext-loaded", "com.norvik.kext"}, {"is-kext-loaded", "com.norvik.kext"}}));
    EXPECT_EQ(error, Platform::Error{});
}

TEST(LinuxLoadedExtensions, DoesNotKnowWithoutASensibleAnswer) {
    const Platform::Error expected{"the kernel extension k could not be looked up: launchd does not answer",
                                   0};
    for (const Fields& answer : {Fields{"1", "1"}, Fields{""}, Fields{"2"}, Fields{"10"}}) {
        const FakeProcessOne one(answer);
        Platform::Error error;
        EXPECT_EQ(LinuxLoadedExtensions(one.services()).isLoaded("k", error), std::nullopt);
        EXPECT_EQ(error, expected) << answer.front();
    }
    Platform::Error error;
    EXPECT_EQ(LinuxLoadedExtensions(nobody()).isLoaded("k", error), std::nullopt);
    EXPECT_EQ(error, expected);
}

/// What blessing comes to: "success", or the error's code and words.
std::string bless(const MacServices& services) {
    const auto error = LinuxServiceManagement(services).blessJob(
        Platform::LaunchdDomain::system, "com.norvik.H", LinuxAuthorizationReference("token-1"));
    return error ? std::to_string(error->code) + " " + error->description : "success";
}

TEST(LinuxServiceManagement, BlessesWithTheSessionsToken) {
    const FakeProcessOne one(Fields{"0", ""});
    EXPECT_EQ(bless(one.services()), "success");
    EXPECT_EQ(one.requests(), (Requests{{"bless", "token-1", "com.norvik.H"}}));
}

TEST(LinuxServiceManagement, GivesTheErrorOfProcessOne) {
    const FakeProcessOne one(Fields{"-7", "the helper is not signed"});
    EXPECT_EQ(bless(one.services()), "-7 the helper is not signed");
}

TEST(LinuxServiceManagement, SaysThatNobodyAnswers) {
    EXPECT_EQ(bless(nobody()), "0 launchd does not answer (blessing com.norvik.H).");
    for (const Fields& answer : {Fields{"0"}, Fields{"0", "", ""}}) {
        const FakeProcessOne one(answer);
        EXPECT_EQ(bless(one.services()), "0 launchd does not answer (blessing com.norvik.H).");
    }
}

TEST(LinuxServiceManagement, AnAnswerThatMakesNoSenseIsAnError) {
    for (const std::string code : {"", "0x", "x", "99999999999"}) {
        const FakeProcessOne one(Fields{code, "text"});
        EXPECT_EQ(bless(one.services()), "0 launchd gave an invalid answer (blessing com.norvik.H).") << code;
    }
}

/// Items that have a name and nothing else.
Items items(std::initializer_list<std::string> names) {
    Items items;
    for (const std::string& name : names) {
        items.emplace_back().name = name;
    }
    return items;
}

std::string tokenOf(const Platform::SFAuthorization& session) {
    const auto* reference = static_cast<const LinuxAuthorizationReference*>(session.authorizationRef());
    return reference == nullptr ? "none" : reference->token();
}

TEST(LinuxAuthorization, AsksForTheRightsWithTheFlags) {
    FakeProcessOne one(Fields{"0", "token-1"});
    const auto session = LinuxAuthorization(one.services()).create();
    EXPECT_TRUE(session->obtainWithRights(items({"system.privilege.admin", "system.other"}), 3, {}));
    EXPECT_EQ(one.requests(), (Requests{{"authorize", "3", "system.privilege.admin", "system.other"}}));
    EXPECT_EQ(tokenOf(*session), "token-1");
}

TEST(LinuxAuthorization, AnEmptyFieldPartsTheRightsFromTheEnvironment) {
    FakeProcessOne one(Fields{"0", "token-1"});
    const auto session = LinuxAuthorization(one.services()).create();
    Items environment = items({"prompt", "icon"});
    environment[0].value = "Sentrel wants to make changes.";
    EXPECT_TRUE(session->obtainWithRights(items({"r"}), 0, environment));
    EXPECT_EQ(
        one.requests(),
        (Requests{{"authorize", "0", "r", "", "prompt", "Sentrel wants to make changes.", "icon", ""}}));
}

TEST(LinuxAuthorization, ASessionHasNoReferenceBeforeItsFirstGrant) {
    FakeProcessOne one(Fields{"-60006", ""});
    const auto session = LinuxAuthorization(one.services()).create();
    EXPECT_EQ(tokenOf(*session), "none");
    EXPECT_FALSE(session->obtainWithRights(items({"r"}), 0, {}));
    EXPECT_EQ(tokenOf(*session), "none");
}

TEST(LinuxAuthorization, AnAnswerOfAnotherShapeIsARefusal) {
    EXPECT_FALSE(LinuxAuthorization(nobody()).create()->obtainWithRights(items({"r"}), 0, {}));
    for (const Fields& answer : {Fields{"0"}, Fields{"0", "token-1", ""}}) {
        const FakeProcessOne one(answer);
        EXPECT_FALSE(LinuxAuthorization(one.services()).create()->obtainWithRights(items({"r"}), 0, {}));
    }
}

TEST(LinuxAuthorization, TheEndOfTheSessionGivesItsRightsBack) {
    FakeProcessOne one(Fields{"0", "token-1"});
    auto session = LinuxAuthorization(one.services()).create();
    EXPECT_TRUE(session->obtainWithRights(items({"r"}), 0, {}));
    session.reset();
    EXPECT_EQ(one.requests(), (Requests{{"authorize", "0", "r"}, {"release", "token-1"}}));
}

TEST(LinuxAuthorization, ASessionWithoutRightsGivesNoneBack) {
    FakeProcessOne one(Fields{"-60006", ""});
    auto session = LinuxAuthorization(one.services()).create();
    EXPECT_FALSE(session->obtainWithRights(items({"r"}), 0, {}));
    session.reset();
    EXPECT_EQ(one.requests(), (Requests{{"authorize", "0", "r"}}));
}

TEST(LinuxAuthorization, ASecondGrantReplacesTheFirst) {
    FakeProcessOne one(Fields{"0", "token-1"});
    const auto session = LinuxAuthorization(one.services()).create();
    EXPECT_TRUE(session->obtainWithRights(items({"r"}), 0, {}));
    one.answerWith({"0", "token-2"});
    EXPECT_TRUE(session->obtainWithRights(items({"r"}), 0, {}));
    EXPECT_EQ(tokenOf(*session), "token-2");
    EXPECT_EQ(one.requests(),
              (Requests{{"authorize", "0", "r"}, {"authorize", "0", "r"}, {"release", "token-1"}}));
}

TEST(LinuxAuthorization, ARefusalKeepsWhatWasGrantedBefore) {
    FakeProcessOne one(Fields{"0", "token-1"});
    const auto session = LinuxAuthorization(one.services()).create();
    EXPECT_TRUE(session->obtainWithRights(items({"r"}), 0, {}));
    one.answerWith({"-60006", "token-2"});
    EXPECT_FALSE(session->obtainWithRights(items({"r"}), 0, {}));
    EXPECT_EQ(tokenOf(*session), "token-1");
}

TEST(LinuxDistantObjects, LooksUpTheName) {
    FakeProcessOne one(Fields{"0", "42", "1000"});
    EXPECT_NE(LinuxDistantObjects(one.services()).rootProxy("com.norvik.daemon"), nullptr);
    EXPECT_EQ(one.requests(), (Requests{{"lookup", "com.norvik.daemon"}}));
}

TEST(LinuxDistantObjects, NoProxyForANameThatNobodyHas) {
    EXPECT_EQ(LinuxDistantObjects(nobody()).rootProxy("n"), nullptr);
    for (const Fields& answer :
         {Fields{"1", "42", "1000"}, Fields{"0", "42"}, Fields{"0", "42", "1000", ""}}) {
        const FakeProcessOne one(answer);
        EXPECT_EQ(LinuxDistantObjects(one.services()).rootProxy("n"), nullptr);
    }
}

/// Connection, send port and receive port.
std::string validityOf(const Platform::DistantObject& proxy) {
    return std::string(proxy.isConnectionValid() ? "c" : "-") + (proxy.isSendPortValid() ? "s" : "-") +
           (proxy.isReceivePortValid() ? "r" : "-");
}

TEST(LinuxDistantObjects, AProxyIsValidWhileTheSameProcessHasTheName) {
    FakeProcessOne one(Fields{"0", "42", "1000"});
    const auto proxy = LinuxDistantObjects(one.services()).rootProxy("n");
    ASSERT_NE(proxy, nullptr);
    EXPECT_EQ(validityOf(*proxy), "csr");
    EXPECT_EQ(one.requests().back(), (Fields{"lookup", "n"}));
    one.answerWith({"1", "", ""});
    EXPECT_EQ(validityOf(*proxy), "---");
}

TEST(LinuxDistantObjects, AnotherProcessUnderTheSameNameDoesNotMakeAProxyValid) {
    for (const Fields& other : {Fields{"0", "43", "1000"}, Fields{"0", "42", "1001"}}) {
        FakeProcessOne one(Fields{"0", "42", "1000"});
        const auto proxy = LinuxDistantObjects(one.services()).rootProxy("n");
        ASSERT_NE(proxy, nullptr);
        one.answerWith(other);
        EXPECT_EQ(validityOf(*proxy), "---");
    }
}

}  // namespace
