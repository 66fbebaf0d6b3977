#include "app/ModuleManager.h"
#include "app/log/Logger.h"
#include "ipc/IPCDispatcher.h"
#include "modules/usbconfig/USBDeviceMonitor.h"
#include "platform/panel/Operator.h"
#include "tests/support/TestPanel.h"

#include <gtest/gtest.h>

using namespace testing_panel;

TEST(ModuleManager, LeavesEarlierModulesWhenALaterOneCannotBeMade) {
    struct : LogListener {
        void receive(const LogRecord& record) override {
            if (record.message.starts_with(L"BuzzerModule;")) {
                throw 1;
            }
        }
    } listener;
    Logger::instance().setToFile(false);
    Logger::instance().addListener(&listener);
    writeFile("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml",
              "<ScreenSaver><Settings><Enabled>1</Enabled><UserInactivityTimeout>1</UserInactivityTimeout>"
              "<MinLuminosityLevel>9</MinLuminosityLevel></Settings></ScreenSaver>");
    panel::setUserActive(false);
    IPCDispatcher dispatcher;
    USBDeviceMonitor usbMonitor;
    EXPECT_THROW(ModuleManager(dispatcher, usbMonitor), int);
    advance(60000);
    driver().settle();
    EXPECT_EQ(driver().status().backLight.front(), 8U) << "the screen saver still watches";
}
