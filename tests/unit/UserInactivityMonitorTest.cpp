#include "modules/screensaver/UserInactivityMonitor.h"
#include "app/log/Logger.h"
#include "modules/screensaver/UserInactivityMonitorException.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace testing_panel;

namespace {

constexpr auto ACTIVE = UserActivityEvent::Active;
constexpr auto INACTIVE = UserActivityEvent::Inactive;

// What the monitor has said, and when.
struct Recorder : UserInactivityMonitorObserver {
    void notify(const UserActivityEvent& event) override {
        heard.emplace_back(GetTickCount(), event);
        if (reaction) {
            reaction();
        }
    }
    std::vector<std::pair<DWORD, UserActivityEvent>> heard;
    std::function<void()> reaction;
};

using Heard = decltype(Recorder::heard);

void user(bool active) {
    panel::setUserActive(active);
    driver().settle();
}

const auto failure = messageOf<UserInactivityMonitorException>;

void pass(std::uint64_t milliseconds) {
    advance(milliseconds);
    driver().settle();
}

} // namespace

TEST(UserInactivityMonitor, ReportsTheUserAfterTheTimeout) {
    user(false);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    ASSERT_TRUE(monitor.start());
    monitor.setTimeout(500); // for the next wait only
    pass(59999);
    EXPECT_EQ(recorder.heard, Heard{});
    pass(1);
    EXPECT_EQ(recorder.heard, (Heard{{60000, INACTIVE}}));
    pass(100000);
    user(true);
    pass(100000);
    EXPECT_EQ(recorder.heard, (Heard{{60000, INACTIVE}, {160000, ACTIVE}}));
    recorder.heard.clear();
    user(false); // 260000
    pass(499);
    user(true); // in time
    pass(1000);
    user(false); // 261499
    pass(10000);
    EXPECT_EQ(recorder.heard, (Heard{{260499, ACTIVE}, {261999, INACTIVE}}));
}

TEST(UserInactivityMonitor, ReportsAnActiveUserOnceAtTheStart) {
    user(true);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    monitor.start();
    pass(100000);
    monitor.stop();
    EXPECT_EQ(recorder.heard, (Heard{{0, ACTIVE}}));
    EXPECT_TRUE(monitor.start()) << "a monitor that was stopped can be started again";
    pass(100000);
    EXPECT_EQ(recorder.heard, (Heard{{0, ACTIVE}, {100000, ACTIVE}}));
}

TEST(UserInactivityMonitor, TellsItsObserversInTheirOrder) {
    user(true);
    std::string order;
    Recorder first;
    Recorder second;
    UserInactivityMonitor monitor;
    first.reaction = [&] { order += '1'; };
    second.reaction = [&] {
        order += '2';
        monitor.removeObserver(&second); // which does not disturb the round that it is in
    };
    for (Recorder* each : {&second, &first, &second, &first}) {
        monitor.addObserver(each);
    }
    monitor.start();
    driver().settle();
    EXPECT_EQ(order, "2121");
    user(false);
    pass(60000);
    EXPECT_EQ(order, "212111");
}

TEST(UserInactivityMonitor, StartsOnceAndCanBeStoppedAtOnce) {
    user(false);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.stop();
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(monitor.start());
        ASSERT_FALSE(monitor.start());
        monitor.stop();
    }
    EXPECT_EQ(GetTickCount(), 0U);
}

TEST(UserInactivityMonitor, StaysSilentWithoutThePlatformsEventsOrAThread) {
    user(true);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    for (const auto& [function, call] : {std::pair{"OpenEventW", 1U}, {"OpenEventW", 2U}, {"CreateThread", 1U}}) {
        driver().clearFaults();
        panel::Fault fault;
        fault.function = function;
        fault.call = call;
        fault.ever = true;
        driver().addFault(fault);
        EXPECT_TRUE(monitor.start());
        EXPECT_TRUE(monitor.start()) << "it does not run";
        monitor.stop();
    }
    EXPECT_EQ(recorder.heard, Heard{});
    EXPECT_EQ(GetTickCount(), 0U);
}

