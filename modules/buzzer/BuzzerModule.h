#pragma once

#include "ipc/IPCMessageHandler.h"
#include "modules/IModule.h"

#include <cstdint>

class IPCDispatcher;
class TouchBuzzer;

// The touch buzzer as a module: while "TouchBuzzerConfig.xml" in the installation directory says so, each touch clicks
// for 50 ms at the frequency that the file names. A negative frequency there is replaced by the panel's own, in the
// file too. Command 1 of "ORVATarvexBuzzerMsg" reads the file again; 2 if that fails: the buzzer is then off.
//
// Deliberate: a buzzer that is there keeps its frequency; another one counts from the next time that it is switched on.
// A missing driver and a refused hook are not reported. For the main thread only, whose message loop the touches pass.
class BuzzerModule : public IModule, public IPCMessageHandler {
public:
    // A new module that the dispatcher hands its messages to. The caller owns it.
    static IModule* create(IPCDispatcher& dispatcher);

    BuzzerModule();
    BuzzerModule(const BuzzerModule&) = delete;
    BuzzerModule& operator=(const BuzzerModule&) = delete;
    // Switches the buzzer off.
    ~BuzzerModule() noexcept(false) override;

    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    std::uint32_t loadSettings();
    void apply();
    void switchOff();

    bool enabled = false;
    std::int32_t frequencyHz = 3400;
    TouchBuzzer* buzzer = nullptr; // owned
};
