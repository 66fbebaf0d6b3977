#pragma once

#include "ipc/IPCMessageHandler.h"
#include "ipc/MessageHandlerAdapter.h"
#include "ipc/MessageOnlyWindow.h"

#include <list>
#include <memory>
#include <string>

// The dispatcher of registered window messages: it owns the window of class "ORVATarvexHelper" and a table of handlers.
//
// Other processes find the window by its class name, register a message name with RegisterWindowMessageW, and post or
// send that message. The dispatcher calls the handler of the message and answers a sent message with the handler's
// result.
//
// The dispatcher itself handles "ORVATarvexMsg". Command 1 ends `run` and answers 0; every other command answers 1.
// After command 1 no handler is called again. If the window's message queue is full, command 1 answers 0, but `run`
// continues and so do the handlers.
//
// The main thread creates the object, registers the handlers, calls `run` and destroys the object. Handlers are called
// on the thread of `run`.
class IPCDispatcher : public IPCMessageHandler {
public:
    // Creates no window yet: `run` does.
    IPCDispatcher();
    IPCDispatcher(const IPCDispatcher&) = delete;
    IPCDispatcher& operator=(const IPCDispatcher&) = delete;
    // Calls no handler any more and destroys the window.
    ~IPCDispatcher() noexcept override;

    // Lets a handler answer the messages of a name. Call it before `run`. A second handler for the same name replaces
    // the first one. The handler is not owned and must live until `run` has returned. If the platform cannot register
    // the name, the handler gets message 0.
    void registerHandler(const std::wstring& name, IPCMessageHandler* handler);
    // Creates the window and serves all messages of the calling thread until command 1. Throws IPCDispatcherException
    // "Failed to register message only window class", "Failed to create message only window" or "Message loop already
    // running". An exception of a handler also ends `run`: an OrvaUtils::Exception comes out unchanged, a standard
    // exception as an IPCDispatcherException with the same text.
    void run();

    // Handles "ORVATarvexMsg" as described above. The message loop calls it.
    std::uint32_t handleMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    // Ends the loop and forgets the handlers, unless the message queue is full.
    void terminate();

    std::unique_ptr<MessageOnlyWindow> messageWindow;
    // The adapters live as long as this object: the adapter that carries command 1 is in use while `terminate` runs.
    std::list<MessageHandlerAdapter> adapters;
};
