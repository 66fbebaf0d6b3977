#include "ipc/MessageOnlyWindow.h"
#include "OrvaUtils/Concurrency/ISystem.h"
#include "OrvaUtils/Exception.h"
#include "ipc/ICriticalSection.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"
#include "tests/unit/OtherThread.h"

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace testing_panel;
using OrvaUtils::Concurrency::getSystem;

namespace {

constexpr UINT GREETING = 0xC100;
constexpr UINT FAREWELL = 0xC101;

// Handles messages with a function and remembers the window that they came to.
struct Handler : indev::MESSAGEHANDLER {
    explicit Handler(std::function<LRESULT(UINT message, WPARAM wParam)> body) : function(std::move(body)) {}
    LRESULT handleMessage(HWND receiver, UINT message, WPARAM wParam, LPARAM) override {
        window = receiver;
        return function(message, wParam);
    }
    std::function<LRESULT(UINT, WPARAM)> function;
    HWND window = nullptr;
};

// A window that is created and whose handle is known.
struct KnownWindow : MessageOnlyWindow {
    explicit KnownWindow(const wchar_t* name = L"Known") {
        registerHandler(WM_CREATE, &creation);
        create(name);
        handle = creation.window;
    }
    void post(UINT message, WPARAM wParam = 0) {
        EXPECT_TRUE(PostMessageW(handle, message, wParam, 0));
    }
    Handler creation{[](UINT, WPARAM) { return 0; }};
    HWND handle;
};

std::string windowFailure(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "none";
}

// Whether a window class of that name is registered.
bool classExists(const wchar_t* name) {
    WNDCLASSW probe{};
    probe.lpfnWndProc = DefWindowProcW;
    probe.hInstance = GetModuleHandleW(nullptr);
    probe.lpszClassName = name;
    if (RegisterClassW(&probe) == 0) {
        return true;
    }
    UnregisterClassW(name, probe.hInstance);
    return false;
}

} // namespace

TEST(CriticalSection, KeepsStrayLeavesFromThePlatform) {
    const auto section = indev::createCriticalSection();
    startTrace();
    section->leave(); // nobody holds it
    ASSERT_EQ(trace().size(), 0U);
    section->enter();
    section->enter();
    std::atomic<bool> inside = false;
    OtherThread other([&] {
        section->leave();
        section->enter();
        inside = true;
        section->leave();
        section->leave();
    });
    section->leave();
    getSystem().sleep(100);
    EXPECT_FALSE(inside);
    section->leave();
    other.join();
    EXPECT_TRUE(inside);
    std::map<std::string, int> calls;
    for (const std::string& call : trace()) {
        EXPECT_EQ(call.find("not owned"), std::string::npos);
        ++calls[call.substr(0, call.find('('))];
    }
    EXPECT_EQ(calls["EnterCriticalSection"], 3);
    EXPECT_EQ(calls["LeaveCriticalSection"], 3);
}

TEST(MessageOnlyWindow, HandsMessagesToTheirLatestHandler) {
    KnownWindow window;
    std::string handled;
    Handler first([&](UINT, WPARAM) { return handled += "first ", 0; });
    Handler second([&](UINT message, WPARAM wParam) {
        handled += std::to_string(message) + ":" + std::to_string(wParam) + " ";
        return 0;
    });
    window.registerHandler(GREETING, &first);
    window.registerHandler(GREETING, &second);
    window.post(GREETING, 7);
    window.post(FAREWELL); // nobody's
    window.post(GREETING, 8);
    window.post(WM_CLOSE);
    window.post(GREETING, 9); // too late
    window.run();
    EXPECT_EQ(handled, "49408:7 49408:8 ");
    EXPECT_EQ(second.window, window.handle);
    EXPECT_FALSE(PostMessageW(window.handle, GREETING, 0, 0)) << "the default procedure destroyed the window";
}

TEST(MessageOnlyWindow, EndsItsLoopAlsoWhenItHandlesTheRequest) {
    KnownWindow window;
    Handler closing([&](UINT, WPARAM) {
        window.clearHandlers(); // also the one that runs
        return 0;
    });
    for (int round = 0; round < 2; ++round) {
        window.registerHandler(WM_CLOSE, &closing);
        window.post(WM_CLOSE);
        window.run();
    }
    window.post(WM_NULL);
    window.post(WM_CLOSE);
    window.run();
    EXPECT_FALSE(PostMessageW(window.handle, WM_NULL, 0, 0)) << "this time nobody kept it";
}

TEST(MessageOnlyWindow, CreatesOnceUntilItFails) {
    {
        MessageOnlyWindow window;
        failCall("RegisterClassW");
        EXPECT_EQ(windowFailure([&] { window.create(L"One"); }), "Failed to register message only window class");
        failCall("CreateWindowExW");
        EXPECT_EQ(windowFailure([&] { window.create(L"One"); }), "Failed to create message only window");
        EXPECT_FALSE(classExists(L"One"));
        failCall("CreateWindowExW");
        startTrace();
        EXPECT_EQ(windowFailure([&] { window.run(); }), "Failed to create message only window");
        const Lines registered = trace({"RegisterClassW"});
        ASSERT_EQ(registered.size(), 1U);
        EXPECT_TRUE(registered[0].starts_with("RegisterClassW(\"iMOW1\", ")) << registered[0];
        window.create(L"One");
        window.create(L"Two");
        EXPECT_TRUE(classExists(L"One"));
        EXPECT_FALSE(classExists(L"Two"));
    }
    EXPECT_FALSE(classExists(L"One"));
}

