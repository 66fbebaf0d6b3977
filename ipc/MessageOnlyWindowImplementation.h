#pragma once

#include "ipc/ICriticalSection.h"
#include "ipc/MessageOnlyWindow.h"

#include <atomic>
#include <exception>
#include <map>

// The implementation of MessageOnlyWindow, shared by the window object and the calls in progress.
//
// Data shared between threads: `window`, `running` and `loopThreadId` are atomic and read without a lock.
// `dispatchLock` guards `handlers`. Only the loop thread uses all other data.
class MessageOnlyWindow::Implementation : public std::enable_shared_from_this<Implementation> {
public:
    explicit Implementation(MessageOnlyWindow* windowOwner);
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;
    ~Implementation();

    void create(const std::wstring& name);
    void registerHandler(UINT message, indev::MESSAGEHANDLER* handler);
    void clearHandlers();
    void run();
    bool stop();
    // Ends the loop and destroys the window. The destructor of the owner calls it last.
    void close();

private:
    // Finds the implementation of a window handle.
    class WindowMap;

    // Its destructor marks the loop as ended, whether the loop returns or throws.
    class LoopEnd {
    public:
        explicit LoopEnd(Implementation& implementation) : ended(implementation) {}
        LoopEnd(const LoopEnd&) = delete;
        LoopEnd& operator=(const LoopEnd&) = delete;
        ~LoopEnd();

    private:
        Implementation& ended;
    };

    // The window procedure of the class: it finds the implementation of the window and catches all exceptions.
    static LRESULT CALLBACK staticProcedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam);
    // Calls the handler of the message, or DefWindowProcW.
    LRESULT procedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam);
    void registerClass(const std::wstring& name);
    void createWindow();
    void destroy();
    void loop();
    // Throws the exception that left a handler, if there is one.
    void rethrowFailure();

    MessageOnlyWindow* owner; // deliberately kept, although no code reads it
    std::atomic<HWND> window = nullptr; // keeps its value after the window was destroyed
    std::atomic<bool> running = false;
    bool created = false; // set before the attempt to create the window, cleared after a failure
    const HANDLE loopDone; // manual-reset event, set while no loop runs; open until the last `stop` has returned
    std::unique_ptr<indev::ICriticalSection> creationLock = indev::createCriticalSection();
    std::unique_ptr<indev::ICriticalSection> loopLock = indev::createCriticalSection();
    std::unique_ptr<indev::ICriticalSection> dispatchLock = indev::createCriticalSection();
    std::map<UINT, indev::MESSAGEHANDLER*> handlers;
    std::wstring className;
    std::atomic<DWORD> loopThreadId = 0; // 0: no loop runs
    bool gone = false; // WM_DESTROY has arrived
    std::exception_ptr failure; // the first exception of a handler that `run` has not rethrown yet
};
