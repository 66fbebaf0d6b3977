#pragma once

#include "ipc/MessageHandler.h"

#include <windows.h>

#include <memory>
#include <string>

// A hidden window of a named class, found by that name from other processes, and the message loop of its thread.
//
// One thread creates the window, runs its loop and, when `run` has returned, destroys the object: the platform hands a
// window's messages only to the thread that made it, and only that one can destroy it. `registerHandler`,
// `clearHandlers` and `stop` may be called from any thread while the object is there. It may go before the `stop` that
// has ended its loop returns, but not while another `stop` begins.
// Handlers run on the loop's thread, one at a time, and never while another thread registers.
//
// Failures are standard exceptions: "Failed to register message only window class", "Failed to create message only
// window", "Message loop already running". An exception that leaves a handler ends `run` and comes out of it, also when
// the message was sent by another thread or process, which then receives 0. One that leaves the handler of WM_CREATE is
// lost: the window cannot be created.
class MessageOnlyWindow {
public:
    MessageOnlyWindow();
    MessageOnlyWindow(const MessageOnlyWindow&) = delete;
    MessageOnlyWindow& operator=(const MessageOnlyWindow&) = delete;
    // Destroys the window, unless it is gone already, and its class.
    ~MessageOnlyWindow();

    // Registers the class and makes the window, once: a second call does nothing, whatever its name. After a failure
    // there is neither, and it may be called again.
    void create(const std::wstring& className);
    // Binds a message to a handler, which is not owned; an earlier handler of that message is replaced.
    void registerHandler(UINT message, indev::MESSAGEHANDLER* handler);
    // Forgets all handlers: the platform's default procedure answers every message from now on.
    void clearHandlers();
    // Serves all windows of the calling thread until this one was asked to close, the thread is asked to quit or an
    // exception ends it; can be called again after a loop that has left the window in place. Makes the window, with a
    // class name of its own, if `create` has not.
    void run();
    // Asks the loop to end. From another thread it returns when the loop has ended; on the loop's own thread at once,
    // and the loop ends when it comes to the request. False, at once, if the window was never created or there is no
    // room for a message: the loop then goes on. From another thread it waits for ever if the window is gone while
    // a loop runs, as a WM_CLOSE that was sent, not posted, destroys it: that loop does not end. A loop that is run
    // again before the waiting thread wakes is waited for, too.
    bool stop();

private:
    class Implementation;

    // Shared with a `run` or `stop` that has yet to return.
    std::shared_ptr<Implementation> implementation;
};
