#pragma once

#include <gtest/gtest.h>

#include "Platform/TaskRunner.h"

/// What every TaskRunner promises. World has `tasks`, and knows programs:
///   std::string runnable(output, error, status)     the path of a program that writes and exits like this
///   std::string notRunnable()                       a path that cannot be run
namespace PlatformTests {

template <class World>
class TaskRunnerContract : public testing::Test {
  protected:
    World world;
    Platform::TaskRunner& tasks = world.tasks;
};

TYPED_TEST_SUITE_P(TaskRunnerContract);

TYPED_TEST_P(TaskRunnerContract, KeepsOutputErrorAndStatusApart) {
    const auto task = this->tasks.launch(this->world.runnable("out\n", "err\n", 113), std::nullopt);
    ASSERT_TRUE(task);
    task->waitUntilExit();
    EXPECT_EQ(task->readOutputToEnd(), "out\n");
    EXPECT_EQ(task->readErrorToEnd(), "err\n");
    EXPECT_EQ(task->terminationStatus(), 113);
    EXPECT_EQ(task->terminationReason(), Platform::TerminationReason::exit);
}

TYPED_TEST_P(TaskRunnerContract, GivesNothingForASilentChild) {
    const auto task = this->tasks.launch(this->world.runnable("", "", 0), std::vector<std::string>());
    ASSERT_TRUE(task);
    task->waitUntilExit();
    EXPECT_EQ(task->readOutputToEnd(), "");
    EXPECT_EQ(task->readErrorToEnd(), "");
    EXPECT_EQ(task->terminationStatus(), 0);
}

TYPED_TEST_P(TaskRunnerContract, ATaskThatHasEndedDoesNotRunAndCannotBeKilled) {
    const auto task = this->tasks.launch(this->world.runnable("", "", 7), std::nullopt);
    ASSERT_TRUE(task);
    task->waitUntilExit();
    EXPECT_FALSE(task->isRunning());
    task->kill();
    EXPECT_EQ(task->terminationStatus(), 7);
    EXPECT_EQ(task->terminationReason(), Platform::TerminationReason::exit);
}

TYPED_TEST_P(TaskRunnerContract, IsNullWhenThePathCannotBeRun) {
    EXPECT_EQ(this->tasks.launch(this->world.notRunnable(), std::nullopt), nullptr);
    EXPECT_EQ(this->tasks.launch(this->world.notRunnable(), std::vector<std::string>{"argument"}), nullptr);
}

REGISTER_TYPED_TEST_SUITE_P(TaskRunnerContract, KeepsOutputErrorAndStatusApart, GivesNothingForASilentChild,
                            ATaskThatHasEndedDoesNotRunAndCannotBeKilled, IsNullWhenThePathCannotBeRun);

}  // namespace PlatformTests
