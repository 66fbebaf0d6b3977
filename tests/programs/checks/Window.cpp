// A window procedure under the loader: what comes of 32-bit parameters, and of exceptions from posted and from sent
// messages. The test on the other side posts and sends.
#include "ipc/MessageOnlyWindow.h"
#include "tests/programs/checks/Check.h"

#include <windows.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace {

struct Handler : indev::MESSAGEHANDLER {
    explicit Handler(std::function<LRESULT(WPARAM, LPARAM)> body) : function(std::move(body)) {}
    LRESULT handleMessage(HWND, UINT, WPARAM wParam, LPARAM lParam) override {
        return function(wParam, lParam);
    }
    std::function<LRESULT(WPARAM, LPARAM)> function;
};

LRESULT CALLBACK letOut(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE)
        throw std::runtime_error("let out");
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

void checks::window() {
    std::string thrown;
    bool ended = false;
    MessageOnlyWindow window;
    Handler throws([](WPARAM wParam, LPARAM) -> LRESULT {
        throw std::runtime_error(std::to_string(wParam)); //
    });
    Handler differs([](WPARAM wParam, LPARAM lParam) -> LRESULT {
        CHECK(wParam == 0xFFFFFFFE);
        CHECK(lParam == -3);
        return lParam - 1;
    });
    Handler ends([&](WPARAM, LPARAM) -> LRESULT {
        ended = true;
        window.stop();
        return 1;
    });
    window.registerHandler(RegisterWindowMessageW(L"ChecksThrow"), &throws);
    window.registerHandler(RegisterWindowMessageW(L"ChecksWidth"), &differs);
    window.registerHandler(RegisterWindowMessageW(L"ChecksEnd"), &ends);
    window.create(L"PanelChecks");
    while (!ended)
        try {
            window.run();
        } catch (const std::runtime_error& failure) {
            thrown += failure.what();
        }
    CHECK(thrown == "1234");
}

void checks::escapeFromProcedure() {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = letOut;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = L"LetOut";
    RegisterClassW(&windowClass);
    try {
        CreateWindowExW(0, L"LetOut", nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    } catch (const std::runtime_error&) { // never: the platform's frames are in between
        CHECK(!"an exception passed the platform");
    }
}
