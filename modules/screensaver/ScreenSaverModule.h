#pragma once

#include "ipc/IPCMessageHandler.h"
#include "modules/IModule.h"

#include <cstdint>

class IPCDispatcher;
class ScreenSaver;

// The screen saver as a module: has one or none, as "ScreenSaverConfig.xml" in the installation directory says, and
// answers the commands of "ORVATarvexScreenSaverMsg":
//
//     1             reads the file again; 2 if that fails: then it is off
//     2 (0, other)  removes the screen saver; makes one if there is none, with its own defaults: 60 s, black screen
//     3 (ms)        the time-out; 3 unless it is above 0
//     4 (0 to 255)  the level; 3 otherwise
//     5 (0, other)  disables it; enables it and saves the screen at once
//
// What 3 to 5 change is kept in memory until the file is read again; 3 and 4 also remove a screen saver that only
// command 2 has made. For the main thread only. Nothing of what a ScreenSaver throws is caught.
class ScreenSaverModule : public IModule, public IPCMessageHandler {
public:
    // A new module that the dispatcher hands its messages to. The caller owns it.
    static IModule* create(IPCDispatcher& dispatcher);

    ScreenSaverModule();
    ScreenSaverModule(const ScreenSaverModule&) = delete;
    ScreenSaverModule& operator=(const ScreenSaverModule&) = delete;
    // Removes the screen saver, which restores the screen.
    ~ScreenSaverModule() noexcept(false) override;

    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    std::uint32_t carryOut(DWORD command, std::int32_t argument);
    std::uint32_t loadSettings();
    void apply();
    void make();
    void remove();
    void engage();

    ScreenSaver* screenSaver = nullptr; // owned
    std::uint32_t timeout = 0; // ms
    std::int32_t level = 0; // 0: the black screen; above 255 only if the file says so
    bool enabled = false;
};
