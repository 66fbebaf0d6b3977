#pragma once

#include "ipc/ICriticalSection.h"
#include "ipc/MessageOnlyWindow.h"

#include <atomic>
#include <exception>
#include <map>

// What the threads share: `window`, `running` and `loopThreadId` are read without a lock, `handlers` belongs to the
// dispatch lock, everything else to the thread of the window.
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
    // The owner's last call.
    void close();

private:
    class WindowMap;

    // Restores the state of the loop however it ends.
    class LoopEnd {
    public:
        explicit LoopEnd(Implementation& implementation) : ended(implementation) {}
        LoopEnd(const LoopEnd&) = delete;
        LoopEnd& operator=(const LoopEnd&) = delete;
        ~LoopEnd();

    private:
        Implementation& ended;
    };

    static LRESULT CALLBACK staticProcedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT procedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam);
    void registerClass(const std::wstring& name);
    void createWindow();
    void destroy();
    void loop();
    void rethrowFailure();

    MessageOnlyWindow* owner; // deliberately kept, though nobody reads it
    std::atomic<HWND> window = nullptr; // keeps its value when the window is gone
    std::atomic<bool> running = false;
    bool created = false; // or trying to
    const HANDLE loopDone; // manual reset; open until the last `stop` has returned
    std::unique_ptr<indev::ICriticalSection> creationLock = indev::createCriticalSection();
    std::unique_ptr<indev::ICriticalSection> loopLock = indev::createCriticalSection();
    std::unique_ptr<indev::ICriticalSection> dispatchLock = indev::createCriticalSection();
    std::map<UINT, indev::MESSAGEHANDLER*> handlers;
    std::wstring className;
    std::atomic<DWORD> loopThreadId = 0; // 0: no loop runs
    bool gone = false; // the window was destroyed, by whomever
    std::exception_ptr failure; // the first that left a handler and is not yet rethrown
};
