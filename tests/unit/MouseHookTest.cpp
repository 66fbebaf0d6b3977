#include "modules/buzzer/MouseHook.h"
#include "OrvaUtils/Exception.h"
#include "app/log/Logger.h"
#include "ipc/MessageOnlyWindow.h"
#include "tests/support/TestPanel.h"
#include "tests/support/Touches.h"
#include "tests/unit/OtherThread.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

using namespace testing_panel;

namespace {

// The thread that has the hook, and a message loop that touches pass; the test's own drives the clock.
class HookThread : indev::MESSAGEHANDLER {
public:
    HookThread() : thread([this] { serve(); }) {
        EXPECT_TRUE(driver().waitUntil([this] { return window != nullptr; }, 1000));
    }
    ~HookThread() override {
        perform([] { MouseHook::instance().uninstall(); });
        loop->stop();
    }

    // Runs a function there.
    void perform(std::function<void()> function) {
        done = false;
        task = std::move(function);
        PostMessageW(window, WORK, 0, 0);
        EXPECT_TRUE(driver().waitUntil([this] { return done.load(); }, 60000));
    }

    bool install() {
        bool installed = false;
        perform([&] { installed = MouseHook::instance().install(); });
        return installed;
    }

private:
    static constexpr UINT WORK = 0xC100;

    void serve() {
        MouseHook::instance();
        MessageOnlyWindow messages;
        messages.registerHandler(WM_CREATE, this);
        messages.registerHandler(WORK, this);
        loop = &messages;
        messages.run();
    }

    LRESULT handleMessage(HWND receiver, UINT message, WPARAM, LPARAM) override {
        if (message == WM_CREATE) {
            window = receiver;
        } else {
            task();
            done = true;
        }
        return 0;
    }

    std::function<void()> task;
    std::atomic<bool> done = false;
    std::atomic<HWND> window = nullptr;
    MessageOnlyWindow* loop = nullptr;
    OtherThread thread;
};

// Counts its notifications, and then does what it was given to do.
struct PressObserver : MouseHookObserver {
    ~PressObserver() override {
        MouseHook::instance().removeObserver(this); // threads that are left may notify while the process ends
    }
    void notify(int& value) override {
        EXPECT_EQ(value, 0);
        value = 7; // which nobody else gets to see
        ++heard;
        if (action) {
            action();
        }
    }
    unsigned heard = 0; // touch threads write it while the test waits
    std::function<void()> action;
};

void press() {
    panel::touch(leftPress);
    driver().settle();
}

} // namespace

TEST(MouseHook, LeavesAThreadBehindForEachInstallation) {
    PressObserver observer;
    HookThread hook;
    hook.perform([&] { MouseHook::instance().addObserver(&observer); });
    startTrace();
    for (int round = 0; round < 10; ++round) {
        ASSERT_TRUE(hook.install());
        hook.perform([] { EXPECT_TRUE(MouseHook::instance().uninstall()); });
    }
    ASSERT_TRUE(hook.install());
    EXPECT_EQ(trace({"CreateThread"}).size(), 11U);
    EXPECT_EQ(trace({"CloseHandle"}).size(), 10U) << "none of their handles but the last one";
    for (int index = 0; index < 30; ++index) {
        observer.heard = 0;
        press();
        EXPECT_EQ(observer.heard, 1U);
    }
}

TEST(MouseHook, WaitsForAnObserverThatIsRemovedWhileItIsNotified) {
    HookThread hook;
    MouseHook& mouse = MouseHook::instance();
    const struct {
        DWORD notification; // ms
        bool unhooks;
        DWORD waits; // ms
    } cases[] = {{995, true, 1000}, {30000, true, 20000}, {995, false, 100}};
    for (const auto& each : cases) {
        PressObserver observer;
        observer.action = [&] { Sleep(each.notification); };
        hook.perform([&] {
            mouse.addObserver(&observer);
            mouse.install();
        });
        press();
        const DWORD begin = GetTickCount();
        hook.perform([&] {
            failCall("UnhookWindowsHookEx", each.unhooks ? 2 : 1);
            EXPECT_EQ(mouse.uninstall(), each.unhooks);
            mouse.removeObserver(&observer);
            driver().clearFaults();
        });
        EXPECT_EQ(GetTickCount() - begin, each.waits);
        advance(30000);
        EXPECT_EQ(observer.heard, 1U);
    }
}

TEST(MouseHook, LogsWhatAnObserverThrowsAndEndsThatThread) {
    writeFile("\\Log\\unrelated", "");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    PressObserver observer;
    observer.action = [] { throw OrvaUtils::Exception(L"No click"); };
    HookThread hook;
    hook.perform([&] { MouseHook::instance().addObserver(&observer); });
    ASSERT_TRUE(hook.install());
    press();
    press();
    EXPECT_EQ(observer.heard, 1U) << "nobody waits for the second one";
    observer.action = [] { throw std::runtime_error("no"); };
    hook.perform([] { MouseHook::instance().uninstall(); });
    ASSERT_TRUE(hook.install()); // with a thread of its own, which finds the second one
    driver().settle();
    EXPECT_EQ(observer.heard, 2U);
    const std::string log = readFile("\\Log\\log.txt");
    EXPECT_NE(log.find(";ERROR;No click\n"), std::string::npos) << log;
    EXPECT_NE(log.find(";ERROR;Generic exception\n"), std::string::npos) << log;
}
