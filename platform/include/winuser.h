// The part of <windows.h> about windows: classes, messages, the screen, input. Include <windows.h>, which includes it.
#pragma once

struct HWND__;
struct HMENU__;
struct HICON__;
struct HBRUSH__;
using HWND = HWND__*;
using HMENU = HMENU__*;
using HICON = HICON__*;
using HCURSOR = HICON;
using HBRUSH = HBRUSH__*;
using HGDIOBJ = void*; // a brush, here

extern "C" {

// ---- Windows and messages -------------------------------------------------------------------------------------------

using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    LPCWSTR lpszMenuName;
    LPCWSTR lpszClassName;
};
static_assert(sizeof(void*) != 4 || sizeof(WNDCLASSW) == 40);

struct CREATESTRUCTW {
    LPVOID lpCreateParams; // CreateWindowExW's last argument
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy;
    int cx;
    int y;
    int x;
    LONG style;
    LPCWSTR lpszName;
    LPCWSTR lpszClass;
    DWORD dwExStyle;
};
static_assert(sizeof(void*) != 4 || sizeof(CREATESTRUCTW) == 48);

struct POINT {
    LONG x;
    LONG y;
};

struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; // ticks
    POINT pt;
};
static_assert(sizeof(void*) != 4 || sizeof(MSG) == 28);

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_GETMINMAXINFO = 0x0024;
inline constexpr UINT WM_SHOWWINDOW = 0x0018; // wParam: becomes visible
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCCALCSIZE = 0x0083;
inline constexpr UINT WM_MOUSEMOVE = 0x0200; // lParam: x in the low, y in the high 16 bits, from the window's corner
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_EX_TOPMOST = 0x8;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x80;
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000U);
inline constexpr int SM_CXSCREEN = 0; // pixels
inline constexpr int SM_CYSCREEN = 1;

// 0xC000 to 0xFFFF, the same for the same name in every process; 0 on failure [ms911004].
UINT WINAPI RegisterWindowMessageW(LPCWSTR name) noexcept;
ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass) noexcept;
BOOL WINAPI UnregisterClassW(LPCWSTR className, HINSTANCE instance) noexcept;
HWND WINAPI CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) noexcept;
BOOL WINAPI DestroyWindow(HWND window) noexcept; // only by the thread that made it
LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
// TRUE: a posted message; FALSE: WM_QUIT; -1: failure. Runs the procedures of sent messages inside.
BOOL WINAPI GetMessageW(MSG* message, HWND window, UINT first, UINT last) noexcept;
BOOL WINAPI TranslateMessage(const MSG* message) noexcept;
LRESULT WINAPI DispatchMessageW(const MSG* message) noexcept;
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
int WINAPI GetSystemMetrics(int index) noexcept;

// ---- The screen -----------------------------------------------------------------------------------------------------

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOW = 5;
inline constexpr int WHITE_BRUSH = 0; // objects of GetStockObject
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;

BOOL WINAPI ShowWindow(HWND window, int command) noexcept; // whether it was visible before
BOOL WINAPI UpdateWindow(HWND window) noexcept; // paints at once what is to be painted
// Counts up or down; the cursor is shown while the count is not below 0. Answers the new count.
int WINAPI ShowCursor(BOOL show) noexcept;
HGDIOBJ WINAPI GetStockObject(int object) noexcept; // not to be deleted

// ---- Hooks ----------------------------------------------------------------------------------------------------------

struct HHOOK__;
using HHOOK = HHOOK__*;
// Of the mouse hook: wParam is the message, lParam points to an MSLLHOOKSTRUCT. Non-zero keeps the event from windows.
using HOOKPROC = LRESULT(CALLBACK*)(int code, WPARAM wParam, LPARAM lParam);

struct MSLLHOOKSTRUCT {
    POINT pt; // pixels of the screen
    DWORD mouseData;
    DWORD flags;
    DWORD time; // ticks
    std::uintptr_t dwExtraInfo;
};

inline constexpr int WH_MOUSE_LL = 21; // the low-level mouse hook [dn529147]
inline constexpr int HC_ACTION = 0;

// One low-level mouse hook at a time: null if there is one. The thread id must be 0. The procedure runs on the calling
// thread, inside GetMessageW, and input waits until it returns [dn529147].
HHOOK WINAPI SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept;
BOOL WINAPI UnhookWindowsHookEx(HHOOK hook) noexcept;
LRESULT WINAPI CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam) noexcept;

} // extern "C"
