// Events, mutexes, critical sections, waits and handles, as the platform documents them.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Host.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace testing_panel;

namespace {

HANDLE startThread(LPTHREAD_START_ROUTINE entry, void* parameter = nullptr) {
    return CreateThread(nullptr, 0, entry, parameter, 0, nullptr);
}

} // namespace

TEST(Events, ManualStaysAutoIsTakenByOneWait) {
    const HANDLE manual = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE automatic = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForSingleObject(automatic, 250), WAIT_TIMEOUT);
    EXPECT_EQ(GetTickCount(), 250U);
    EventModify(manual, EVENT_SET);
    EventModify(automatic, EVENT_SET);
    EventModify(automatic, EVENT_SET); // collapses into the first
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(automatic, 0), WAIT_TIMEOUT);
    EventModify(manual, EVENT_RESET);
    EXPECT_EQ(WaitForSingleObject(manual, 0), WAIT_TIMEOUT);
}

TEST(Events, SmallestSignalledIndexWins) {
    HANDLE events[3];
    for (HANDLE& event : events)
        event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    EventModify(events[2], EVENT_SET);
    EventModify(events[1], EVENT_SET);
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, INFINITE), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, INFINITE), WAIT_OBJECT_0 + 2);
    EXPECT_EQ(WaitForMultipleObjects(3, events, FALSE, 5), WAIT_TIMEOUT);
    EXPECT_EQ(WaitForMultipleObjects(3, events, TRUE, 5), WAIT_FAILED); // wait-all is refused
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

// A killed thread may still sleep on the host when another thread has got its record.
TEST(Events, ASetReachesAThreadBehindASleeperThatHadItsRecord) {
    static HANDLE events[2];
    for (HANDLE& event : events)
        event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const auto wait = [](LPVOID) -> DWORD {
        for (const HANDLE event : events)
            WaitForSingleObject(event, INFINITE);
        return 0;
    };
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0, wait, nullptr, 0, &id);
    advance(0);
    panel::Image& image = panel::Runtime::instance().image();
    auto& record = *std::find_if(std::begin(image.threads), std::end(image.threads),
                                 [id](const panel::ThreadRecord& each) { return each.id == id; });
    std::atomic<int> sleeper = 0;
    std::thread other([&] {
        const std::uint32_t seen = record.word;
        sleeper = gettid();
        panel::host::futexWait(record.word, seen, panel::host::noLimit);
    });
    const auto sleeps = [&] {
        return readText("/proc/self/task/" + std::to_string(sleeper) + "/stat").find(") S ") != std::string::npos;
    };
    while (sleeper == 0 || !sleeps())
        std::this_thread::yield();
    for (const HANDLE event : events) {
        EventModify(event, EVENT_SET);
        advance(0);
    }
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    other.join();
}

TEST(Events, ASetReleasesOneWaiterFirstComeFirstServed) {
    static HANDLE event;
    static std::string released;
    event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    for (const char* name : {"a", "b", "c"}) {
        startThread(
            [](LPVOID own) -> DWORD {
                WaitForSingleObject(event, INFINITE);
                released += static_cast<const char*>(own);
                return 0;
            },
            const_cast<char*>(name));
        driver().settle(); // it waits now, behind those before it
    }
    for (const char* names : {"a", "ab", "abc"}) {
        EventModify(event, EVENT_SET);
        driver().settle();
        EXPECT_EQ(released, names);
    }
}

TEST(Events, NamesAreSharedCaseSensitiveAndOnePerType) {
    const HANDLE first = CreateEventW(nullptr, TRUE, FALSE, L"Name/one");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE again = CreateEventW(nullptr, TRUE, FALSE, L"Name/one");
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
    EXPECT_NE(first, again);
    const HANDLE other = CreateEventW(nullptr, TRUE, FALSE, L"name/one");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    const HANDLE mutex = CreateMutexW(nullptr, FALSE, L"Name/one");
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
    EXPECT_NE(mutex, nullptr);
    const HANDLE opened = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Name/one");
    EventModify(opened, EVENT_SET);
    EXPECT_EQ(WaitForSingleObject(first, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(again, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_TIMEOUT);
    for (const HANDLE handle : {first, again, opened})
        EXPECT_TRUE(CloseHandle(handle));
    EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, L"Name/one"), nullptr); // gone with its last holder
    EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, std::wstring(261, L'x').c_str()), nullptr);
    EXPECT_EQ(CreateEventW(nullptr, TRUE, FALSE, L"with\\backslash"), nullptr);

    CreateEventW(nullptr, TRUE, TRUE, nullptr);
    EXPECT_EQ(OpenEventW(EVENT_ALL_ACCESS, FALSE, L""), nullptr); // the empty name is another than none
    for (const DWORD error : {ERROR_SUCCESS, ERROR_ALREADY_EXISTS}) {
        EXPECT_NE(CreateEventW(nullptr, TRUE, FALSE, L""), nullptr);
        EXPECT_EQ(GetLastError(), error);
        EXPECT_NE(CreateMutexW(nullptr, FALSE, L""), nullptr);
        EXPECT_EQ(GetLastError(), error);
    }
    EXPECT_EQ(WaitForSingleObject(OpenEventW(EVENT_ALL_ACCESS, FALSE, L""), 0), WAIT_TIMEOUT);
}

