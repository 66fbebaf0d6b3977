// Ends of the helper by a failure: what is still torn down, in which order, and what is left alone.
#include "tests/scenario/Milestones.h"
#include "tests/scenario/SavingPanel.h"
#include "tests/support/StatisticsFile.h"

#include <algorithm>

using panel::Behaviour;

namespace {

const Lines lastSteps{"log Helper terminated", "release OrvaTarvexHelper.0 failed", "close press", "close log"};
const Lines saverAsked{"post 0x402 to window ORVAScreenSaver", "post 0x10 to window ORVAScreenSaver", "set saver stop"};
const Lines saverEnds{"join saver thread", "close saver thread", "close saver stop", "close saver ready",
                      "close BKL1:"};
const Lines buzzerEnds{"close hook", "close BZR1:", "set USB stop"};
const Lines dispatcherEnds{"unregister ORVATarvexHelper", "close loop end"};

// What the main thread did from this step on.
Lines stepsFrom(const ScenarioPanel& panel, bool (*isFirst)(const std::string& step)) {
    const Lines steps = milestones(panel, 1);
    return {std::find_if(steps.begin(), steps.end(), isFirst), steps.end()};
}

} // namespace

// The statistics' thread, where it runs, is neither told nor waited for.
TEST(End, ComesAtOnceWithoutWhatTheHelperIsMadeOf) {
    const Lines unmade = joined({saverAsked, saverEnds, buzzerEnds, {"join USB thread", "close loop end"}});
    const struct {
        const char* function; // none: there is no backlight
        std::uint32_t call;
        std::size_t lines; // that the module manager logs before
        const char* failure;
        Lines steps; // from the refused one to the failure's report
    } cases[] = {
        {"CreateEventW",
         3,
         1,
         "EMMCException: Cannot create event",
         {"make EMMC stop failed", "make EMMC ready", "close EMMC ready"}},
        {"CreateEventW", 4, 1, "EMMCException: Cannot create event", {"make EMMC ready failed", "close EMMC stop"}},
        {"CreateThread", 1, 1, "EMMCException: Cannot create thread", {"start EMMC thread failed"}},
        {"CreateEventW",
         6,
         1,
         "UsbDeviceException: Cannot create event",
         {"make USB stop failed", "make USB ready", "close USB ready", "close loop end"}},
        {nullptr,
         0,
         2,
         "ScreenBackLightException: Driver open failed",
         {"open BKL1: 0xc0000000, 3, 3, 0x10000000 failed", "close loop end"}},
        {"DeviceIoControl",
         1,
         2,
         "ScreenBackLightException: Get back light settings failed",
         {"ask BKL1: failed", "close BKL1:", "close loop end"}},
        {"RegisterClassW",
         1,
         2,
         "BlackScreenException: Cannot register class",
         {"register ORVAScreenSaver failed", "close loop end"}},
        {"CreateWindowExW",
         1,
         2,
         "BlackScreenException: Cannot create black screen window",
         {"make window ORVAScreenSaver, 0x88, 0x80000000 failed", "close saver stop", "close saver ready",
          "close BKL1:", "close loop end"}},
        {"CreateEventW",
         9,
         2,
         "UserInactivityMonitorException: Cannot create event",
         {"make saver ready failed", "close saver stop", "close BKL1:", "close loop end"}},
        {"RegisterClassW", 2, 3, "IPCDispatcherException: Failed to register message only window class",
         joined({{"register ORVATarvexHelper failed"}, unmade})},
        {"CreateWindowExW", 2, 3, "IPCDispatcherException: Failed to create message only window",
         joined({{"make window ORVATarvexHelper, 0x0, 0x0 failed", "unregister ORVATarvexHelper"}, unmade})},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.function ? each.function : "no driver") + ' ' + std::to_string(each.call));
        SavingPanel panel;
        if (each.function)
            panel.failCall(each.function, each.call);
        else
            panel.panel().devices().setPresent("BKL1", false);
        panel.write(statisticsPath, statisticsFile(1, 2, 3, 4));
        panel.driver().setTracing(true);
        EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
        if (std::string_view(each.failure).starts_with("EMMC")) {
            EXPECT_EQ(panel.read(statisticsPath), statisticsFile(0, 0, 3, 4)) << "a session that nobody counts";
        }
        const std::string failure = std::string("Exception ") + each.failure;
        Lines begun = ScenarioPanel::managerLines();
        begun.resize(each.lines);
        EXPECT_EQ(panel.log(), firstStartLines(joined({begun, {"ERROR;" + failure, "INFO;Helper terminated"}})));
        EXPECT_EQ(stepsFrom(panel, [](const std::string& step) { return step.ends_with(" failed"); }),
                  joined({each.steps, {"log " + failure}, lastSteps}));
    }
}

TEST(End, WaitsForABusyMonitorAndTearsTheOthersDown) {
    // Waited for, and looked at once more.
    const Lines saverStuck(2, "join saver thread in vain");
    const Lines diskStuck(2, "join USB thread in vain");
    const Lines emmcStuck{"set EMMC stop", "join EMMC thread in vain", "join EMMC thread in vain"};
    const struct {
        bool emmc, disk, saver; // which of them is busy
        const char* failure;
        std::uint64_t time; // that the end takes
        Lines steps;
    } cases[] = {
        {true, false, false, "EMMCException", 20000,
         joined({saverEnds, buzzerEnds, {"join USB thread"}, dispatcherEnds, emmcStuck})},
        {false, true, false, "UsbDeviceException", 20000, joined({saverEnds, buzzerEnds, diskStuck, dispatcherEnds})},
        {false, false, true, "UserInactivityMonitorException", 20000,
         joined({saverStuck, buzzerEnds, {"join USB thread"}, dispatcherEnds})},
        {true, true, true, "UserInactivityMonitorException", 40000,
         joined({saverStuck, buzzerEnds, diskStuck, dispatcherEnds})},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(std::string(each.failure) + (each.emmc && each.disk ? ", all" : ""));
        SavingPanel panel;
        panel.configure(true, 5000, 128);
        panel.driver().setTracing(true);
        panel.startInPlace();
        panel.pass(290000);
        const panel::Devices devices = panel.panel().devices();
        if (each.emmc)
            devices.setBehaviour("SHC1", {Behaviour::Kind::block, 0});
        if (each.disk)
            panel.panel().plug({{}, panel::never});
        if (each.saver) {
            devices.setBehaviour("BKL1", {Behaviour::Kind::block, 0});
            panel.user(false);
        }
        panel.pass(10000);
        EXPECT_EQ(panel.terminate(), 1U);
        EXPECT_EQ(panel.driver().status().ended.at(0).time, 300000 + each.time);
        const std::string failure = std::string("Exception ") + each.failure + ": Failed to terminate monitor thread";
        EXPECT_EQ(panel.lastLines(3),
                  (Lines{"INFO;Module manager terminated", "ERROR;" + failure, "INFO;Helper terminated"}));
        EXPECT_EQ(stepsFrom(panel, [](const std::string& step) { return step == "log Module manager terminated"; }),
                  joined({{"log Module manager terminated"}, saverAsked, each.steps, {"log " + failure}, lastSteps}));
    }
}
