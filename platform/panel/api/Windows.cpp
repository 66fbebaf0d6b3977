// Windows, window classes and messages.
//
// A window belongs to the thread that created it. Its procedure runs on that thread only: in DispatchMessageW for a
// posted message, inside GetMessageW for a message that another thread has sent.
#include "platform/panel/Gate.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/api/WindowCalls.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Messages.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Screen.h"
#include "platform/panel/kernel/Wait.h"

#include <map>

using namespace panel;

namespace {

struct WindowClass {
    WNDPROC procedure;
    HBRUSH background;
    ATOM atom;
};

// The window classes of this process by folded name. Access needs the kernel's lock.
std::map<std::string, WindowClass> classes;
ATOM lastAtom = 0xBFFF;

WNDPROC procedureOf(const WindowRecord& window) {
    return reinterpret_cast<WNDPROC>(static_cast<std::uintptr_t>(window.procedure));
}

// noexcept: an exception that leaves the procedure ends the process, as it cannot pass through the platform's frames.
LRESULT callProcedure(WNDPROC procedure, std::uint32_t window, UINT message, std::uint64_t wParam,
                      std::int64_t lParam) noexcept {
    return procedure(windowOf(window), message, static_cast<WPARAM>(wParam), static_cast<LPARAM>(lParam));
}

} // namespace

namespace panel {

LRESULT callWindow(Gate& gate, std::uint32_t window, UINT message, std::uint64_t wParam, std::int64_t lParam) {
    WNDPROC procedure = nullptr;
    {
        const Lock lock(gate.image());
        const WindowRecord* record = messages::window(gate.image(), window);
        // The procedure's address is valid in its own process only.
        if (record && record->thread == gate.slot())
            procedure = procedureOf(*record);
    }
    gate.deliverWakes();
    return procedure ? callProcedure(procedure, window, message, wParam, lParam) : 0;
}

} // namespace panel

namespace {

// The window must still exist while its procedure handles the last two messages.
void destroy(Gate& gate, std::uint32_t window) {
    callWindow(gate, window, WM_DESTROY, 0, 0);
    callWindow(gate, window, WM_NCDESTROY, 0, 0);
    const Lock lock(gate.image());
    messages::removeWindow(gate.image(), window);
}

bool isOwn(Gate& gate, std::uint32_t window) {
    const WindowRecord* record = messages::window(gate.image(), window);
    return record && record->thread == gate.slot();
}

// Runs the procedure of a message that another thread has sent, and releases the sender.
void answerSent(Gate& gate, const messages::Message& sent) {
    const LRESULT result =
        sent.window ? callWindow(gate, sent.window, sent.message, sent.wParam, sent.lParam) : callHook(gate, sent);
    const Lock lock(gate.image());
    messages::reply(gate.image(), sent, result);
}

} // namespace

UINT RegisterWindowMessageW(LPCWSTR name) noexcept {
    Gate gate(Function::RegisterWindowMessageW, name);
    if (gate.faulted())
        return gate.fault<UINT>();
    const std::string text = toUtf8(name);
    if (text.empty())
        return gate.fails(UINT{0}, ERROR_INVALID_PARAMETER);
    const Lock lock(gate.image());
    const UINT number = messages::registerName(gate.image(), text, !gate.runtime.processRecord().driver);
    return number ? gate.done(number) : gate.fails(number, ERROR_NOT_ENOUGH_MEMORY);
}

ATOM RegisterClassW(const WNDCLASSW* windowClass) noexcept {
    Gate gate(Function::RegisterClassW, windowClass->lpszClassName, windowClass->hInstance);
    if (gate.faulted())
        return gate.fault<ATOM>();
    const std::string name = fold(toUtf8(windowClass->lpszClassName));
    if (name.empty() || name.size() >= sizeof WindowRecord::className || !windowClass->lpfnWndProc)
        return gate.fails(ATOM{0}, ERROR_INVALID_PARAMETER);
    const Lock lock(gate.image());
    const auto [entry, added] =
        classes.try_emplace(name, WindowClass{windowClass->lpfnWndProc, windowClass->hbrBackground, 0});
    if (!added)
        return gate.fails(ATOM{0}, ERROR_CLASS_ALREADY_EXISTS);
    entry->second.atom = ++lastAtom;
    return gate.done(entry->second.atom);
}

