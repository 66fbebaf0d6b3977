#pragma once

#include <windows.h>

#include <cstdint>

// A handler of registered window messages. Each module that takes commands is such a handler.
//
// Register the handler with IPCDispatcher. The message loop calls `handleMessage` on its own thread, the main thread,
// for one message at a time. The dispatcher does not own the handler.
class IPCMessageHandler {
public:
    // Handles one message. By convention `wParam` holds the command code and `lParam` its argument, a signed 32-bit
    // integer. Returns one of the values of CommandResult; a client that sends the message receives it, a client that
    // posts the message receives nothing. An exception that leaves the function ends the message loop, and then the
    // helper with exit code 1.
    virtual std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) = 0;
    // The destructor of a module may throw: see IModule.
    virtual ~IPCMessageHandler() noexcept(false) = default;
};

// The results of commands.
namespace CommandResult {
// The command was carried out.
inline constexpr std::uint32_t Done = 0;
// The handler does not know the command code.
inline constexpr std::uint32_t UnknownCommand = 1;
// The settings file of the module cannot be read.
inline constexpr std::uint32_t SettingsUnreadable = 2;
// The argument is out of range; nothing was changed.
inline constexpr std::uint32_t ArgumentOutOfRange = 3;
} // namespace CommandResult
