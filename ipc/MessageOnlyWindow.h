#pragma once

#include "ipc/MessageHandler.h"

#include <windows.h>

#include <memory>
#include <string>

// A hidden window and its message loop. Other processes find the window by the name of its class.
//
// Threads: one thread, the loop thread, calls `create`, `run` and the destructor. The platform delivers messages only
// to the thread that created the window, and only this thread can destroy the window. Any thread may call
// `registerHandler`, `clearHandlers` and `stop` while the object exists. When the destructor begins, no other thread
// may be inside an operation or call an operation later. There is one exception: a `stop` that another thread called
// earlier may still be waiting when the destructor begins.
//
// Handlers run on the loop thread, one at a time. A registration by another thread waits until the running handler has
// returned.
//
// Failures throw std::runtime_error with the texts given below; IPCDispatcher converts it to IPCDispatcherException. An
// exception that leaves a handler ends `run`, and `run` rethrows it. If another thread or process has sent the message,
// the sender receives 0. An exception that leaves the handler of WM_CREATE is lost: `create` fails instead.
class MessageOnlyWindow {
public:
    // Creates no window yet.
    MessageOnlyWindow();
    MessageOnlyWindow(const MessageOnlyWindow&) = delete;
    MessageOnlyWindow& operator=(const MessageOnlyWindow&) = delete;
    // Destroys the window, if it still exists, and unregisters its class.
    ~MessageOnlyWindow();

    // Registers the window class and creates the window. Does nothing if the window was created before, even with
    // another class name. Throws "Failed to register message only window class" or "Failed to create message only
    // window". After a failure there is neither a class nor a window, and `create` may be called again.
    // Each window costs about 300 bytes that the process never frees.
    void create(const std::wstring& className);
    // Binds a message to a handler, which is not owned. A later handler for the same message replaces the earlier one.
    void registerHandler(UINT message, indev::MESSAGEHANDLER* handler);
    // Removes all handlers: from now on DefWindowProcW handles every message.
    void clearHandlers();
    // Runs the message loop, which serves all windows of the calling thread. The loop ends when it has dispatched
    // WM_CLOSE to this window, when it receives WM_QUIT, or when a handler throws. Creates the window, with a generated
    // class name, if `create` was not called. Throws the exceptions of `create`, and "Message loop already running" if
    // another call of `run` is in progress. After `run` has ended, `run` may be called again only if the
    // window still exists. WM_CLOSE destroys the window, unless a handler is registered for WM_CLOSE.
    void run();
    // Asks the loop to end by posting WM_CLOSE to the window.
    //
    // On the loop thread it returns at once, and the loop ends when it reaches the message. On another thread it waits
    // without a limit until the loop has ended. If the loop thread calls `run` again before the waiting thread wakes,
    // `stop` waits for that loop, too.
    //
    // Returns false at once if the window was never created or the message queue is full; the loop then continues.
    // Warning: if a program sends WM_CLOSE to the window instead of posting it, the window is destroyed but the loop
    // continues. A `stop` on another thread then never returns.
    bool stop();

private:
    class Implementation;

    // A running `run` or `stop` keeps a reference of its own: the implementation then outlives this object.
    std::shared_ptr<Implementation> implementation;
};
