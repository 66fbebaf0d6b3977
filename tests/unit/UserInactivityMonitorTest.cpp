#include "modules/screensaver/UserInactivityMonitor.h"
#include "modules/screensaver/UserInactivityMonitorException.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"

#include <functional>
#include <gtest/gtest.h>

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
        monitor.removeObserver(&first);
    };
    for (Recorder* each : {&first, &second, &first, &second}) {
        monitor.addObserver(each);
    }
    monitor.start();
    EXPECT_EQ(order, "122");
    user(false);
    pass(60000);
    EXPECT_EQ(order, "12222");
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

TEST(UserInactivityMonitor, StaysSilentWithoutThePlatformsEvents) {
    user(true);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    for (const unsigned call : {1U, 2U}) {
        driver().clearFaults();
        panel::Fault fault;
        fault.function = "OpenEventW";
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

TEST(UserInactivityMonitor, HasFailuresOfItsOwn) {
    const auto failure = messageOf<UserInactivityMonitorException>;
    failCall("CreateEventW");
    EXPECT_EQ(failure([] { UserInactivityMonitor monitor; }), L"Cannot create event");
    user(false);
    Recorder recorder;
    recorder.reaction = [] { Sleep(30000); };
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    monitor.start();
    pass(60000);
    EXPECT_EQ(failure([&] { monitor.stop(); }), L"Failed to terminate monitor thread");
}
