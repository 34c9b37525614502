#include "NorvikCommon/PMProcessMonitor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "support/FakeMac.h"

namespace {

using Base::URL;
using NorvikCommon::PMProcess;
using NorvikCommon::PMProcessMonitor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using TestSupport::CallList;
using TestSupport::FakeMac;
using Lines = std::vector<std::string>;

const PMProcess kFinder{7, 501, "Finder", URL::fileURL("/Finder")};
const PMProcess kDock{8, 502, "Dock", URL::fileURL("/Dock")};

void runFinderAndDock(FakeMac& mac) {
    mac.processes.processes = {{7, 501, "Finder", "/Finder"}, {8, 502, "Dock", "/Dock"}};
}

TEST(ProcessMonitor, MakesItsQueueSchedulesItsSuspendedTimerAndTakesTheFirstListSynchronously) {
    FakeMac mac;
    runFinderAndDock(mac);

    const PMProcessMonitor monitor;

    // The interval is the present plus five seconds: the clock's reading itself.
    EXPECT_EQ(mac.calls, (CallList{{"concurrent queue", "com.merrow.PMMonitor.process-sync"},
                                   {"timer", 0, 1005000000000, 0},
                                   {"listPids", 1, 0},
                                   {"listPids", 1, 2},
                                   {"sync"}}));
    EXPECT_EQ(mac.log.lines, Lines{});
}

TEST(ProcessMonitor, ConvertsItsFrequencyToNanosecondsAndTruncates) {
    FakeMac mac;
    mac.clock.present = 1000;

    const PMProcessMonitor quarter(0.25);
    const PMProcessMonitor truncated(0.0000000019);

    EXPECT_EQ(mac.callsOf("timer"), (CallList{{"timer", 0, 250001000, 0}, {"timer", 0, 1001, 0}}));
    EXPECT_EQ(mac.callsOf("timer resume"), CallList{});
}

TEST(ProcessMonitor, ListsTheProcessesOfAllUsersUnlessToldOne) {
    FakeMac mac;
    runFinderAndDock(mac);

    EXPECT_THAT(PMProcessMonitor().allProcesses(), UnorderedElementsAre(kFinder, kDock));
    EXPECT_THAT(PMProcessMonitor(5.0).allProcesses(), UnorderedElementsAre(kFinder, kDock));
    EXPECT_THAT(PMProcessMonitor(5.0, 0x7FFFFFFF).allProcesses(), UnorderedElementsAre(kFinder, kDock));
    EXPECT_THAT(PMProcessMonitor(5.0, 502).allProcesses(), ElementsAre(kDock));
    EXPECT_THAT(PMProcessMonitor(5.0, 0).allProcesses(), IsEmpty());
}

TEST(ProcessMonitor, NeverListsAProcessThatHasGoneOrWhosePathCannotBeRead) {
    FakeMac mac;
    mac.processes.processes = {{1, 0, "kernel_task", ""}, {7, 501, "Finder", "/Finder"}};
    mac.processes.vanished = {99};

    EXPECT_THAT(PMProcessMonitor().allProcesses(), ElementsAre(kFinder));
}

TEST(ProcessMonitor, ReadsItsListOnItsQueueWithoutTakingANewOne) {
    FakeMac mac;
    runFinderAndDock(mac);
    const PMProcessMonitor monitor;
    mac.calls.clear();

    EXPECT_THAT(monitor.allProcesses(), UnorderedElementsAre(kFinder, kDock));

    EXPECT_EQ(mac.calls, (CallList{{"sync"}}));
}

TEST(ProcessMonitor, StoresANewListSynchronouslyOrAsynchronouslyAsTold) {
    FakeMac mac;
    PMProcessMonitor monitor;
    runFinderAndDock(mac);
    mac.calls.clear();

    monitor.updateProcessList(false);
    EXPECT_EQ(mac.calls, (CallList{{"listPids", 1, 0}, {"listPids", 1, 2}, {"sync"}}));
    EXPECT_THAT(monitor.allProcesses(), UnorderedElementsAre(kFinder, kDock));

    mac.processes.processes.pop_back();
    mac.calls.clear();
    monitor.updateProcessList(true);
    EXPECT_EQ(mac.calls, (CallList{{"listPids", 1, 0}, {"listPids", 1, 1}, {"async"}}));
    EXPECT_THAT(monitor.allProcesses(), ElementsAre(kFinder));
}

TEST(ProcessMonitor, ResumesItsTimerOnStartAndCancelsItOnStop) {
    FakeMac mac;
    PMProcessMonitor monitor;
    mac.calls.clear();

    monitor.start();
    monitor.stop();

    EXPECT_EQ(mac.calls, (CallList{{"timer resume"}, {"timer cancel"}}));
}

TEST(ProcessMonitor, StopsWhenItEnds) {
    FakeMac mac;
    auto monitor = std::make_unique<PMProcessMonitor>();
    mac.calls.clear();

    monitor.reset();

    EXPECT_EQ(mac.calls, (CallList{{"timer cancel"}}));
}

TEST(ProcessMonitor, TakesANewListAsynchronouslyWhenItsTimerFires) {
    FakeMac mac;
    PMProcessMonitor monitor;
    ASSERT_EQ(mac.dispatch.timerHandlers.size(), 1U);
    monitor.start();
    runFinderAndDock(mac);
    mac.calls.clear();

    mac.dispatch.timerHandlers.front()();

    EXPECT_EQ(mac.calls, (CallList{{"listPids", 1, 0}, {"listPids", 1, 2}, {"async"}}));
    EXPECT_THAT(monitor.allProcesses(), UnorderedElementsAre(kFinder, kDock));
}

TEST(ProcessMonitor, IsNotKeptAliveByItsTimersHandler) {
    FakeMac mac;
    auto monitor = std::make_unique<PMProcessMonitor>();
    monitor.reset();
    mac.calls.clear();

    ASSERT_EQ(mac.dispatch.timerHandlers.size(), 1U);
    mac.dispatch.timerHandlers.front()();

    EXPECT_EQ(mac.calls, CallList{});
}

TEST(AllProcessesWithName, KeepsExactlyThoseOfTheNameInTheListsOrder) {
    FakeMac mac;
    mac.processes.processes = {{30, 501, "Finder", "/Finder"},
                               {10, 502, "Finder", "/other/Finder"},
                               {20, 501, "Finder2", "/Finder2"},
                               {40, 501, "A Finder", "/AFinder"}};
    const PMProcessMonitor monitor;
    std::vector<PMProcess> expected = monitor.allProcesses();
    std::erase_if(expected, [](const PMProcess& process) { return process.pid != 30 && process.pid != 10; });

    const std::vector<PMProcess> found = monitor.allProcessesWithName("Finder");

    EXPECT_EQ(found.size(), 2U);
    EXPECT_EQ(found, expected);
}

TEST(AllProcessesWithName, DoesNotMatchAProcessNamedInOtherCase) {
    FakeMac mac;
    mac.processes.processes = {{7, 501, "finder", "/finder"}};

    EXPECT_THAT(PMProcessMonitor().allProcessesWithName("Finder"), IsEmpty());
    EXPECT_EQ(PMProcessMonitor().allProcessesWithName("finder").size(), 1U);
}

TEST(AllProcessesWithName, IsEmptyWhenNoneMatches) {
    FakeMac mac;
    runFinderAndDock(mac);

    EXPECT_THAT(PMProcessMonitor().allProcessesWithName(""), IsEmpty());
    EXPECT_THAT(PMProcessMonitor().allProcessesWithName("Find"), IsEmpty());
}

TEST(DefaultMonitor, IsOneMonitorOfAllUsersThatIsNeverStarted) {
    FakeMac mac;
    runFinderAndDock(mac);

    const PMProcessMonitor& monitor = PMProcessMonitor::defaultMonitor();

    EXPECT_EQ(&PMProcessMonitor::defaultMonitor(), &monitor);
    EXPECT_THAT(monitor.allProcesses(), UnorderedElementsAre(kFinder, kDock));
    EXPECT_EQ(mac.callsOf("timer"), (CallList{{"timer", 0, 1005000000000, 0}}));
    EXPECT_EQ(mac.callsOf("timer resume"), CallList{});
    EXPECT_EQ(mac.callsOf("concurrent queue").size(), 1U);
}

TEST(DefaultMonitor, NeverRefreshesTheListOfItsFirstUse) {
    FakeMac mac;
    runFinderAndDock(mac);
    EXPECT_EQ(PMProcessMonitor::defaultMonitor().allProcesses().size(), 2U);

    mac.processes.processes = {{9, 501, "Mail", "/Mail"}};
    mac.clock.present += 3600'000'000'000;

    EXPECT_THAT(PMProcessMonitor::defaultMonitor().allProcesses(), UnorderedElementsAre(kFinder, kDock));
    EXPECT_EQ(mac.callsOf("listPids").size(), 2U);
    EXPECT_EQ(mac.callsOf("timer resume"), CallList{});
}

}  // namespace