BOOL UnregisterClassW(LPCWSTR className, HINSTANCE instance) noexcept {
    Gate gate(Function::UnregisterClassW, className, instance);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const std::string name = toUtf8(className);
    const Lock lock(gate.image());
    const auto entry = classes.find(fold(name));
    if (entry == classes.end())
        return gate.fails(FALSE, ERROR_CLASS_DOES_NOT_EXIST);
    for (const WindowRecord& window : gate.image().windows)
        if (window.used && scheduler::at(gate.image(), window.thread).process == gate.process() &&
            equalCaseBlind(window.className, name))
            return gate.fails(FALSE, ERROR_CLASS_HAS_WINDOWS);
    classes.erase(entry);
    return gate.done(TRUE);
}

HWND CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style, int x, int y, int width,
                     int height, HWND parent, HMENU menu, HINSTANCE instance, LPVOID parameter) noexcept {
    Gate gate(Function::CreateWindowExW, trace::Hex{extendedStyle}, className, title, trace::Hex{style}, instance);
    if (gate.faulted())
        return gate.fault<HWND>();
    std::uint32_t window = 0;
    {
        const Lock lock(gate.image());
        const std::string name = toUtf8(className);
        const auto entry = classes.find(fold(name));
        if (entry == classes.end())
            return gate.fails(HWND{}, ERROR_CANNOT_FIND_WND_CLASS);
        window = messages::makeWindow(gate.image(), gate.slot(), name,
                                      reinterpret_cast<std::uintptr_t>(entry->second.procedure));
        if (!window)
            return gate.fails(HWND{}, ERROR_NOT_ENOUGH_MEMORY);
        WindowRecord& record = *messages::window(gate.image(), window);
        record.extendedStyle = extendedStyle;
        record.background = numberOf(static_cast<const void*>(entry->second.background));
        record.x = x == CW_USEDEFAULT ? 0 : x;
        record.y = x == CW_USEDEFAULT ? 0 : y;
        record.width = width == CW_USEDEFAULT ? 0 : width;
        record.height = width == CW_USEDEFAULT ? 0 : height;
    }
    CREATESTRUCTW create{parameter, instance,  menu,         parent, height, width, y, x, static_cast<LONG>(style),
                         title,     className, extendedStyle};
    const auto creation = reinterpret_cast<std::intptr_t>(&create);
    std::int32_t sizes[10] = {};
    callWindow(gate, window, WM_GETMINMAXINFO, 0, reinterpret_cast<std::intptr_t>(sizes));
    // A procedure refuses the creation by 0 for WM_NCCREATE or -1 for WM_CREATE.
    bool made = callWindow(gate, window, WM_NCCREATE, 0, creation) != 0;
    if (made) {
        callWindow(gate, window, WM_NCCALCSIZE, 0, reinterpret_cast<std::intptr_t>(sizes));
        made = callWindow(gate, window, WM_CREATE, 0, creation) != -1;
    }
    if (!made) {
        destroy(gate, window);
        return gate.fails(HWND{}, ERROR_NOT_ENOUGH_MEMORY);
    }
    if (style & WS_VISIBLE) {
        {
            const Lock lock(gate.image());
            if (WindowRecord* record = messages::window(gate.image(), window))
                screen::show(gate.image(), *record, true);
        }
        callWindow(gate, window, WM_SHOWWINDOW, TRUE, 0);
    }
    return gate.done(windowOf(window));
}

