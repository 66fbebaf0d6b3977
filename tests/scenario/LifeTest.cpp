// The helper's whole life in its order, and what it does while nothing happens.
#include "tests/scenario/Milestones.h"
#include "tests/scenario/SavingPanel.h"

TEST(Life, IsBuiltAndTornDownInThisOrder) {
    SavingPanel panel;
    panel.driver().setTracing(true);
    panel.startInPlace();
    EXPECT_EQ(panel.terminate(), 0U);
    const Lines main{
        "make press",
        "make hook stop",
        "open OrvaTarvexHelper.0",
        "open log",
        "log Init of Helper",
        "log Configuring my autorun",
        "log Associate .osr file to Tarvex.exe",
        "write config.xml",
        "log Module manager initialization",
        "write EMMC.xml",
        "make EMMC stop",
        "make EMMC ready",
        "reset EMMC stop",
        "reset EMMC ready",
        "start EMMC thread",
        "await EMMC ready or EMMC thread",
        "make loop end",
        "make USB stop",
        "make USB ready",
        "read ScreenSaverConfig.xml",
        "log ScreenSaverModule;settings loaded;timeout: 300000 backlight: 32 enabled: 1",
        "register ORVAScreenSaver",
        "open BKL1: 0xc0000000, 3, 3, 0x10000000",
        "ask BKL1:",
        "make saver stop",
        "make saver ready",
        "make window ORVAScreenSaver, 0x88, 0x80000000",
        "reset saver stop",
        "reset saver ready",
        "start saver thread",
        "await saver ready or saver thread",
        "read TouchBuzzerConfig.xml",
        "load tagUserAPI.dll",
        "close tagUserAPI.dll",
        "write TouchBuzzerConfig.xml",
        "log BuzzerModule;settings loaded; enabled: 1",
        "open BZR1: 0xc0000000, 0, 3, 0x80",
        "make hook",
        "start buzzer thread",
        "reset USB stop",
        "reset USB ready",
        "start USB thread",
        "await USB ready or USB thread",
        "register ORVATarvexHelper",
        "make window ORVATarvexHelper, 0x0, 0x0",
        "reset loop end",
        "log IPCDispatcher;message received 1",
        "post 0x10 to window ORVATarvexHelper",
        "log IPCDispatcher;message handled 1 result: 0",
        "take message 0x10",
        "set loop end",
        "log Module manager terminated",
        "post 0x402 to window ORVAScreenSaver",
        "post 0x10 to window ORVAScreenSaver",
        "set saver stop",
        "join saver thread",
        "close saver thread",
        "close saver stop",
        "close saver ready",
        "close BKL1:",
        "close hook",
        "close BZR1:",
        "set USB stop",
        "join USB thread",
        "unregister ORVATarvexHelper",
        "close loop end",
        "set EMMC stop",
        "join EMMC thread",
        "close EMMC thread",
        "close EMMC stop",
        "close EMMC ready",
        "log Helper terminated",
        "release OrvaTarvexHelper.0 failed", // nobody owns it
        "close press",
        "close log",
    };
    EXPECT_EQ(milestones(panel, 1), main);
    EXPECT_EQ(milestones(panel, 2), (Lines{"set EMMC ready", "read EMMC.xml", "open SHC1: 0xc0000000, 0, 3, 0x80",
                                           "ask SHC1:", "close SHC1:", "write EMMC.xml", "await EMMC stop"}));
    EXPECT_EQ(milestones(panel, 3),
              (Lines{"open UserActivity_Active", "open UserActivity_Inactive", "await UserActivity_Active",
                     "set saver ready", "await UserActivity_Inactive or saver stop", "close UserActivity_Inactive",
                     "close UserActivity_Active"}));
    EXPECT_EQ(milestones(panel, 4), Lines{}); // which still waits as the process ends
    EXPECT_EQ(milestones(panel, 5), (Lines{"make queue", "make notification", "set USB ready",
                                           "await queue or USB stop", "close notification", "close queue"}));
}

TEST(Life, CostsTheUpdatesOfTheStatisticsAloneWhileNothingHappens) {
    const Lines update{"GetFileAttributesW \\MMCMemory\\Tarvex\\EMMC.xml",
                       "CreateFileW \\MMCMemory\\Tarvex\\EMMC.xml",
                       "ReadFile ",
                       "CloseHandle ",
                       "CreateFileW SHC1:",
                       "DeviceIoControl ",
                       "CloseHandle ",
                       "CreateFileW \\MMCMemory\\Tarvex\\EMMC.xml",
                       "WriteFile ",
                       "CloseHandle ",
                       "WaitForSingleObject, 300000) = 258 after 300000 ms"};
    Lines hour;
    for (int updates = 0; updates < 12; ++updates)
        hour.insert(hour.end(), update.begin(), update.end());
    hour.pop_back(); // it waits still
    for (const bool active : {true, false}) {
        SavingPanel panel(true, 5000, 0);
        panel.user(active);
        panel.pass(60000);
        EXPECT_EQ(panel.blackWindow(), active ? "hidden" : "black");
        panel.driver().setTracing(true);
        panel.pass(3600000);
        panel.driver().setTracing(false);
        Lines calls;
        for (const TracedCall& call : panel.calls()) {
            EXPECT_EQ(call.thread, 2U) << call.text;
            if (call.function.starts_with("Wait"))
                calls.push_back(call.function + call.text.substr(call.text.find(',')));
            else
                calls.push_back(call.function + ' ' + call.firstText());
        }
        EXPECT_EQ(calls, hour);
        EXPECT_EQ(panel.terminate(), 0U);
    }
}
