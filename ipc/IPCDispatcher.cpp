#include "ipc/IPCDispatcher.h"

#include "OrvaUtils/Text.h"
#include "ipc/CommandLog.h"
#include "ipc/IPCDispatcherException.h"

#include <exception>

namespace {

constexpr std::wstring_view NAME = L"IPCDispatcher";
constexpr WPARAM TERMINATE_COMMAND = 1;

} // namespace

IPCDispatcher::IPCDispatcher() : messageWindow(std::make_unique<MessageOnlyWindow>()) {}

IPCDispatcher::~IPCDispatcher() noexcept {
    messageWindow->clearHandlers(); // the adapters go first
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
    CommandLog::received(NAME, wParam);
    std::uint32_t result = CommandResult::UnknownCommand;
    if (static_cast<DWORD>(wParam) == TERMINATE_COMMAND) {
        terminate();
        result = CommandResult::Done;
    }
    CommandLog::handled(NAME, wParam, result);
    return result;
}

void IPCDispatcher::terminate() {
    if (messageWindow->stop()) { // otherwise it goes on: the next command must still reach it
        messageWindow->clearHandlers();
    }
}
