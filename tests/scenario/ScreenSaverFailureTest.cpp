// A backlight driver that is missing, refuses or does not answer: the log, the exit code, and what the screen shows.
#include "tests/scenario/SavingPanel.h"

TEST(ScreenSaver, StopsWatchingWhenTheDriverRefusesOnTheMonitorsThread) {
    const struct {
        const char* operation;
        const char* line;
    } cases[] = {{"read", "ERROR;Get back light settings failed"}, {"write", "ERROR;Cannot update driver settings"}};
    for (const auto& each : cases) {
        SavingPanel panel(true, 5000, 0);
        panel.refuse(each.operation);
        panel.user(false);
        panel.pass(5000);
        EXPECT_EQ(panel.errors(), Lines{each.line});
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "black"); // and stays so: it does not count as engaged
        panel.obey();
        panel.user(true);
        EXPECT_EQ(panel.blackWindow(), "black");
        EXPECT_EQ(panel.tell(5, 0), 0); // until it is removed
        panel.driver().settle();
        EXPECT_EQ(panel.blackWindow(), "none");
        EXPECT_EQ(panel.terminate(), 0U);
    }
    for (const bool obeysAtTheEnd : {true, false}) {
        SavingPanel panel(true, 5000, 0);
        panel.user(false);
        panel.pass(5000);
        panel.refuse("write");
        panel.user(true);
        EXPECT_EQ(panel.errors(), Lines{"ERROR;Cannot update driver settings"});
        EXPECT_EQ(panel.levels(), dimmedTo(0)); // behind no window any more
        EXPECT_EQ(panel.blackWindow(), "hidden");
        panel.user(false);
        panel.user(true);
        EXPECT_EQ(panel.levels(), dimmedTo(0));
        if (obeysAtTheEnd)
            panel.obey();
        EXPECT_EQ(panel.terminate(), obeysAtTheEnd ? 0U : 1U);
        EXPECT_EQ(panel.levels(), obeysAtTheEnd ? usersLevels : dimmedTo(0));
        EXPECT_EQ(panel.lastLines(2),
                  obeysAtTheEnd ? (Lines{"INFO;Module manager terminated", "INFO;Helper terminated"})
                                : (Lines{"ERROR;Exception ScreenBackLightException: Cannot update driver settings",
                                         "INFO;Helper terminated"}));
    }
}

TEST(ScreenSaver, EndsTheHelperWhenItsDriverFailsOnTheMainThread) {
    const struct {
        const char* refused; // empty: the driver has gone
        bool dimmed;
        std::uint64_t command;
        int argument;
        const char* error;
    } cases[] = {{"", false, 2, 1, "Driver open failed"},
                 {"", false, 5, 1, "Driver open failed"},
                 {"", false, 1, 0, "Driver open failed"},
                 {"read", false, 5, 1, "Get back light settings failed"}, // dimming at once
                 {"write", false, 5, 1, "Cannot update driver settings"},
                 {"write", true, 2, 0, "Cannot update driver settings"}, // restoring
                 {"write", true, 5, 0, "Cannot update driver settings"}};
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message() << each.refused << each.command << each.argument);
        const bool gone = !*each.refused;
        SavingPanel panel(!gone, 5000, 0);
        if (each.dimmed) {
            panel.user(false);
            panel.pass(5000);
        }
        if (gone) {
            panel.panel().devices().setPresent("BKL1", false);
            panel.configure(true, 5000, 0);
        } else {
            panel.refuse(each.refused);
        }
        EXPECT_EQ(panel.tell(each.command, each.argument), 0);
        EXPECT_EQ(panel.exitCode(), 1U);
        const std::string error = std::string("ERROR;Exception ScreenBackLightException: ") + each.error;
        EXPECT_EQ(panel.lastLines(2), (Lines{error, "INFO;Helper terminated"}));
        EXPECT_EQ(panel.errors(), Lines{error});
        EXPECT_EQ(panel.levels(), each.dimmed ? dimmedTo(0) : usersLevels); // until the power goes
        EXPECT_EQ(panel.blackWindow(), "none");
        EXPECT_EQ(panel.cursor(), each.dimmed ? -1 : 0);
        panel.reboot();
        EXPECT_EQ(panel.levels(), usersLevels);
    }
}