TEST(Mutexes, BelongToOneThread) {
    static HANDLE mutex;
    mutex = CreateMutexW(nullptr, FALSE, L"m");
    EXPECT_FALSE(ReleaseMutex(mutex)); // not owned by anyone
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    const HANDLE thread = startThread([](LPVOID) -> DWORD { return WaitForSingleObject(mutex, INFINITE); });
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0); // ends with it
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
    EXPECT_TRUE(ReleaseMutex(mutex));
}

TEST(CriticalSections, AreRecursiveAndExcludeOthers) {
    static CRITICAL_SECTION section;
    static int counter;
    InitializeCriticalSection(&section);
    EnterCriticalSection(&section);
    EnterCriticalSection(&section);
    std::vector<HANDLE> threads;
    for (int index = 0; index < 4; ++index)
        threads.push_back(startThread([](LPVOID) -> DWORD {
            for (int round = 0; round < 500; ++round) {
                EnterCriticalSection(&section);
                ++counter;
                LeaveCriticalSection(&section);
            }
            return 0;
        }));
    driver().settle();
    LeaveCriticalSection(&section);
    driver().settle();
    EXPECT_EQ(counter, 0);
    LeaveCriticalSection(&section);
    for (const HANDLE thread : threads)
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(counter, 2000);
    DeleteCriticalSection(&section);
}

TEST(CriticalSections, AreSpoiltByALeaveOfAThreadThatDoesNotHoldThem) {
    static CRITICAL_SECTION section;
    const LPTHREAD_START_ROUTINE leave = [](LPVOID) -> DWORD { return LeaveCriticalSection(&section), 0; };
    const LPTHREAD_START_ROUTINE enter = [](LPVOID) -> DWORD { return EnterCriticalSection(&section), 0; };
    const LPTHREAD_START_ROUTINE leaveAndEnter = [](LPVOID) -> DWORD {
        LeaveCriticalSection(&section);
        EnterCriticalSection(&section);
        return 0;
    };
    const auto returns = [](LPTHREAD_START_ROUTINE entry) {
        return WaitForSingleObject(startThread(entry), 60000) == WAIT_OBJECT_0;
    };
    for (const bool held : {false, true}) {
        InitializeCriticalSection(&section);
        if (held)
            EnterCriticalSection(&section);
        startTrace();
        EXPECT_TRUE(returns(leave));
        if (held)
            LeaveCriticalSection(&section);
        const std::vector<std::string> calls = trace();
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "LeaveCriticalSection() = void not owned"), 1);
        EXPECT_EQ(std::count(calls.begin(), calls.end(), "LeaveCriticalSection() = void"), held);
        EXPECT_FALSE(returns(enter));
        EXPECT_FALSE(returns(leaveAndEnter)) << "not even the one who left it";
    }
    InitializeCriticalSection(&section);
    EXPECT_TRUE(returns(enter));
}

TEST(Handles, AreNeverSpecialNumbersAndNotSoonUsedAgain) {
    std::set<HANDLE> seen;
    for (int round = 0; round < 2000; ++round) {
        const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        ASSERT_NE(event, nullptr);
        EXPECT_NE(event, INVALID_HANDLE_VALUE);
        EXPECT_NE(reinterpret_cast<std::uintptr_t>(event), 66U);
        EXPECT_TRUE(seen.insert(event).second);
        EXPECT_TRUE(CloseHandle(event));
    }
    EXPECT_FALSE(CloseHandle(*seen.begin()));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
    EXPECT_EQ(WaitForSingleObject(nullptr, INFINITE), WAIT_FAILED);
}

TEST(Handles, RunOutWithAnErrorNotWithACrash) {
    HANDLE last = nullptr;
    while (const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr))
        last = event;
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(startThread([](LPVOID) -> DWORD { return ADD_FAILURE(), 0; }), nullptr);
    EXPECT_EQ(CreateFileW(L"\\f", GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CloseHandle(last));
    EXPECT_NE(CreateEventW(nullptr, FALSE, FALSE, nullptr), nullptr);
}

TEST(Waits, ClosingAHandleWakesNobodyAndAWaitKeepsItsObject) {
    static HANDLE event;
    event = CreateEventW(nullptr, TRUE, FALSE, L"kept");
    const HANDLE second = OpenEventW(EVENT_ALL_ACCESS, FALSE, L"kept");
    const HANDLE thread = startThread([](LPVOID) -> DWORD {
        WaitForSingleObject(event, INFINITE);
        return 0;
    });
    driver().settle();
    CloseHandle(event);
    EXPECT_EQ(WaitForSingleObject(thread, 100), WAIT_TIMEOUT);
    EventModify(second, EVENT_SET);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
}
