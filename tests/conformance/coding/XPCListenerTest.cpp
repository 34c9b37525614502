#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ListenerDouble.h"

// Whom a helper's listener lets in, and how it ends.

namespace {

class Listener : public testing::Test {
  protected:
    ListenerDouble world_;
    bool takes_ = true;
    std::vector<std::string> refusals_;
    std::vector<std::pair<int, unsigned>> asked_;

    void run() {
        world_.listener().run(
            [this](const std::shared_ptr<Platform::XPCConnection>& /*connection*/,
                   const Platform::XPCPeer& peer) {
                asked_.emplace_back(peer.pid, peer.uid);
                return takes_;
            },
            [this](const std::string& why) { refusals_.push_back(why); }, 0);
    }
};

using Peers = std::vector<std::pair<int, unsigned>>;

// A helper is started for a connection that waits already: nobody may be lost between the resumption and the
// moment when the helper serves.
TEST_F(Listener, TakesTheConnectionThatComesAtOnce) {
    run();
    EXPECT_TRUE(world_.isPeerAdmitted());
    EXPECT_EQ(asked_, (Peers{{7, 501}}));
    EXPECT_EQ(world_.connectionsResumed(), 1);
    EXPECT_TRUE(refusals_.empty());
    EXPECT_EQ(world_.serviceName(), "com.norvik.InstallerHelper");
}

TEST_F(Listener, RefusesAStrangerWithoutAskingTheService) {
    world_.refusal = "it is somebody else";
    run();
    EXPECT_FALSE(world_.isPeerAdmitted());
    EXPECT_TRUE(asked_.empty());
    EXPECT_EQ(world_.connectionsResumed(), 0);
    EXPECT_EQ(refusals_, std::vector<std::string>{"process 7 of user 501: it is somebody else"});
}

TEST_F(Listener, RefusesWhomTheServiceDoesNotTake) {
    takes_ = false;
    run();
    EXPECT_FALSE(world_.isPeerAdmitted());
    EXPECT_EQ(world_.connectionsResumed(), 0);
    EXPECT_EQ(refusals_, std::vector<std::string>{"process 7 of user 501: the service does not take it"});
}

TEST_F(Listener, IsSuspendedWhenItHasEnded) {
    run();
    EXPECT_GE(world_.resumed(), 1);
    EXPECT_EQ(world_.suspended(), world_.resumed());
}

TEST_F(Listener, HasTheSystemCountItsTransactions) {
    EXPECT_EQ(ListenerDouble::transactions(), 0);
    std::shared_ptr<void> transaction = world_.listener().transaction();
    std::shared_ptr<void> copy = transaction;
    EXPECT_EQ(ListenerDouble::transactions(), 1);
    transaction.reset();
    EXPECT_EQ(ListenerDouble::transactions(), 1);
    copy.reset();
    EXPECT_EQ(ListenerDouble::transactions(), 0);
}

}  // namespace
