// The window functions of <windows.h>: window classes, messages, the screen and input. Include <windows.h> instead of
// this file.
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
using HGDIOBJ = void*; // always a brush here

extern "C" {

// ---- Windows and messages -------------------------------------------------------------------------------------------

// A window procedure. It runs on the thread that created the window.
using WNDPROC = LRESULT(CALLBACK*)(HWND, UINT, WPARAM, LPARAM);

// A window class, as RegisterClassW takes it.
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
static_assert(sizeof(void*) != 4 || (sizeof(WNDCLASSW) == 40 && offsetof(WNDCLASSW, hInstance) == 16));

// WM_NCCREATE and WM_CREATE pass a pointer to this record in lParam.
struct CREATESTRUCTW {
    LPVOID lpCreateParams; // the last argument of CreateWindowExW
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
static_assert(sizeof(void*) != 4 || (sizeof(CREATESTRUCTW) == 48 && offsetof(CREATESTRUCTW, style) == 32));

struct POINT {
    LONG x;
    LONG y;
};

// A message, as GetMessageW stores it.
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time; // tick count when the message was posted
    POINT pt;
};
static_assert(sizeof(void*) != 4 || (sizeof(MSG) == 28 && offsetof(MSG, time) == 16));

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_GETMINMAXINFO = 0x0024;
inline constexpr UINT WM_SHOWWINDOW = 0x0018; // wParam: TRUE if the window becomes visible
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCCALCSIZE = 0x0083;
// Mouse messages carry x in the low and y in the high 16 bits of lParam, relative to the window's upper left corner.
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_USER = 0x0400;
// Window styles and extended window styles.
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_EX_TOPMOST = 0x8;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x80;
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000U);
inline constexpr int SM_CXSCREEN = 0; // pixels
inline constexpr int SM_CYSCREEN = 1;

// Returns a message number for this name, 0xC000 to 0xFFFF. All processes get the same number for the same name.
// Returns 0 on failure [ms911004].
UINT WINAPI RegisterWindowMessageW(LPCWSTR name) noexcept;
// Registers a window class for the calling process. Returns 0 on failure, with ERROR_CLASS_ALREADY_EXISTS if the name
// is taken.
ATOM WINAPI RegisterClassW(const WNDCLASSW* windowClass) noexcept;
// Fails with ERROR_CLASS_HAS_WINDOWS while the class has windows.
BOOL WINAPI UnregisterClassW(LPCWSTR className, HINSTANCE instance) noexcept;
// Creates a window that belongs to the calling thread. The window procedure gets its creation messages inside this
// call. Returns null on failure.
HWND WINAPI CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                            int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) noexcept;
// Destroys a window. Only the thread that created the window may call this.
BOOL WINAPI DestroyWindow(HWND window) noexcept;
// Handles a message as a window does by default. WM_CLOSE destroys the window. WM_NCCREATE returns 1, all other
// messages 0.
LRESULT WINAPI DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
// Waits for the next posted message of the calling thread and removes it. Returns TRUE for a message, FALSE for
// WM_QUIT, -1 on failure. While it waits, it runs the window procedures for messages that other threads send.
BOOL WINAPI GetMessageW(MSG* message, HWND window, UINT first, UINT last) noexcept;
// Translates key messages. A panel has no keyboard, so the call does nothing here.
BOOL WINAPI TranslateMessage(const MSG* message) noexcept;
// Calls the window procedure for a posted message and returns its result.
LRESULT WINAPI DispatchMessageW(const MSG* message) noexcept;
// Appends a message to the queue of the window's thread and returns at once. With a null window the message goes to the
// calling thread's queue. Fails with ERROR_NOT_ENOUGH_QUOTA if the queue is full.
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
// Returns the size of the screen in pixels for SM_CXSCREEN and SM_CYSCREEN, and 0 for other indexes.
int WINAPI GetSystemMetrics(int index) noexcept;

// ---- The screen -----------------------------------------------------------------------------------------------------

inline constexpr int SW_HIDE = 0;
inline constexpr int SW_SHOW = 5;
inline constexpr int WHITE_BRUSH = 0; // arguments of GetStockObject
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;

// Shows or hides a window. Returns whether the window was visible before.
BOOL WINAPI ShowWindow(HWND window, int command) noexcept;
// Repaints the window at once if a part of it needs painting.
BOOL WINAPI UpdateWindow(HWND window) noexcept;
// Increments or decrements the cursor count and returns the new count. The cursor is visible while the count is 0 or
// more.
int WINAPI ShowCursor(BOOL show) noexcept;
// Returns a predefined object, or null for an unknown number. Do not delete the object.
HGDIOBJ WINAPI GetStockObject(int object) noexcept;

// ---- Hooks ----------------------------------------------------------------------------------------------------------

struct HHOOK__;
using HHOOK = HHOOK__*;
// A hook procedure. For the mouse hook wParam is the message and lParam points to an MSLLHOOKSTRUCT. A non-zero result
// swallows the event: no window gets it.
using HOOKPROC = LRESULT(CALLBACK*)(int code, WPARAM wParam, LPARAM lParam);

// A mouse event, as the hook procedure gets it.
struct MSLLHOOKSTRUCT {
    POINT pt; // screen coordinates in pixels
    DWORD mouseData;
    DWORD flags;
    DWORD time; // tick count
    std::uintptr_t dwExtraInfo;
};

inline constexpr int WH_MOUSE_LL = 21; // the low-level mouse hook [dn529147]
inline constexpr int HC_ACTION = 0;

// Installs the low-level mouse hook. The thread id must be 0. Only one such hook can exist: returns null if a hook is
// already installed. The procedure runs on the calling thread, inside GetMessageW. Input waits until the procedure
// returns [dn529147].
HHOOK WINAPI SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept;
// Removes the hook. Events go straight to the windows again.
BOOL WINAPI UnhookWindowsHookEx(HHOOK hook) noexcept;
// Passes the event to the next hook in the chain. Always returns 0 here because only one hook exists.
LRESULT WINAPI CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam) noexcept;

} // extern "C"
