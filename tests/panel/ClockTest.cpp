// Panel time in stepped mode, as seen through the platform's calls.
#include "platform/panel/Runtime.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>

using namespace testing_panel;

namespace {

struct Sleeper {
    DWORD milliseconds;
    DWORD wokenAt = 0;
};

DWORD sleepOnce(LPVOID parameter) {
    auto* sleeper = static_cast<Sleeper*>(parameter);
    Sleep(sleeper->milliseconds);
    sleeper->wokenAt = GetTickCount();
    return 0;
}

// How many threads of this process wait in the platform.
std::ptrdiff_t waitingThreads() {
    panel::Runtime& runtime = panel::Runtime::instance();
    const panel::Lock lock(runtime.image());
    return std::count_if(std::begin(runtime.image().threads), std::end(runtime.image().threads),
                         [&](const panel::ThreadRecord& thread) {
                             return thread.process == runtime.process() && thread.state == panel::ThreadState::waiting;
                         });
}

} // namespace

TEST(Clock, StandsStillWhileAThreadRuns) {
    static std::atomic<DWORD> passed{1};
    const HANDLE ended = CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            // Runs, and does not wait in the platform, until both others do. Moving time would free the sleeper.
            while (waitingThreads() < 2 && GetTickCount() == 0) {
            }
            passed = GetTickCount();
            return 0;
        },
        nullptr, 0, nullptr);
    Sleeper once{5000};
    const HANDLE sleeper = CreateThread(nullptr, 0, sleepOnce, &once, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(sleeper, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(ended, 0), WAIT_OBJECT_0); // ended before time could move
    EXPECT_EQ(passed, 0U);
    EXPECT_EQ(GetTickCount(), 5000U);
}
