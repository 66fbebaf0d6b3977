#include "ipc/IPCDispatcher.h"
#include "OrvaUtils/Text.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcherException.h"
#include "platform/panel/Client.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/MessageOf.h"
#include "tests/unit/OtherThread.h"

#include <functional>
#include <gtest/gtest.h>
#include <vector>

using namespace testing_panel;

namespace {

// Messages that reach it run a function; it belongs to the test's thread, so the dispatcher's loop serves it.
struct Visitor : indev::MESSAGEHANDLER {
    explicit Visitor(std::function<void()> body) : function(std::move(body)) {
        window.registerHandler(WM_CREATE, this);
        window.create(L"Visitor");
    }
    LRESULT handleMessage(HWND receiver, UINT message, WPARAM, LPARAM) override {
        if (message == WM_CREATE) {
            window.registerHandler(0xC100, this);
            PostMessageW(receiver, 0xC100, 0, 0);
        } else {
            function();
        }
        return 0;
    }
    std::function<void()> function;
    MessageOnlyWindow window;
};

// A module: answers every command with the command plus 10; command 5 takes 100 ms.
struct EchoModule : IPCMessageHandler {
    std::uint32_t handleMessage(HWND, UINT, WPARAM wParam, LPARAM lParam) override {
        commands.push_back(static_cast<DWORD>(wParam));
        argument = lParam;
        if (wParam == 5) {
            OrvaUtils::Concurrency::getSystem().sleep(100);
        }
        return static_cast<std::uint32_t>(wParam) + 10;
    }
    std::vector<DWORD> commands;
    LPARAM argument = 0;
};

std::wstring dispatcherFailure(IPCDispatcher& dispatcher) {
    return messageOf<IPCDispatcherException>([&] { dispatcher.run(); });
}

} // namespace

TEST(IPCDispatcher, AnswersAndLogsItsCommands) {
    writeFile("\\Log\\unrelated", "");
    Logger::instance().setFilePath(L"\\Log\\log.txt");
    IPCDispatcher dispatcher;
    std::string expected;
    for (const auto& [command, result] : {std::pair<DWORD, DWORD>{0, 1}, {2, 1}, {0xFFFFFFFF, 1}, {1, 0}}) {
        EXPECT_EQ(dispatcher.handleMessage(nullptr, 0, command, -1), result);
        const std::string code = std::to_string(command);
        expected += "IPCDispatcher;message received " + code + "\nIPCDispatcher;message handled " + code +
                    " result: " + std::to_string(result) + "\n";
    }
    std::string log = readFile("\\Log\\log.txt");
    std::string written;
    for (std::size_t begin; (begin = log.find("IPCDispatcher")) != std::string::npos;) {
        log.erase(0, begin);
        written += log.substr(0, log.find('\n') + 1);
        log.erase(0, log.find('\n'));
    }
    EXPECT_EQ(written, expected);
}

TEST(IPCDispatcher, RunsUntilItIsTerminated) {
    IPCDispatcher dispatcher;
    std::uint32_t result = 99;
    std::wstring again;
    Visitor visitor([&] {
        again = dispatcherFailure(dispatcher);
        result = dispatcher.handleMessage(nullptr, 0, 1, 0);
    });
    dispatcher.run();
    EXPECT_EQ(result, 0U);
    EXPECT_EQ(again, L"Message loop already running");
}

TEST(IPCDispatcher, ReportsFailuresOfItsWindow) {
    IPCDispatcher dispatcher;
    failCall("RegisterClassW");
    EXPECT_EQ(dispatcherFailure(dispatcher), L"Failed to register message only window class");
    failCall("CreateWindowExW");
    EXPECT_EQ(dispatcherFailure(dispatcher), L"Failed to create message only window");
}

TEST(IPCDispatcher, ServesMessageZeroForANameThatThePlatformRefuses) {
    EchoModule module;
    OtherThread loop([&] {
        IPCDispatcher dispatcher;
        failCall("RegisterWindowMessageW");
        dispatcher.registerHandler(L"ORVATestMsg", &module);
        dispatcher.run();
    });
    ASSERT_TRUE(driver().waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, 1000));
    const std::uint32_t window = panel::findWindow("ORVATarvexHelper");
    EXPECT_EQ(panel::sendMessage(window, "ORVATestMsg", 7, 0), 0);
    EXPECT_EQ(panel::sendMessage(window, "0", 7, 0), 17);
    EXPECT_EQ(panel::sendMessage(window, "ORVATarvexMsg", 1, 0), 0);
}

TEST(IPCDispatcher, HandsMessagesToModulesUntilItIsTerminated) {
    EchoModule module;
    std::wstring failure;
    OtherThread loop([&] {
        IPCDispatcher dispatcher;
        dispatcher.registerHandler(L"ORVATestMsg", &module);
        failure = dispatcherFailure(dispatcher);
    });
    ASSERT_TRUE(driver().waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, 1000));
    const std::uint32_t window = panel::findWindow("ORVATarvexHelper");
    EXPECT_EQ(panel::sendMessage(window, "ORVATestMsg", 7, -3), 17);
    EXPECT_EQ(module.argument, -3);
    EXPECT_EQ(panel::sendMessage(window, "ORVATarvexMsg", 2, 0), 1);
    EXPECT_EQ(panel::sendMessage(window, "ORVANobodysMsg", 1, 0), 0);
    // While the module is busy, the end and one more command for it queue up.
    panel::postMessage(window, "ORVATestMsg", 5, 0);
    panel::postMessage(window, "ORVATarvexMsg", 1, 0);
    panel::postMessage(window, "ORVATestMsg", 6, 0);
    loop.join();
    EXPECT_EQ(failure, L"none");
    EXPECT_EQ(module.commands, (std::vector<DWORD>{7, 5})) << "a module that is out of service hears nothing";
    EXPECT_EQ(panel::findWindow("ORVATarvexHelper"), 0U);
}