TEST(MessageOnlyWindow, WaitsForItsLoopAlsoWhenTheRequestIsRefused) {
    KnownWindow window;
    std::atomic<bool> returned = false;
    std::unique_ptr<OtherThread> other;
    Handler starting([&](UINT, WPARAM) {
        DestroyWindow(window.handle);
        other = std::make_unique<OtherThread>([&] {
            EXPECT_TRUE(window.stop());
            returned = true;
        });
        getSystem().sleep(100);
        EXPECT_FALSE(returned);
        PostMessageW(nullptr, WM_QUIT, 0, 0); // nothing else ends a loop without its window
        return 0;
    });
    window.registerHandler(GREETING, &starting);
    window.post(GREETING);
    window.run();
    other->join();
    EXPECT_TRUE(returned);
}

TEST(MessageOnlyWindow, IsNotStoppedWithoutAWindowOrWithoutRoomForTheRequest) {
    MessageOnlyWindow none;
    EXPECT_FALSE(none.stop());
    KnownWindow window;
    OtherThread other([&] {
        failCall("PostMessageW");
        EXPECT_FALSE(window.stop());
        EXPECT_TRUE(window.stop());
    });
    window.run();
}

TEST(MessageOnlyWindow, RunsOneLoopAtATime) {
    KnownWindow window;
    std::string nested;
    std::string elsewhere;
    Handler running([&](UINT, WPARAM) {
        nested = windowFailure([&] { window.run(); });
        OtherThread other([&] { elsewhere = windowFailure([&] { window.run(); }); });
        return 0;
    });
    window.registerHandler(GREETING, &running);
    window.post(GREETING);
    window.post(WM_CLOSE);
    window.run();
    EXPECT_EQ(nested, "Message loop already running");
    EXPECT_EQ(elsewhere, "Message loop already running");
}

TEST(MessageOnlyWindow, LetsRegistrationsWaitForHandlers) {
    KnownWindow window;
    std::atomic<bool> registered = false;
    bool waited = false;
    int farewells = 0;
    Handler late([&](UINT, WPARAM) { return ++farewells; });
    std::unique_ptr<OtherThread> other;
    Handler slow([&](UINT, WPARAM) {
        other = std::make_unique<OtherThread>([&] {
            window.registerHandler(FAREWELL, &late);
            registered = true;
            window.post(FAREWELL);
            window.stop();
        });
        getSystem().sleep(100);
        waited = !registered;
        return 0;
    });
    window.registerHandler(GREETING, &slow);
    window.post(GREETING);
    window.run();
    EXPECT_TRUE(waited);
    EXPECT_EQ(farewells, 1);
}

TEST(MessageOnlyWindow, LetsExceptionsOfPostedMessagesOut) {
    KnownWindow window;
    int thrown = 0;
    Handler throwing([&](UINT, WPARAM wParam) -> LRESULT {
        ++thrown;
        if (wParam == 0) {
            throw OrvaUtils::Exception(L"Out of paper");
        }
        throw std::out_of_range("Out of ink");
    });
    window.registerHandler(GREETING, &throwing);
    window.post(GREETING, 0);
    window.post(GREETING, 1);
    EXPECT_EQ(messageOf<OrvaUtils::Exception>([&] { window.run(); }), L"Out of paper");
    EXPECT_EQ(thrown, 1);
    EXPECT_EQ(windowFailure([&] { window.run(); }), "Out of ink") << "the loop can be entered again";
    // Nor is a lock held, or a loop thought to run: this would wait for ever.
    OtherThread other([&] {
        window.registerHandler(GREETING, &throwing);
        window.stop();
    });
    window.run();
    EXPECT_EQ(thrown, 2);
}

TEST(MessageOnlyWindow, KeepsTheFirstOfTwoExceptions) {
    KnownWindow window;
    Handler inner([](UINT, WPARAM) -> LRESULT { throw std::out_of_range("Out of ink"); });
    LRESULT answer = 99;
    Handler outer([&](UINT, WPARAM) -> LRESULT {
        const MSG message{window.handle, FAREWELL, 0, 0, 0, {0, 0}};
        answer = DispatchMessageW(&message);
        throw std::out_of_range("Out of paper");
    });
    window.registerHandler(GREETING, &outer);
    window.registerHandler(FAREWELL, &inner);
    window.post(GREETING);
    EXPECT_EQ(windowFailure([&] { window.run(); }), "Out of ink");
    EXPECT_EQ(answer, 0);
    window.post(WM_CLOSE);
    EXPECT_EQ(windowFailure([&] { window.run(); }), "none");
}

TEST(MessageOnlyWindow, IsNotCreatedWhenAHandlerOfItsCreationThrows) {
    MessageOnlyWindow window;
    Handler throwing([](UINT, WPARAM) -> LRESULT { throw std::out_of_range("Out of ink"); });
    window.registerHandler(WM_CREATE, &throwing);
    EXPECT_EQ(windowFailure([&] { window.create(L"Throwing"); }), "Failed to create message only window");
    EXPECT_FALSE(classExists(L"Throwing"));
    window.clearHandlers();
    window.create(L"Throwing");
    window.stop();
    EXPECT_EQ(windowFailure([&] { window.run(); }), "none");
}