BOOL DestroyWindow(HWND window) noexcept {
    Gate gate(Function::DestroyWindow, window);
    if (gate.faulted())
        return gate.fault<BOOL>();
    {
        const Lock lock(gate.image());
        if (!messages::window(gate.image(), numberOf(window)))
            return gate.fails(FALSE, ERROR_INVALID_WINDOW_HANDLE);
        if (!isOwn(gate, numberOf(window)))
            return gate.fails(FALSE, ERROR_ACCESS_DENIED);
    }
    destroy(gate, numberOf(window));
    return gate.done(TRUE);
}

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    Gate gate(Function::DefWindowProcW, window, trace::Hex{message}, wParam);
    static_cast<void>(lParam); // not traced: it is often an address, which differs from run to run
    if (message == WM_CLOSE) {
        bool own = false;
        {
            const Lock lock(gate.image());
            own = isOwn(gate, numberOf(window));
        }
        if (own)
            destroy(gate, numberOf(window));
    }
    return gate.done<LRESULT>(message == WM_NCCREATE ? 1 : 0);
}

BOOL GetMessageW(MSG* message, HWND window, UINT first, UINT last) noexcept {
    Gate gate(Function::GetMessageW);
    if (gate.faulted())
        return gate.fault<BOOL>();
    Lock lock(gate.image());
    if (window && !isOwn(gate, numberOf(window)))
        return gate.fails(-1, ERROR_INVALID_WINDOW_HANDLE);
    for (;;) {
        messages::Message taken;
        // Sent messages come before posted ones. The procedure runs without the lock, since it calls the API.
        if (messages::takeSent(gate.image(), gate.slot(), taken)) {
            lock.release();
            answerSent(gate, taken);
            gate.deliverWakes();
            lock.acquire();
            continue;
        }
        if (messages::takePosted(gate.image(), gate.slot(), numberOf(window), first, last, taken)) {
            *message = {windowOf(taken.window),
                        taken.message,
                        static_cast<WPARAM>(taken.wParam),
                        static_cast<LPARAM>(taken.lParam),
                        taken.time,
                        {}};
            gate.shows(message->hwnd);
            gate.shows(trace::Hex{message->message});
            gate.shows(message->wParam);
            gate.shows(message->lParam);
            return gate.done(message->message == WM_QUIT ? FALSE : TRUE);
        }
        scheduler::at(gate.image(), gate.slot()).waitKind = WaitKind::message;
        block(lock, gate.image(), gate.slot(), never);
    }
}

BOOL TranslateMessage(const MSG* message) noexcept {
    Gate gate(Function::TranslateMessage, trace::Hex{message->message});
    return gate.done(FALSE); // the panel has no keyboard, so there is nothing to translate
}

LRESULT DispatchMessageW(const MSG* message) noexcept {
    Gate gate(Function::DispatchMessageW, message->hwnd, trace::Hex{message->message});
    return gate.done(callWindow(gate, numberOf(message->hwnd), message->message, message->wParam, message->lParam));
}

BOOL PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    Gate gate(Function::PostMessageW, window, trace::Hex{message}, wParam, lParam);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const messages::Message posted{numberOf(window), message, wParam, lParam, 0, 0, 0};
    if (!window) // without a window the message goes to the calling thread
        return messages::postToThread(gate.image(), gate.slot(), posted) ? gate.done(TRUE)
                                                                         : gate.fails(FALSE, ERROR_NOT_ENOUGH_QUOTA);
    if (!messages::window(gate.image(), numberOf(window)))
        return gate.fails(FALSE, ERROR_INVALID_WINDOW_HANDLE);
    return messages::post(gate.image(), posted) ? gate.done(TRUE) : gate.fails(FALSE, ERROR_NOT_ENOUGH_QUOTA);
}

int GetSystemMetrics(int index) noexcept {
    Gate gate(Function::GetSystemMetrics, index);
    const Lock lock(gate.image());
    const bool known = index == SM_CXSCREEN || index == SM_CYSCREEN;
    return gate.done(
        known ? static_cast<int>(index == SM_CXSCREEN ? gate.image().screenWidth : gate.image().screenHeight) : 0);
}
