#include "ipc/IPCDispatcher.h"

#include "OrvaUtils/Text.h"
#include "ipc/CommandLog.h"
#include "ipc/IPCDispatcherException.h"

#include <exception>

namespace {

constexpr WPARAM TERMINATE_COMMAND = 1;

} // namespace

IPCDispatcher::IPCDispatcher() : messageWindow(std::make_unique<MessageOnlyWindow>()) {}

IPCDispatcher::~IPCDispatcher() noexcept {
    messageWindow->clearHandlers();
    adapters.clear();
    messageWindow.reset();
}

void IPCDispatcher::registerHandler(const std::wstring& name, IPCMessageHandler* handler) {
    const UINT message = RegisterWindowMessageW(name.c_str());
    messageWindow->registerHandler(message, &adapters.emplace_back(handler));
}

void IPCDispatcher::run() {
    try {
        registerHandler(L"ORVATarvexMsg", this);
        messageWindow->create(L"ORVATarvexHelper");
        messageWindow->run();
    } catch (const std::exception& failure) {
        throw IPCDispatcherException(OrvaUtils::widen(failure.what()));
    }
}

std::uint32_t IPCDispatcher::handleMessage(HWND, UINT, WPARAM wParam, LPARAM) {
    CommandLog::received(L"IPCDispatcher", wParam);
    std::uint32_t result = CommandResult::UnknownCommand;
    if (static_cast<DWORD>(wParam) == TERMINATE_COMMAND) {
        terminate();
        result = CommandResult::Done;
    }
    CommandLog::handled(L"IPCDispatcher", wParam, result);
    return result;
}

// The window must not reach the adapters any more, but the one that carries this very command, and one that waits below
// it on the stack, live on until the dispatcher ends.
void IPCDispatcher::terminate() {
    if (!messageWindow->stop()) {
        return; // it goes on: the next command must still reach it
    }
    messageWindow->clearHandlers();
    discardedAdapters.splice(discardedAdapters.end(), adapters);
}
