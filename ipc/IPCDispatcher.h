#pragma once

#include "ipc/IPCMessageHandler.h"
#include "ipc/MessageHandlerAdapter.h"
#include "ipc/MessageOnlyWindow.h"

#include <list>
#include <memory>
#include <string>

// The dispatcher of registered window messages: it owns the window of class "ORVATarvexHelper" and knows a handler for
// each message name.
//
// Another process finds the window by its class name, gets the number of a message from RegisterWindowMessageW, and
// posts or sends the message. The dispatcher calls the handler of the message. If the message was sent, the sender
// receives the handler's result.
//
// The dispatcher itself handles "ORVATarvexMsg". Command 1 ends `run` and answers 0; every other command answers 1.
// After command 1 no handler is called again. If the window's message queue is full, command 1 has no effect although
// it answers 0: `run` continues, and handlers are still called.
//
// The main thread creates the object, registers the handlers, calls `run` and destroys the object. Handlers are called
// on the thread of `run`.
class IPCDispatcher : public IPCMessageHandler {
public:
    // Does not create the window: `run` creates it.
    IPCDispatcher();
    IPCDispatcher(const IPCDispatcher&) = delete;
    IPCDispatcher& operator=(const IPCDispatcher&) = delete;
    // Forgets the handlers and destroys the window.
    ~IPCDispatcher() noexcept override;

    // Registers the handler of the message with this name. Call it before `run`. A second handler for the same name
    // replaces the first one. The handler is not owned and must live until `run` has returned. If
    // RegisterWindowMessageW fails, the handler is registered for message 0 instead.
    void registerHandler(const std::wstring& name, IPCMessageHandler* handler);
    // Creates the window and serves all messages of the calling thread until command 1. Throws IPCDispatcherException
    // "Failed to register message only window class", "Failed to create message only window" or "Message loop already
    // running". An exception of a handler also ends `run`: `run` then throws an OrvaUtils::Exception unchanged, and a
    // standard exception as an IPCDispatcherException with the same text.
    void run();

    // Handles "ORVATarvexMsg" as described above. The message loop calls this.
    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // Ends the loop and forgets the handlers, unless the message queue is full.
    void terminate();

    std::unique_ptr<MessageOnlyWindow> messageWindow;
    // The adapters live as long as this object: the adapter that carries command 1 is in use while `terminate` runs.
    std::list<MessageHandlerAdapter> adapters;
};
