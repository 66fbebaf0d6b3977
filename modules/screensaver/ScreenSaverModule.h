#pragma once

#include "ipc/IPCMessageHandler.h"
#include "modules/IModule.h"

#include <cstdint>

class IPCDispatcher;
class ScreenSaver;

// The screen saver as a module: it creates or removes the ScreenSaver, as the settings file "ScreenSaverConfig.xml" in
// the installation directory and the commands of the message "ORVATarvexScreenSaverMsg" say.
//
//     command  argument  action                                                       answer
//     1        -         reads the file again                                         0, or 2: file unreadable
//     2        0         removes the screen saver                                     0
//     2        not 0     creates a screen saver with its defaults, unless one exists  0
//     3        ms        sets the time-out                                            0, or 3: not above 0
//     4        0 to 255  sets the level; 0 is the black window                        0, or 3: out of range
//     5        0         disables the screen saver and removes it                     0
//     5        not 0     enables the screen saver and engages it at once              0
//     others   -         nothing                                                      1
//
// If the file cannot be read, the screen saver is disabled. Commands 3 to 5 change the settings in memory only; reading
// the file again replaces them. Command 2 does not change the setting `Enabled`. Two consequences: while `Enabled` is
// 0, commands 3 and 4 remove a screen saver that command 2 has created. While `Enabled` is 1, command 5 does not create
// a screen saver that command 2 has removed.
//
// Only the main thread uses the module. Exceptions of ScreenSaver pass through: they end the helper.
class ScreenSaverModule : public IModule, public IPCMessageHandler {
public:
    // Creates a module and registers it with the dispatcher. The caller owns the module.
    static IModule* create(IPCDispatcher& dispatcher);

    // Reads the settings and creates the screen saver if they enable it.
    ScreenSaverModule();
    ScreenSaverModule(const ScreenSaverModule&) = delete;
    ScreenSaverModule& operator=(const ScreenSaverModule&) = delete;
    // Removes the screen saver, which restores the screen.
    ~ScreenSaverModule() noexcept(false) override;

    // Carries out a command and logs it.
    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    std::uint32_t carryOut(DWORD command, std::int32_t argument);
    // Reads the file into the fields and returns the result of command 1.
    std::uint32_t loadSettings();
    // Creates, configures or removes the screen saver, as the fields say.
    void apply();
    // Creates a screen saver with its defaults, unless there is one.
    void make();
    void remove();
    // Enables the screen saver and engages it.
    void engage();

    ScreenSaver* screenSaver = nullptr; // owned; null: there is none
    std::uint32_t timeout = 0; // ms
    std::int32_t level = 0; // 0: the black window; above 255 only if the file says so
    bool enabled = false;
};
