#pragma once

#include "ipc/IPCMessageHandler.h"
#include "ipc/MessageHandlerAdapter.h"
#include "ipc/MessageOnlyWindow.h"

#include <list>
#include <memory>
#include <string>

// The helper's ear: the window of class "ORVATarvexHelper", to which other processes post and send registered messages,
// and the table of who answers which.
//
// Handlers register before `run`; from then on they are called on the thread of `run` (see IPCMessageHandler). The
// dispatcher itself answers "ORVATarvexMsg": command 1 ends `run`, every other is unknown.
class IPCDispatcher : public IPCMessageHandler {
public:
    IPCDispatcher();
    IPCDispatcher(const IPCDispatcher&) = delete;
    IPCDispatcher& operator=(const IPCDispatcher&) = delete;
    ~IPCDispatcher() noexcept override;

    // Lets the handler, which is not owned, answer the registered message of that name. A name that the platform cannot
    // register counts as message 0.
    void registerHandler(const std::wstring& name, IPCMessageHandler* handler);
    // Makes the window and serves messages until command 1. Throws IPCDispatcherException when the window or the loop
    // fails; what a handler throws comes out too, a standard exception as an IPCDispatcherException.
    void run();

    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    void terminate();

    std::unique_ptr<MessageOnlyWindow> messageWindow;
    std::list<MessageHandlerAdapter> adapters; // live until the end: one of them carries command 1
};