TEST(UserInactivityMonitor, NeedsItsEvents) {
    for (const unsigned call : {1U, 2U}) {
        failCall("CreateEventW", call);
        EXPECT_EQ(failure([] { UserInactivityMonitor monitor; }), L"Cannot create event");
    }
}

TEST(UserInactivityMonitor, WaitsTwentySecondsForABusyObserver) {
    user(false);
    Recorder recorder;
    recorder.reaction = [] { Sleep(30000); };
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    monitor.start();
    pass(60000);
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"Failed to terminate monitor thread");
    EXPECT_EQ(GetTickCount(), 80000U);
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"none");
    EXPECT_EQ(GetTickCount(), 90000U);
}

TEST(UserInactivityMonitor, ThrowsFromItsDestructorUnlessAnExceptionIsInFlight) {
    user(false);
    const auto untellable = [] {
        UserInactivityMonitor monitor;
        monitor.start();
        failCall("EventModify", 1, true);
    };
    EXPECT_EQ(failure(untellable), L"Failed to terminate monitor thread");
    driver().clearFaults();
    EXPECT_EQ(failure([] {
                  UserInactivityMonitor monitor;
                  monitor.start();
                  failCall("EventModify", 1, true);
                  throw UserInactivityMonitorException(L"in flight");
              }),
              L"in flight");
    EXPECT_EQ(GetTickCount(), 40000U);
}

TEST(UserInactivityMonitor, OutlastsASingleFailureOfThePlatform) {
    user(false);
    UserInactivityMonitor monitor;
    panel::Fault fault;
    fault.function = "EventModify";
    fault.thread = 2; // that of the monitor, when it tells that it runs
    driver().addFault(fault);
    EXPECT_TRUE(monitor.start());
    EXPECT_FALSE(monitor.start());
    EXPECT_EQ(GetTickCount(), 20000U);
    failCall("WaitForSingleObject");
    monitor.stop();
    EXPECT_TRUE(monitor.start()) << "the thread has ended";
    monitor.stop();
    failCall("WaitForMultipleObjects");
    EXPECT_TRUE(monitor.start());
    EXPECT_FALSE(monitor.start()) << "it has waited for the thread";
}

TEST(UserInactivityMonitor, DoesNotTakeAWaitThatFailsForTheThreadsEnd) {
    user(false);
    Recorder recorder;
    recorder.reaction = [] { Sleep(1000); };
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    monitor.start();
    pass(60000);
    failCall("WaitForSingleObject", 1, true);
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"Failed to terminate monitor thread");
    EXPECT_TRUE(monitor.isStuck());
    driver().clearFaults();
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"none");
    EXPECT_FALSE(monitor.isStuck());
    EXPECT_EQ(GetTickCount(), 61000U);
}

TEST(UserInactivityMonitor, EndsWithALogLineWhenAnObserverThrows) {
    writeFile("\\Log\\unrelated", "");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    user(true);
    const std::function<void()> reactions[] = {
        [] { throw UserInactivityMonitorException(L"Cannot update driver settings"); },
        [] { throw OrvaUtils::Exception(); },
        [] { throw std::runtime_error("hidden"); },
        [] { throw 1; },
    };
    for (const auto& reaction : reactions) {
        Recorder recorder;
        recorder.reaction = reaction;
        UserInactivityMonitor monitor;
        monitor.addObserver(&recorder);
        monitor.start();
        driver().settle();
        EXPECT_FALSE(monitor.start()) << "it counts as running";
        monitor.stop();
        user(true);
        EXPECT_EQ(recorder.heard.size(), 1U);
    }
    EXPECT_EQ(GetTickCount(), 0U);
    const std::string log = readFile("\\Log\\log.txt");
    std::string lines;
    for (std::size_t at = 0; (at = log.find(';', at)) != std::string::npos; at = log.find('\n', at)) {
        lines += log.substr(at + 1, log.find('\n', at) - at);
    }
    EXPECT_EQ(lines, "ERROR;Cannot update driver settings\nERROR;Generic Exception\nERROR;Generic exception\n"
                     "ERROR;Generic exception\n");
}
