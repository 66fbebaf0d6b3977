// The low-level mouse hook. The panel has one. Its procedure runs on the thread that installed it, inside GetMessageW.
// The input waits for the procedure's result.
#include "platform/panel/api/Numbers.h"
#include "platform/panel/api/WindowCalls.h"

using namespace panel;

namespace {

constexpr std::uint32_t hookShift = 4; // a hook handle is a serial above hookMark
constexpr std::uint32_t hookMark = 0xB; // low bits that no other handle has

HHOOK hookHandle(const HookRecord& hook) {
    return reinterpret_cast<HHOOK>(static_cast<std::uintptr_t>(hook.serial << hookShift | hookMark));
}

// noexcept: an exception that leaves the procedure ends the process, as it cannot pass through the platform's frames.
LRESULT callProcedure(HOOKPROC procedure, UINT message, const MSLLHOOKSTRUCT& event) noexcept {
    return procedure(HC_ACTION, message, reinterpret_cast<LPARAM>(&event));
}

} // namespace

namespace panel {

LRESULT callHook(Gate& gate, const messages::Message& sent) {
    HOOKPROC procedure = nullptr;
    {
        const Lock lock(gate.image());
        const HookRecord& hook = gate.image().mouseHook;
        if (hook.thread == gate.slot()) // otherwise the hook was removed meanwhile
            procedure = reinterpret_cast<HOOKPROC>(static_cast<std::uintptr_t>(hook.procedure));
    }
    gate.deliverWakes();
    const MSLLHOOKSTRUCT event{{static_cast<LONG>(sent.wParam), static_cast<LONG>(sent.lParam)}, 0, 0, sent.time, 0};
    return procedure ? callProcedure(procedure, sent.message, event) : 0;
}

} // namespace panel

HHOOK SetWindowsHookExW(int type, HOOKPROC procedure, HINSTANCE instance, DWORD threadId) noexcept {
    Gate gate(Function::SetWindowsHookExW, type, instance, threadId);
    if (gate.faulted())
        return gate.fault<HHOOK>();
    if (type != WH_MOUSE_LL || !procedure || threadId)
        return gate.fails(HHOOK{}, ERROR_INVALID_PARAMETER);
    const Lock lock(gate.image());
    HookRecord& hook = gate.image().mouseHook;
    if (hook.thread)
        return gate.fails(HHOOK{}, ERROR_ACCESS_DENIED);
    hook.thread = gate.slot();
    hook.procedure = reinterpret_cast<std::uintptr_t>(procedure);
    ++hook.serial;
    return gate.done(hookHandle(hook));
}

BOOL UnhookWindowsHookEx(HHOOK handle) noexcept {
    Gate gate(Function::UnhookWindowsHookEx, handle);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    HookRecord& hook = gate.image().mouseHook;
    if (!hook.thread || handle != hookHandle(hook))
        return gate.fails(FALSE, ERROR_INVALID_HOOK_HANDLE);
    hook.thread = 0;
    return gate.done(TRUE);
}

LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM wParam, LPARAM lParam) noexcept {
    Gate gate(Function::CallNextHookEx, hook, code, trace::Hex{wParam});
    static_cast<void>(lParam); // not traced: an address differs from run to run
    return gate.done(LRESULT{0}); // there is no next one
}
