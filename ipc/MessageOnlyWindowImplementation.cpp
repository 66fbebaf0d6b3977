#include "ipc/MessageOnlyWindowImplementation.h"

#include "OrvaUtils/Text.h"

#include <stdexcept>
#include <utility>

namespace {

// Numbers the generated class names of the process.
std::atomic<std::uint32_t> automaticClassNames = 0;

} // namespace

// The implementations by their windows, the latest first: the platform may use a handle again. Deliberate: no entry is
// ever removed. The entry of a window whose owner is gone holds an expired pointer and finds nothing. So no lock is
// needed.
class MessageOnlyWindow::Implementation::WindowMap {
public:
    static void add(HWND window, std::weak_ptr<Implementation> implementation) {
        auto* const entry = new Entry{window, std::move(implementation), latest};
        while (!latest.compare_exchange_weak(entry->next, entry)) {
        }
    }
    static std::shared_ptr<Implementation> find(HWND window) {
        const Entry* entry = latest;
        while (entry != nullptr && entry->window != window) {
            entry = entry->next;
        }
        return entry == nullptr ? nullptr : entry->implementation.lock();
    }

private:
    struct Entry {
        const HWND window;
        const std::weak_ptr<Implementation> implementation;
        Entry* next;
    };
    static inline std::atomic<Entry*> latest = nullptr;
};

MessageOnlyWindow::Implementation::Implementation(MessageOnlyWindow* windowOwner)
    // The event is set at first, as no loop runs.
    : owner(windowOwner), loopDone(CreateEventW(nullptr, TRUE, TRUE, nullptr)) {}

MessageOnlyWindow::Implementation::~Implementation() {
    if (loopDone != nullptr) {
        CloseHandle(loopDone);
    }
}

void MessageOnlyWindow::Implementation::create(const std::wstring& name) {
    const indev::CriticalSectionGuard guard(*creationLock);
    if (created) {
        return;
    }
    // The flag is set first: `destroy` clears it after a failure.
    created = true;
    try {
        registerClass(name);
        createWindow();
    } catch (...) {
        destroy();
        throw;
    }
}

void MessageOnlyWindow::Implementation::registerClass(const std::wstring& name) {
    className = name;
    // All other fields stay zero: the window is never visible.
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = staticProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className.c_str();
    if (RegisterClassW(&windowClass) == 0) {
        // `destroy` must not unregister a class that was not registered.
        className.clear();
        throw std::runtime_error("Failed to register message only window class");
    }
}

void MessageOnlyWindow::Implementation::createWindow() {
    // A window of an earlier attempt may have been destroyed.
    gone = false;
    window = CreateWindowExW(0, className.c_str(), nullptr, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                             CW_USEDEFAULT, nullptr, nullptr, nullptr, this);
    if (window == nullptr) {
        throw std::runtime_error("Failed to create message only window");
    }
}

void MessageOnlyWindow::Implementation::destroy() {
    // `window` keeps its value after the destruction, so `gone` decides.
    if (window != nullptr && !gone) {
        DestroyWindow(window);
    }
    if (!className.empty()) {
        UnregisterClassW(className.c_str(), GetModuleHandleW(nullptr));
    }
    created = false;
}

void MessageOnlyWindow::Implementation::registerHandler(UINT message, indev::MESSAGEHANDLER* handler) {
    const indev::CriticalSectionGuard guard(*dispatchLock);
    handlers[message] = handler;
}

void MessageOnlyWindow::Implementation::clearHandlers() {
    const indev::CriticalSectionGuard guard(*dispatchLock);
    handlers.clear();
}

