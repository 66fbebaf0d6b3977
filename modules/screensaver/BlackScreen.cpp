#include "modules/screensaver/BlackScreen.h"

#include "modules/screensaver/BlackScreenException.h"

namespace {

// The two messages let the thread of the window show and hide it, whichever thread asks.
constexpr UINT SHOW = WM_USER + 1;
constexpr UINT HIDE = WM_USER + 2;

// An empty name means that the class is not registered.
struct WindowClass {
    HINSTANCE instance = nullptr;
    std::wstring name;
};

// Only the main thread uses this variable.
WindowClass registered;

LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case SHOW:
        ShowCursor(FALSE);
        ShowWindow(window, SW_SHOW);
        return 0;
    case HIDE:
        ShowCursor(TRUE);
        ShowWindow(window, SW_HIDE);
        return 0;
    // The default procedure destroys the window on WM_CLOSE.
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

BlackScreen::BlackScreen(HINSTANCE instance, const std::wstring& className) {
    // The class stays registered until the process ends.
    if (!registered.name.empty()) {
        return;
    }
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = instance;
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    windowClass.lpszClassName = className.c_str();
    if (RegisterClassW(&windowClass) == 0) {
        throw BlackScreenException(L"Cannot register class");
    }
    registered = {instance, className};
}

BlackScreen::~BlackScreen() {
    destroy();
}

void BlackScreen::create() {
    const int width = GetSystemMetrics(SM_CXSCREEN);
    const int height = GetSystemMetrics(SM_CYSCREEN);
    // The window is created without WS_VISIBLE: it stays hidden until the first SHOW.
    window = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW, registered.name.c_str(), nullptr, WS_POPUP, 0, 0, width,
                             height, nullptr, nullptr, registered.instance, nullptr);
    if (window == nullptr) {
        throw BlackScreenException(L"Cannot create black screen window");
    }
    UpdateWindow(window);
}

void BlackScreen::show() {
    post(SHOW);
}

void BlackScreen::hide() {
    post(HIDE);
}

// The window is hidden before it is closed: the cursor must be visible again when the window is gone.
void BlackScreen::destroy() {
    post(HIDE);
    post(WM_CLOSE);
    window = nullptr;
}

void BlackScreen::post(UINT message) {
    // The handle may be cleared by another thread, so it is read once.
    if (const HWND existing = window) {
        PostMessageW(existing, message, 0, 0);
    }
}
