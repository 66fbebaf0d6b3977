// The person in front of the panel: the power manager's events, touches, the mouse hook.
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <stdexcept>
#include <vector>

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

namespace {

struct Hooked {
    WPARAM message;
    POINT place;
};

std::vector<Hooked> hooked;
HHOOK hook;
HANDLE gate; // the procedure waits for it, if there is one
LRESULT verdict;

LRESULT CALLBACK hookProcedure(int code, WPARAM message, LPARAM event) {
    EXPECT_EQ(code, HC_ACTION);
    hooked.push_back({message, reinterpret_cast<const MSLLHOOKSTRUCT*>(event)->pt});
    if (gate)
        WaitForSingleObject(gate, INFINITE);
    const LRESULT next = CallNextHookEx(hook, code, message, event);
    return verdict ? verdict : next;
}

// A thread with a window over the left half of the screen, and the mouse hook; it ends with WM_QUIT.
class InputThread {
public:
    explicit InputThread(bool withHook) {
        ready = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        thread = CreateThread(nullptr, 0, run, this, 0, nullptr);
        EXPECT_EQ(WaitForSingleObject(ready, INFINITE), WAIT_OBJECT_0);
        if (withHook)
            panel::sendMessage(panel::findWindow("Left"), "0x401", 0, 0);
    }
    void quit() {
        panel::postMessage(panel::findWindow("Left"), "0x12", 0, 0);
        EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    }

    std::vector<MSG> received; // mouse messages of the window

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_USER + 1)
            hook = SetWindowsHookExW(WH_MOUSE_LL, hookProcedure, nullptr, 0);
        return DefWindowProcW(window, message, wParam, lParam);
    }
    static DWORD run(LPVOID parameter) {
        auto* const self = static_cast<InputThread*>(parameter);
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = procedure;
        windowClass.lpszClassName = L"Left";
        RegisterClassW(&windowClass);
        CreateWindowExW(0, L"Left", nullptr, WS_POPUP | WS_VISIBLE, 10, 20, 400, 460, nullptr, nullptr, nullptr,
                        nullptr);
        EventModify(self->ready, EVENT_SET);
        MSG message{};
        while (GetMessageW(&message, nullptr, 0, 0) == TRUE) {
            if (message.message >= WM_MOUSEMOVE && message.message <= WM_RBUTTONUP)
                self->received.push_back(message);
            DispatchMessageW(&message);
        }
        return 0;
    }

    HANDLE ready;
    HANDLE thread;
};

panel::Touch tapAt(std::int32_t x, std::int32_t y) {
    panel::Touch touch;
    touch.x = x;
    touch.y = y;
    return touch;
}

} // namespace

TEST(Touches, LandOnTheUppermostWindowAndMakeTheUserActive) {
    InputThread input(false);
    panel::setUserActive(false);
    Sleep(700);
    const panel::Landing landing = panel::touch(tapAt(15, 30));
    EXPECT_EQ(landing.window, "Left");
    EXPECT_EQ(landing.process, "TarvexHelper.exe#1");
    EXPECT_EQ(driver().status().userActive, true);
    EXPECT_EQ(panel::touch(tapAt(799, 0)).window, "");
    EXPECT_THROW(panel::touch(tapAt(800, 0)), std::runtime_error);
    panel::Touch right = tapAt(15, 30);
    right.right = true;
    right.kind = panel::Touch::Kind::press;
    panel::touch(right);
    right.kind = panel::Touch::Kind::move;
    panel::touch(right);
    input.quit();
    std::vector<UINT> messages;
    for (const MSG& message : input.received) {
        messages.push_back(message.message);
        EXPECT_EQ(message.lParam, 10 << 16 | 5); // from the window's corner
    }
    EXPECT_EQ(messages, (std::vector<UINT>{WM_LBUTTONDOWN, WM_LBUTTONUP, WM_RBUTTONDOWN, WM_MOUSEMOVE}));
    EXPECT_EQ(readText(panelDirectory() / "devices/touches"),
              "       700 press 15 30 on Left of TarvexHelper.exe#1\n"
              "       700 release 15 30 on Left of TarvexHelper.exe#1\n"
              "       700 press 799 0 on nothing\n"
              "       700 release 799 0 on nothing\n"
              "       700 right-press 15 30 on Left of TarvexHelper.exe#1\n"
              "       700 move 15 30 on Left of TarvexHelper.exe#1\n");
}

TEST(MouseHook, SeesEveryEventBeforeItLandsAndMayKeepIt) {
    InputThread input(true);
    ASSERT_NE(hook, nullptr);
    EXPECT_EQ(driver().status().hook, "TarvexHelper.exe#1");
    EXPECT_EQ(SetWindowsHookExW(WH_MOUSE_LL, hookProcedure, nullptr, 0), nullptr); // there is one
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    verdict = 1;
    EXPECT_EQ(panel::touch(tapAt(15, 30)).kind, panel::Landing::Kind::swallowed);
    EXPECT_TRUE(devices().touches().at(0).swallowed);
    verdict = 0;
    EXPECT_EQ(panel::touch(tapAt(700, 30)).kind, panel::Landing::Kind::landed);
    input.quit(); // its thread's end takes the hook with it
    EXPECT_TRUE(input.received.empty());
    ASSERT_EQ(hooked.size(), 4U);
    EXPECT_EQ(hooked[0].message, WM_LBUTTONDOWN);
    EXPECT_EQ(hooked[1].message, WM_LBUTTONUP);
    EXPECT_EQ(hooked[2].place.x, 700);
    EXPECT_EQ(hooked[2].place.y, 30);
    EXPECT_EQ(driver().status().hook, "");
    EXPECT_FALSE(UnhookWindowsHookEx(hook));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HOOK_HANDLE);
    EXPECT_EQ(panel::touch(tapAt(700, 30)).kind, panel::Landing::Kind::landed);
    EXPECT_EQ(hooked.size(), 4U);
}

TEST(MouseHook, HoldsTheInputUntilItsProcedureReturns) {
    InputThread input(true);
    panel::setUserActive(false);
    gate = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    panel::Touch touch = tapAt(15, 30);
    touch.limit = 3000;
    EXPECT_EQ(panel::touch(touch).kind, panel::Landing::Kind::unanswered);
    EXPECT_EQ(GetTickCount(), 3000U);
    EXPECT_EQ(driver().status().userActive, false);
    EXPECT_TRUE(devices().touches().empty());
    EventModify(gate, EVENT_SET);
    EXPECT_EQ(panel::touch(touch).kind, panel::Landing::Kind::landed);
    input.quit();
    EXPECT_EQ(input.received.size(), 2U);
}
