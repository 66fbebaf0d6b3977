// Visibility of windows, and the cursor.
#include "platform/panel/kernel/Screen.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/api/WindowCalls.h"
#include "platform/panel/kernel/Messages.h"

using namespace panel;

BOOL ShowWindow(HWND window, int command) noexcept {
    Gate gate(Function::ShowWindow, window, command);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const bool visible = command != SW_HIDE;
    bool before = false;
    {
        const Lock lock(gate.image());
        WindowRecord* record = messages::window(gate.image(), numberOf(window));
        if (!record)
            return gate.fails(FALSE, ERROR_INVALID_WINDOW_HANDLE);
        before = screen::show(gate.image(), *record, visible);
    }
    if (before != visible)
        callWindow(gate, numberOf(window), WM_SHOWWINDOW, visible, 0);
    return gate.done(before ? TRUE : FALSE);
}

BOOL UpdateWindow(HWND window) noexcept {
    Gate gate(Function::UpdateWindow, window);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    if (!messages::window(gate.image(), numberOf(window)))
        return gate.fails(FALSE, ERROR_INVALID_WINDOW_HANDLE);
    return gate.done(TRUE); // nothing to paint: a visible window always shows its background
}

int ShowCursor(BOOL show) noexcept {
    Gate gate(Function::ShowCursor, show);
    const Lock lock(gate.image());
    gate.image().cursorCount += show ? 1 : -1;
    return gate.done(int{gate.image().cursorCount});
}

HGDIOBJ GetStockObject(int object) noexcept {
    Gate gate(Function::GetStockObject, object);
    if (gate.faulted())
        return gate.fault<HGDIOBJ>();
    if (object < 0 || object > NULL_BRUSH) // the panel has only the brushes
        return gate.fails(HGDIOBJ{}, ERROR_INVALID_PARAMETER);
    return gate.done(static_cast<HGDIOBJ>(handleOf(firstStockObject + static_cast<std::uint32_t>(object))));
}
