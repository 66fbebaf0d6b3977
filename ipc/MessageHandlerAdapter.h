#pragma once

#include "ipc/IPCMessageHandler.h"
#include "ipc/MessageHandler.h"

// Adapts an IPCMessageHandler to the MESSAGEHANDLER interface: it forwards every message unchanged and returns the
// handler's result. It does not own the handler.
class MessageHandlerAdapter : public indev::MESSAGEHANDLER {
public:
    explicit MessageHandlerAdapter(IPCMessageHandler* handler) : target(handler) {}

    LRESULT handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override {
        return static_cast<LRESULT>(target->handleMessage(window, message, wParam, lParam));
    }

private:
    IPCMessageHandler* target;
};
