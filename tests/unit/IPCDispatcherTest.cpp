#include "ipc/IPCDispatcher.h"
#include "app/log/Logger.h"
#include "platform/panel/Client.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/OtherThread.h"

#include <gtest/gtest.h>
#include <vector>

using namespace testing_panel;

namespace {

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

} // namespace

TEST(IPCDispatcher, ServesMessageZeroForANameThatThePlatformRefuses) {
    EchoModule module;
    OtherThread loop([&] {
        IPCDispatcher dispatcher;
        failCall("RegisterWindowMessageW");
        dispatcher.registerHandler(L"ORVATestMsg", &module);
        EXPECT_NO_THROW(dispatcher.run());
    });
    ASSERT_TRUE(driver().waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, 1000));
    const std::uint32_t window = panel::findWindow("ORVATarvexHelper");
    EXPECT_EQ(panel::sendMessage(window, "ORVATestMsg", 7, 0), 0);
    EXPECT_EQ(panel::sendMessage(window, "0", 7, 0), 17);
    EXPECT_EQ(panel::sendMessage(window, "ORVATarvexMsg", 1, 0), 0);
}

TEST(IPCDispatcher, HandsMessagesToModulesUntilItIsTerminated) {
    struct : LogListener {
        void receive(const LogRecord& record) override {
            messages += record.message + L'|';
        }
        std::wstring messages;
    } log;
    Logger::instance().setToFile(false);
    Logger::instance().addListener(&log);
    EchoModule module;
    OtherThread loop([&] {
        IPCDispatcher dispatcher;
        dispatcher.registerHandler(L"ORVATestMsg", &module);
        EXPECT_NO_THROW(dispatcher.run());
    });
    ASSERT_TRUE(driver().waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, 1000));
    const std::uint32_t window = panel::findWindow("ORVATarvexHelper");
    EXPECT_EQ(panel::sendMessage(window, "ORVATestMsg", 7, -3), 17);
    EXPECT_EQ(module.argument, -3);
    EXPECT_EQ(panel::sendMessage(window, "ORVATarvexMsg", 0xFFFFFFFF, 0), 1);
    EXPECT_EQ(panel::sendMessage(window, "ORVANobodysMsg", 1, 0), 0);
    // While the module is busy, the end and one more command for it queue up.
    panel::postMessage(window, "ORVATestMsg", 5, 0);
    panel::postMessage(window, "ORVATarvexMsg", 1, 0);
    panel::postMessage(window, "ORVATestMsg", 6, 0);
    loop.join();
    EXPECT_EQ(module.commands, (std::vector<DWORD>{7, 5})) << "a module that is out of service hears nothing";
    EXPECT_EQ(panel::findWindow("ORVATarvexHelper"), 0U);
    EXPECT_EQ(log.messages, L"IPCDispatcher;message received 4294967295|"
                            L"IPCDispatcher;message handled 4294967295 result: 1|"
                            L"IPCDispatcher;message received 1|IPCDispatcher;message handled 1 result: 0|");
}
