// A backlight driver that is missing, refuses or does not answer: the log, the exit code, and what the screen shows.
#include "tests/scenario/SavingPanel.h"

TEST(ScreenSaver, EndsTheHelperWhenItsDriverHasGone) {
    const Lines end{"ERROR;Exception ScreenBackLightException: Driver open failed", "INFO;Helper terminated"};
    for (const auto& [command, argument] : {std::pair{2, 1}, {5, 1}, {1, 0}}) {
        SavingPanel panel(false, 5000, 128);
        panel.panel().devices().setPresent("BKL1", false);
        panel.configure(true, 5000, 128);
        EXPECT_EQ(panel.tell(static_cast<std::uint64_t>(command), argument), 0);
        EXPECT_EQ(panel.exitCode(), 1U);
        EXPECT_EQ(panel.lastLines(2), end);
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "none");
        EXPECT_EQ(panel.cursor(), 0);
    }
}

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

TEST(ScreenSaver, EndsTheHelperWhenTheDriverRefusesOnTheMainThread) {
    for (const char* operation : {"read", "write"}) { // dimming at once
        SavingPanel panel(true, 5000, 0);
        panel.refuse(operation);
        EXPECT_EQ(panel.tell(5, 1), 0);
        EXPECT_EQ(panel.exitCode(), 1U);
        EXPECT_EQ(panel.errors(), Lines{std::string("ERROR;Exception ScreenBackLightException: ") +
                                        (operation == std::string("read") ? "Get back light settings failed"
                                                                          : "Cannot update driver settings")});
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "none");
    }
    for (const auto& [command, argument] : {std::pair{2, 0}, {5, 0}}) { // restoring
        SavingPanel panel(true, 5000, 0);
        panel.user(false);
        panel.pass(5000);
        panel.refuse("write");
        EXPECT_EQ(panel.tell(static_cast<std::uint64_t>(command), argument), 0);
        EXPECT_EQ(panel.exitCode(), 1U);
        EXPECT_EQ(panel.errors(), Lines{"ERROR;Exception ScreenBackLightException: Cannot update driver settings"});
        EXPECT_EQ(panel.levels(), dimmedTo(0)); // until the power goes
        EXPECT_EQ(panel.blackWindow(), "none");
        panel.reboot();
        EXPECT_EQ(panel.levels(), usersLevels);
    }
}
