#include "modules/screensaver/UserInactivityMonitor.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <utility>

using namespace testing_panel;

namespace {

constexpr auto ACTIVE = UserActivityEvent::Active;
constexpr auto INACTIVE = UserActivityEvent::Inactive;

// What the monitor has said, and when.
struct ActivityRecorder : UserInactivityMonitorObserver {
    void notify(const UserActivityEvent& event) override {
        heard.emplace_back(GetTickCount(), event);
    }
    std::vector<std::pair<DWORD, UserActivityEvent>> heard;
};

using Heard = decltype(ActivityRecorder::heard);

void user(bool active) {
    panel::setUserActive(active);
    driver().settle();
}

} // namespace

TEST(UserInactivityMonitor, ReportsAUserWhoIsInactiveForTheWholeTimeout) {
    user(true);
    ActivityRecorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    ASSERT_TRUE(monitor.start());
    monitor.setTimeout(500);
    user(false);
    pass(499);
    user(true); // in time
    pass(1000);
    user(false);
    monitor.setTimeout(1); // for the next wait
    pass(10000);
    EXPECT_EQ(recorder.heard, (Heard{{0, ACTIVE}, {499, ACTIVE}, {1999, INACTIVE}}));
}

TEST(UserInactivityMonitor, ReportsAnActiveUserOnceAtEachStart) {
    user(true);
    ActivityRecorder recorder;
    UserInactivityMonitor monitor;
    monitor.addObserver(&recorder);
    driver().addFault({"OpenEventW", "", 0, 0, 2});
    EXPECT_TRUE(monitor.start());
    pass(100000);
    EXPECT_EQ(recorder.heard, Heard{}) << "without one of the platform's events";
    driver().clearFaults();
    for (const DWORD time : {100000U, 200000U}) {
        EXPECT_TRUE(monitor.start()) << "it does not run";
        pass(100000);
        monitor.stop();
        EXPECT_EQ(std::exchange(recorder.heard, {}), (Heard{{time, ACTIVE}}));
    }
}
