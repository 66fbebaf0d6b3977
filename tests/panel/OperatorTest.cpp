// The person in front of the panel: the power manager's events.
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

using namespace testing_panel;

namespace {

constexpr const wchar_t* activeName = L"PowerManager/UserActivity_Active";
constexpr const wchar_t* inactiveName = L"PowerManager/UserActivity_Inactive";

HANDLE openEvent(const wchar_t* name) {
    return OpenEventW(EVENT_ALL_ACCESS, FALSE, name);
}

bool isSet(HANDLE event) {
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

} // namespace

TEST(Activity, IsToldByTwoComplementaryEventsThatStay) {
    EXPECT_TRUE(CloseHandle(openEvent(activeName)));
    const HANDLE active = openEvent(activeName);
    const HANDLE inactive = openEvent(inactiveName);
    ASSERT_TRUE(active && inactive);
    EXPECT_TRUE(isSet(active)); // since the boot
    EXPECT_FALSE(isSet(inactive));
    for (const bool state : {false, false, true}) {
        panel::setUserActive(state);
        EXPECT_EQ(isSet(active), state);
        EXPECT_EQ(isSet(active), state); // waiting takes nothing
        EXPECT_EQ(isSet(inactive), !state);
        EXPECT_EQ(driver().status().userActive, state);
    }
}

TEST(Activity, ReleasesWhoWaitsForIt) {
    static HANDLE inactive = openEvent(inactiveName);
    const HANDLE thread = CreateThread(
        nullptr, 0, [](LPVOID) -> DWORD { return WaitForSingleObject(inactive, INFINITE) == WAIT_OBJECT_0 ? 0 : 1; },
        nullptr, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, 1000), WAIT_TIMEOUT);
    panel::setUserActive(false);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(GetTickCount(), 1000U);
}
