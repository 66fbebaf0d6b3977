#include "ipc/MessageOnlyWindowImplementation.h"

#include "OrvaUtils/Text.h"

#include <stdexcept>
#include <utility>

namespace {

std::atomic<std::uint32_t> automaticClassNames = 0;

} // namespace

// The implementations by their windows, the latest first: a handle may come again. Deliberately no entry is ever
// removed: that of a window whose owner is gone has expired and counts as none. So no thread needs a lock to look.
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
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = staticProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.lpszClassName = className.c_str();
    if (RegisterClassW(&windowClass) == 0) {
        className.clear();
        throw std::runtime_error("Failed to register message only window class");
    }
}

void MessageOnlyWindow::Implementation::createWindow() {
    gone = false;
    window = CreateWindowExW(0, className.c_str(), nullptr, 0, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                             CW_USEDEFAULT, nullptr, nullptr, nullptr, this);
    if (window == nullptr) {
        throw std::runtime_error("Failed to create message only window");
    }
}

void MessageOnlyWindow::Implementation::destroy() {
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
            WindowMap::add(receiver, static_cast<Implementation*>(creation->lpCreateParams)->weak_from_this());
        }
        implementation = WindowMap::find(receiver);
        return implementation == nullptr ? DefWindowProcW(receiver, message, wParam, lParam)
                                         : implementation->procedure(receiver, message, wParam, lParam);
    } catch (...) { // the platform's frames below must not see it
        if (message == WM_CREATE) {
            return -1; // then there is no window, which `create` reports
        }
        if (implementation != nullptr) {
            // The loop, woken by the null message, throws it again.
            if (implementation->failure == nullptr) {
                implementation->failure = std::current_exception();
            }
            PostMessageW(implementation->window, WM_NULL, 0, 0);
        }
        return 0;
    }
}

LRESULT MessageOnlyWindow::Implementation::procedure(HWND receiver, UINT message, WPARAM wParam, LPARAM lParam) {
    const indev::CriticalSectionGuard guard(*dispatchLock);
    if (window == nullptr) {
        window = receiver; // CreateWindowExW has yet to return it
    }
    gone = gone || message == WM_DESTROY;
    const auto found = handlers.find(message);
    if (found == handlers.end()) {
        return DefWindowProcW(receiver, message, wParam, lParam);
    }
    indev::MESSAGEHANDLER* handler = found->second; // it may empty the table
    return handler->handleMessage(window, message, wParam, lParam);
}

void MessageOnlyWindow::Implementation::run() {
    {
        const indev::CriticalSectionGuard guard(*loopLock);
        if (running) {
            throw std::runtime_error("Message loop already running");
        }
        running = true;
        EventModify(loopDone, EVENT_RESET);
        loopThreadId = GetCurrentThreadId(); // from now on `stop` waits
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
        rethrowFailure(); // of a sent message
        if (received <= 0) {
            return;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
        rethrowFailure();
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
    EventModify(ended.loopDone, EVENT_SET);
    ended.running = false;
    // Deliberate: left once more than entered.
    ended.loopLock->leave();
}

bool MessageOnlyWindow::Implementation::stop() {
    if (window == nullptr || (!PostMessageW(window, WM_CLOSE, 0, 0) && GetLastError() == ERROR_NOT_ENOUGH_QUOTA)) {
        return false;
    }
    const DWORD looping = loopThreadId;
    if (looping != 0 && looping != GetCurrentThreadId()) {
        WaitForSingleObject(loopDone, INFINITE);
    }
    return true;
}

void MessageOnlyWindow::Implementation::close() {
    const indev::CriticalSectionGuard creation(*creationLock);
    const indev::CriticalSectionGuard looping(*loopLock);
    if (running) {
        stop();
    }
    if (created) {
        destroy();
    }
}
