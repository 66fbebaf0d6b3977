// For the thread sanitizer above all: everything that may happen to a screen saver, at the same time.
#include "app/log/Logger.h"
#include "ipc/IPCDispatcher.h"
#include "modules/screensaver/ScreenSaverModule.h"
#include "platform/panel/Client.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"
#include "tests/unit/OtherThread.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>

using namespace testing_panel;

namespace {

constexpr int ROUNDS = 3000;

constexpr std::pair<std::uint64_t, std::int64_t> COMMANDS[] = {{5, 1}, {3, 1}, {2, 0}, {2, 1}, {4, 0}, {1, 0}, {5, 1},
                                                               {4, 9}, {5, 0}, {5, 1}, {3, 2}, {2, 0}, {3, 1}};

} // namespace

TEST(ScreenSaverStress, SurvivesTouchesCommandsAndItsEndAtOnce) {
    writeFile("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml",
              "<ScreenSaver><Settings><Enabled>1</Enabled><UserInactivityTimeout>1</UserInactivityTimeout>"
              "<MinLuminosityLevel>0</MinLuminosityLevel></Settings></ScreenSaver>");
    Logger::instance().setFilePath(L"\\MMCMemory\\Tarvex\\log.txt");
    Logger::instance().setThreshold(LogLevel::Error);
    OtherThread helper([] {
        IPCDispatcher dispatcher;
        const std::unique_ptr<IModule> module(ScreenSaverModule::create(dispatcher));
        dispatcher.run();
    });
    ASSERT_TRUE(driver().waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, 1000));
    const std::uint32_t window = panel::findWindow("ORVATarvexHelper");
    std::atomic<bool> touching = true;
    int answered = 0;
    OtherThread application([&] {
        for (std::size_t index = 0; touching; ++index) {
            const auto [command, argument] = COMMANDS[index % std::size(COMMANDS)];
            try {
                answered += panel::sendMessage(window, "ORVATarvexScreenSaverMsg", command, argument) == 0;
            } catch (const std::runtime_error&) {
                return; // the window has gone
            }
            Sleep(static_cast<DWORD>(index % 3));
        }
    });
    int dimmed = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        panel::setUserActive(false);
        advance(1 + static_cast<std::uint64_t>(round % 3));
        dimmed += driver().status().backLight.front() != 200;
        panel::setUserActive(true);
        advance(static_cast<std::uint64_t>(round % 2));
    }
    panel::sendMessage(window, "ORVATarvexMsg", 1, 0); // while the application goes on
    helper.join();
    touching = false;
    application.join();
    EXPECT_GT(dimmed, ROUNDS / 10);
    EXPECT_GT(answered, ROUNDS / 10);
    EXPECT_FALSE(exists("\\MMCMemory\\Tarvex\\log.txt")) << "there are errors";
    EXPECT_EQ(panel::findWindow("ORVATarvexHelper"), 0U);
    EXPECT_EQ(panel::findWindow("ORVAScreenSaver"), 0U);
}
