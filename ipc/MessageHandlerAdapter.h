#pragma once

#include "ipc/IPCMessageHandler.h"
#include "ipc/MessageHandler.h"

// Hands every message on to an IPCMessageHandler, which it does not own.
class MessageHandlerAdapter : public indev::MESSAGEHANDLER {
public:
    explicit MessageHandlerAdapter(IPCMessageHandler* handler) : target(handler) {}

    LRESULT handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override {
        return static_cast<LRESULT>(target->handleMessage(window, message, wParam, lParam));
    }

private:
    IPCMessageHandler* target;
};
