#pragma once

#include "ipc/IPCMessageHandler.h"
#include "modules/IModule.h"

#include <cstdint>

class IPCDispatcher;
class TouchBuzzer;

// The touch buzzer as a module: while it is enabled, each touch of the panel clicks for 50 ms.
//
// The settings file "TouchBuzzerConfig.xml" in the installation directory says whether the buzzer is enabled and names
// the frequency in Hz. A negative frequency means the default of the panel's model; the module then writes the default
// into the file. If the file cannot be read, the buzzer is disabled.
//
// Command 1 of the message "ORVATarvexBuzzerMsg" reads the file again. It answers 0, or 2 if the file cannot be read.
// Every other command answers 1.
//
// Deliberate: a buzzer that is on keeps its frequency. A new frequency is used after the buzzer was switched off and on
// again. A missing driver and a mouse hook that cannot be installed are not reported.
//
// Only the main thread uses the module. Its message loop must run: the platform calls the mouse hook there.
class BuzzerModule : public IModule, public IPCMessageHandler {
public:
    // Creates a module and registers it with the dispatcher. The caller owns the module.
    static IModule* create(IPCDispatcher& dispatcher);

    // Reads the settings and switches the buzzer on if they enable it.
    BuzzerModule();
    BuzzerModule(const BuzzerModule&) = delete;
    BuzzerModule& operator=(const BuzzerModule&) = delete;
    // Switches the buzzer off.
    ~BuzzerModule() noexcept(false) override;

    // Carries out a command and logs it.
    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // Reads the file into the fields and returns the result of command 1.
    std::uint32_t loadSettings();
    // Switches the buzzer on or off, as `enabled` says.
    void apply();
    void switchOff();

    bool enabled = false;
    std::int32_t frequencyHz = 3400;
    TouchBuzzer* buzzer = nullptr; // owned; null while the buzzer is off
};
