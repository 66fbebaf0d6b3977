// Windows and messages, within a process and between processes.
#include "platform/panel/Client.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <vector>

using namespace testing_panel;

namespace {

struct Received {
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    bool operator==(const Received&) const = default;
};

std::vector<Received> received;
std::atomic<int> answered{0};

LRESULT CALLBACK record(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message < 0xC000)
        lParam = message == WM_CREATE || message == WM_NCCREATE ? 1 : 0; // addresses say nothing
    received.push_back({message, wParam, lParam});
    if (message >= 0xC000) {
        ++answered;
        return static_cast<LRESULT>(2 * wParam);
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND makeWindow(const wchar_t* name) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = record;
    windowClass.lpszClassName = name;
    EXPECT_NE(RegisterClassW(&windowClass), 0);
    return CreateWindowExW(0, name, nullptr, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr,
                           nullptr, nullptr, nullptr);
}

BOOL nextMessage(MSG& message) {
    return GetMessageW(&message, nullptr, 0, 0);
}

} // namespace

TEST(Windows, AreCreatedAndDestroyedWithTheirMessages) {
    const HWND window = makeWindow(L"W");
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(received, (std::vector<Received>{{0x24, 0, 0}, {0x81, 0, 1}, {0x83, 0, 0}, {0x01, 0, 1}}));
    EXPECT_FALSE(UnregisterClassW(L"W", nullptr));
    EXPECT_EQ(GetLastError(), ERROR_CLASS_HAS_WINDOWS);
    received.clear();
    EXPECT_TRUE(PostMessageW(window, WM_CLOSE, 0, 0));
    MSG message{};
    EXPECT_EQ(nextMessage(message), TRUE);
    EXPECT_EQ(message.hwnd, window);
    EXPECT_EQ(message.message, WM_CLOSE);
    DispatchMessageW(&message); // the default procedure destroys the window
    EXPECT_EQ(received, (std::vector<Received>{{0x10, 0, 0}, {0x02, 0, 0}, {0x82, 0, 0}}));
    EXPECT_FALSE(DestroyWindow(window));
    EXPECT_FALSE(PostMessageW(window, 0x400, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(DispatchMessageW(&message), 0);
    EXPECT_TRUE(UnregisterClassW(L"w", nullptr));
    EXPECT_EQ(CreateWindowExW(0, L"W", nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_CANNOT_FIND_WND_CLASS);
}

TEST(Messages, ComeInOrderToTheirThreadAndQuitEndsTheLoop) {
    const HWND window = makeWindow(L"W");
    EXPECT_TRUE(PostMessageW(window, 0x401, 1, -2));
    EXPECT_TRUE(PostMessageW(nullptr, 0x402, 3, 4)); // to the thread
    EXPECT_TRUE(PostMessageW(window, WM_QUIT, 0, 0));
    MSG message{};
    EXPECT_EQ(nextMessage(message), TRUE);
    EXPECT_EQ(message.lParam, -2);
    EXPECT_EQ(nextMessage(message), TRUE);
    EXPECT_EQ(message.hwnd, nullptr);
    EXPECT_EQ(message.message, 0x402U);
    EXPECT_EQ(nextMessage(message), FALSE);
    EXPECT_EQ(GetMessageW(&message, reinterpret_cast<HWND>(0x99), 0, 0), -1);
}

TEST(Messages, SentOnesRunInsideGetMessageAndAreAnswered) {
    put("\\MMCMemory\\Actor.exe", programFile("Actor"));
    const HWND window = makeWindow(L"Server");
    const auto first = driver().start("\\MMCMemory\\Actor.exe", "send server M 1000");
    const auto second =
        driver().start("\\MMCMemory\\Actor.exe", "send SERVER M 1000 post Server M 500 post Server 0x12 1");
    received.clear();
    MSG message{};
    int posted = 0;
    while (nextMessage(message) == TRUE) {
        ++posted;
        DispatchMessageW(&message);
    }
    EXPECT_EQ(posted, 500);
    EXPECT_EQ(driver().waitForExit(second, 1000), 0U);
    while (!driver().exitCode(first)) { // its last messages may still be under way
        PostMessageW(window, WM_NULL, 0, 0);
        nextMessage(message);
        driver().settle();
    }
    EXPECT_EQ(driver().exitCode(first), 0U);
    EXPECT_EQ(answered, 2500);
}

TEST(Messages, ASenderIsNotLeftWaitingForAWindowThatGoes) {
    static std::optional<std::int64_t> answer = 1;
    const HWND window = makeWindow(L"Going");
    const HANDLE sender = CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            answer = panel::sendMessage(panel::findWindow("Going"), "0x500", 0, 0);
            return 0;
        },
        nullptr, 0, nullptr);
    driver().settle();
    EXPECT_TRUE(DestroyWindow(window));
    EXPECT_EQ(WaitForSingleObject(sender, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(answer, std::nullopt);
}
