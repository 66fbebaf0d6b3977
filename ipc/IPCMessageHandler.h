#pragma once

#include <windows.h>

#include <cstdint>

// Answers a registered message.
//
// The message loop calls `handleMessage` on its own thread, one message of all handlers at a time. By convention the
// command code is in `wParam` and its argument, a signed 32-bit integer, in `lParam`; the results are those of
// CommandResult. The result is what a client receives that sends the message and waits. The handler is not owned by
// whoever calls it.
class IPCMessageHandler {
public:
    virtual std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) = 0;
    virtual ~IPCMessageHandler() noexcept(false) = default; // a module's may throw
};

namespace CommandResult {
inline constexpr std::uint32_t Done = 0;
inline constexpr std::uint32_t UnknownCommand = 1;
inline constexpr std::uint32_t SettingsUnreadable = 2;
inline constexpr std::uint32_t ArgumentOutOfRange = 3;
} // namespace CommandResult
