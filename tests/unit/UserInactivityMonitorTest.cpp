#include "modules/screensaver/UserInactivityMonitor.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;

namespace {

constexpr auto ACTIVE = UserActivityEvent::Active;
constexpr auto INACTIVE = UserActivityEvent::Inactive;

// What the monitor has said, and when.
struct Recorder : UserInactivityMonitorObserver {
    void notify(const UserActivityEvent& event) override {
        heard.emplace_back(GetTickCount(), event);
    }
    std::vector<std::pair<DWORD, UserActivityEvent>> heard;
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

TEST(UserInactivityMonitor, StaysSilentWithoutOneOfThePlatformsEvents) {
    user(true);
    Recorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    panel::Fault fault;
    fault.function = "OpenEventW";
    fault.call = 2;
    driver().addFault(fault);
    EXPECT_TRUE(monitor.start());
    driver().settle();
    EXPECT_EQ(recorder.heard, Heard{});
    driver().clearFaults();
    EXPECT_TRUE(monitor.start()) << "it did not run";
    monitor.stop();
    EXPECT_EQ(recorder.heard, (Heard{{0, ACTIVE}}));
}
