// The stack that the platform gives, and memory that must not be written to.
#include "tests/programs/checks/Check.h"
#include "tests/programs/checks/Team.h"

#include <windows.h>

#include <cstdio>
#include <cstring>

namespace {

// Numbers of 64 bits among unnamed arguments lie at multiples of 8, which the callee takes from the address itself.
void formatOnStack() {
    char text[64];
    std::snprintf(text, sizeof text, "%d %d %d %lld %d %lld", 1, 2, 3, 0x123456789ALL, 4, -1LL);
    CHECK(std::strcmp(text, "1 2 3 78187493530 4 -1") == 0);
}

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    formatOnStack();
    return DefWindowProcW(window, message, wParam, lParam);
}

HWND made = nullptr;

LRESULT CALLBACK hookProcedure(int code, WPARAM wParam, LPARAM lParam) {
    formatOnStack();
    PostMessageW(made, WM_CLOSE, 0, 0); // the loop has something to come back with
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

const char constant[] = "constant";

void write(const void* target) {
    *const_cast<volatile char*>(static_cast<const volatile char*>(target)) = 'X';
}

} // namespace

void checks::stack() {
    formatOnStack();
    onThreads(2, [](unsigned) { formatOnStack(); });
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    for (const wchar_t* name : {L"First", L"Second"}) {
        windowClass.lpszClassName = name;
        CHECK(RegisterClassW(&windowClass) != 0);
        made = CreateWindowExW(0, name, nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, windowClass.hInstance, nullptr);
        CHECK(made != nullptr);
        CHECK(DestroyWindow(made));
    }
    // The test on the other side touches.
    made = CreateWindowExW(0, L"First", nullptr, 0, 0, 0, 0, 0, nullptr, nullptr, windowClass.hInstance, nullptr);
    const HHOOK hook = SetWindowsHookExW(WH_MOUSE_LL, hookProcedure, windowClass.hInstance, 0);
    CHECK(hook != nullptr);
    MSG message;
    CHECK(GetMessageW(&message, nullptr, 0, 0) > 0);
    CHECK(UnhookWindowsHookEx(hook));
    CHECK(DestroyWindow(made));
}

void checks::writeConstant() {
    write(constant);
}

void checks::writeCode() {
    write(reinterpret_cast<const void*>(&formatOnStack));
}
