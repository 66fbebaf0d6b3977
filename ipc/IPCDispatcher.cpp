#include "ipc/IPCDispatcher.h"

#include "OrvaUtils/Text.h"
#include "ipc/CommandLog.h"
#include "ipc/IPCDispatcherException.h"

#include <exception>

namespace {

constexpr std::wstring_view DISPATCHER = L"IPCDispatcher";
constexpr WPARAM TERMINATE_COMMAND = 1;

} // namespace

IPCDispatcher::IPCDispatcher() : messageWindow(std::make_unique<MessageOnlyWindow>()) {}

IPCDispatcher::~IPCDispatcher() noexcept {
    // The adapters are destroyed before the window, so the window must forget them first.
    messageWindow->clearHandlers();
}

void IPCDispatcher::registerHandler(const std::wstring& name, IPCMessageHandler* handler) {
    const UINT message = RegisterWindowMessageW(name.c_str());
    // A list never moves its elements: the address of the adapter stays valid.
    messageWindow->registerHandler(message, &adapters.emplace_back(handler));
}

void IPCDispatcher::run() {
    try {
        registerHandler(L"ORVATarvexMsg", this);
        messageWindow->create(L"ORVATarvexHelper");
        messageWindow->run();
    } catch (const std::exception& failure) {
        // An OrvaUtils::Exception is not a std::exception and passes through.
        throw IPCDispatcherException(OrvaUtils::widen(failure.what()));
    }
}

std::uint32_t IPCDispatcher::handleMessage(HWND, UINT, WPARAM wParam, LPARAM) {
    CommandLog::received(DISPATCHER, wParam);
    std::uint32_t result = CommandResult::UnknownCommand;
    // Only the low 32 bits of the parameter are the command code.
    if (static_cast<DWORD>(wParam) == TERMINATE_COMMAND) {
        terminate();
        result = CommandResult::Done;
    }
    CommandLog::handled(DISPATCHER, wParam, result);
    return result;
}

void IPCDispatcher::terminate() {
    // If the message queue is full, the loop continues, and the next command must still reach its handler.
    if (messageWindow->stop()) {
        messageWindow->clearHandlers();
    }
}