LRESULT CALLBACK MessageOnlyWindow::Implementation::staticProcedure(HWND receiver, UINT message, WPARAM wParam,
                                                                    LPARAM lParam) {
    std::shared_ptr<Implementation> implementation;
    try {
        if (message == WM_CREATE) {
            const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lParam);
            // WM_CREATE is the first message that carries the pointer given to CreateWindowExW.
            WindowMap::add(receiver, static_cast<Implementation*>(creation->lpCreateParams)->weak_from_this());
        }
        implementation = WindowMap::find(receiver);
        // Messages before WM_CREATE, and messages of a window without an owner, get the default procedure.
        return implementation == nullptr ? DefWindowProcW(receiver, message, wParam, lParam)
                                         : implementation->procedure(receiver, message, wParam, lParam);
    } catch (...) {
        // An exception must not pass through the frames of the platform that called this procedure.
        if (message == WM_CREATE) {
            // -1 makes CreateWindowExW fail, and `create` reports that.
            return -1;
        }
        if (implementation != nullptr) {
            // `loop` throws the exception again. The null message wakes the loop after a sent message.
            if (implementation->failure == nullptr) {
                implementation->failure = std::current_exception();
            }
            PostMessageW(implementation->window, WM_NULL, 0, 0);
        }
        return 0;
    }
}

LRESULT MessageOnlyWindow::Implementation::procedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam) {
    // The lock makes handlers run one at a time and keeps the table unchanged. It is recursive: a handler may register.
    const indev::CriticalSectionGuard guard(*dispatchLock);
    HWND own = window;
    if (own == nullptr) {
        // CreateWindowExW has not returned the handle yet.
        window = own = receiver;
    }
    gone = gone || message == WM_DESTROY;
    const auto found = handlers.find(message);
    if (found == handlers.end()) {
        return DefWindowProcW(receiver, message, wParam, lParam);
    }
    // The handler may clear the table, so the iterator is not used after the call begins.
    indev::MESSAGEHANDLER* handler = found->second;
    return handler->handleMessage(own, message, wParam, lParam);
}

void MessageOnlyWindow::Implementation::run() {
    {
        const indev::CriticalSectionGuard guard(*loopLock);
        if (running) {
            throw std::runtime_error("Message loop already running");
        }
        running = true;
        // From `loopThreadId` on, a `stop` on another thread waits for the event, so the event is reset first.
        EventModify(loopDone, EVENT_RESET);
        loopThreadId = GetCurrentThreadId();
    }
    const LoopEnd end(*this);
    if (!created) {
        create(L"iMOW" + OrvaUtils::decimal(++automaticClassNames));
    }
    loop();
}

void MessageOnlyWindow::Implementation::loop() {
    for (;;) {
        MSG message;
        const BOOL received = GetMessageW(&message, nullptr, 0, 0);
        // GetMessageW has called the window procedure for sent messages; a handler may have thrown there.
        rethrowFailure();
        // The result is 0 for WM_QUIT and -1 for a failure. Both end the loop.
        if (received <= 0) {
            return;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
        rethrowFailure();
        // The default procedure has destroyed the window, unless a handler took WM_CLOSE.
        if (message.message == WM_CLOSE && message.hwnd == window) {
            return;
        }
    }
}

void MessageOnlyWindow::Implementation::rethrowFailure() {
    if (failure != nullptr) {
        std::rethrow_exception(std::exchange(failure, nullptr));
    }
}

MessageOnlyWindow::Implementation::LoopEnd::~LoopEnd() {
    ended.loopThreadId = 0;
    // A `stop` that has read the thread id waits for this event.
    EventModify(ended.loopDone, EVENT_SET);
    ended.running = false;
    // Deliberate: the loop leaves its lock once more than it entered. The lock ignores that.
    ended.loopLock->leave();
}

bool MessageOnlyWindow::Implementation::stop() {
    // Only a full message queue counts as a failure. The post also fails if the window is gone; the loop may be ending
    // then.
    if (window == nullptr || (!PostMessageW(window, WM_CLOSE, 0, 0) && GetLastError() == ERROR_NOT_ENOUGH_QUOTA)) {
        return false;
    }
    // The id may change meanwhile, so it is read once.
    const DWORD looping = loopThreadId;
    if (looping != 0 && looping != GetCurrentThreadId()) {
        WaitForSingleObject(loopDone, INFINITE);
    }
    return true;
}

void MessageOnlyWindow::Implementation::close() {
    // No other code holds both locks.
    const indev::CriticalSectionGuard creation(*creationLock);
    const indev::CriticalSectionGuard looping(*loopLock);
    if (running) {
        stop();
    }
    if (created) {
        destroy();
    }
}
