// The commands of the screen saver, with their limits and the odd states between them.
#include "tests/scenario/SavingPanel.h"
#include "tests/support/ModuleSettings.h"

TEST(ScreenSaver, AnswersItsCommandsWithinTheirLimits) {
    const struct {
        std::uint64_t command;
        std::int64_t argument;
        int result;
    } cases[] = {
        {0, 0, 1},
        {6, 1, 1},
        {0x80000001, 1, 1},
        {1, 7, 0},
        {3, 0, 3},
        {3, -1, 3},
        {3, -2147483648LL, 3},
        {3, 1, 0},
        {3, 2147483647, 0},
        {4, -1, 3},
        {4, 0, 0},
        {4, 255, 0},
        {4, 256, 3},
        {5, 0, 0},
        {2, 0, 0},
        {2, 1, 0},
        {2, -2147483648LL, 0},
        {5, -1, 0},
    };
    SavingPanel panel(false, 5000, 128);
    Lines expected = panel.log();
    for (const auto& each : cases) {
        EXPECT_EQ(panel.tell(each.command, each.argument), each.result) << each.command << ' ' << each.argument;
        const std::string code = std::to_string(each.command);
        expected.push_back("INFO;ScreenSaverModule;message received " + code);
        if (each.command == 1)
            expected.push_back("INFO;ScreenSaverModule;settings loaded;timeout: 5000 backlight: 128 enabled: 0");
        expected.push_back("INFO;ScreenSaverModule;message handled " + code +
                           " result: " + std::to_string(each.result));
    }
    EXPECT_EQ(panel.log(), expected);
    EXPECT_EQ(panel.levels(), dimmedTo(254));
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.levels(), usersLevels);
}

TEST(ScreenSaver, KeepsTheOddStatesBetweenItsCommands) {
    using Commands = std::vector<std::pair<int, int>>;
    struct State {
        std::uint32_t after; // ms of inactivity until it engages; 0: at once; 1: never, there is none
        std::uint32_t level = 0;
        bool black = false;
    };
    constexpr State none{1};
    constexpr State defaults{60000, 0, true};
    const struct {
        bool enabled; // by the file, with 5000 ms and level 128
        Commands commands;
        State state;
    } cases[] = {
        {true, {}, {5000, 127}},
        {true, {{3, 1000}}, {1000, 127}},
        {true, {{3, 0}, {4, 256}}, {5000, 127}},
        {true, {{4, 0}}, {5000, 0, true}},
        {true, {{4, 1}}, {5000, 0}},
        {true, {{4, 255}}, {5000, 254}},
        {true, {{3, 1000}, {4, 0}, {1, 0}}, {5000, 127}},
        {true, {{2, 0}}, none},
        {true, {{2, 1}}, {5000, 127}}, // there is one already
        {true, {{2, 0}, {2, 1}}, defaults},
        {true, {{2, 0}, {2, 1}, {4, 64}}, {5000, 63}},
        {true, {{2, 0}, {3, 1000}}, {1000, 127}}, // which brings it back
        {true, {{2, 0}, {5, 1}}, none}, // already enabled, so nothing is made
        {true, {{5, 1}}, {0, 127}},
        {true, {{5, 0}}, none},
        {true, {{5, 0}, {3, 1000}, {4, 9}}, none},
        {true, {{5, 0}, {3, 1000}, {4, 9}, {5, 1}}, {0, 8}},
        {false, {}, none},
        {false, {{3, 1000}, {4, 9}}, none},
        {false, {{2, 1}}, defaults},
        {false, {{2, 1}, {3, 1000}}, none},
        {false, {{2, 1}, {4, 9}}, none},
        {false, {{2, 1}, {1, 0}}, none},
        {false, {{2, 1}, {3, 0}, {4, -1}}, defaults}, // out of range: nothing is applied
        {false, {{2, 1}, {5, 1}}, {0, 127}},
        {false, {{5, 1}, {2, 0}}, none},
        {false, {{5, 1}, {2, 0}, {3, 1000}}, {1000, 127}},
    };
    for (const auto& each : cases) {
        std::string name = each.enabled ? "enabled" : "disabled";
        SavingPanel panel(each.enabled, 5000, 128);
        for (const auto& [command, argument] : each.commands) {
            name += ' ' + std::to_string(command) + '(' + std::to_string(argument) + ')';
            panel.tell(static_cast<std::uint64_t>(command), argument);
        }
        SCOPED_TRACE(name);
        panel.driver().settle();
        const bool absent = each.state.after == 1;
        EXPECT_EQ(panel.blackWindow() == "none", absent);
        if (each.state.after != 0) {
            EXPECT_EQ(panel.levels(), usersLevels);
            panel.user(false);
            panel.pass(absent ? 100000 : each.state.after - 1);
            EXPECT_EQ(panel.levels(), usersLevels);
            panel.pass(1);
        }
        EXPECT_EQ(panel.levels(), absent ? usersLevels : dimmedTo(each.state.level));
        EXPECT_EQ(panel.blackWindow(), absent ? "none" : each.state.black ? "black" : "hidden");
        panel.user(false);
        panel.user(true);
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.terminate(), 0U);
    }
}

TEST(ScreenSaver, IsOffAfterAReloadThatFails) {
    const char* documents[] = {
        "",
        "<ScreenSaver><Settings><Enabled>1</Enabled><UserInactivityTimeout>1</UserInactivityTimeout></Settings>"
        "</ScreenSaver>",
        "<ScreenSaver><Settings><Enabled>yes</Enabled><UserInactivityTimeout>1</UserInactivityTimeout>"
        "<MinLuminosityLevel>1</MinLuminosityLevel></Settings></ScreenSaver>",
    };
    SavingPanel panel(true, 5000, 64);
    EXPECT_EQ(panel.tell(5, 1), 0);
    const auto requests = [&] { return panel.panel().devices().requests("BKL1").size(); };
    const std::size_t asked = requests();
    EXPECT_EQ(panel.tell(1, 0), 0);
    EXPECT_EQ(requests(), asked) << "a reload leaves one that is engaged as it is";
    for (const char* document : documents) {
        EXPECT_EQ(panel.tell(5, 1), 0);
        EXPECT_EQ(panel.levels(), dimmedTo(63));
        panel.write(saverSettingsPath, document);
        EXPECT_EQ(panel.tell(1, 0), 2);
        panel.driver().settle();
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "none");
        EXPECT_EQ(panel.tell(5, 1), 0); // from now on with the defaults
        for (const bool active : {false, true, false})
            panel.user(active);
        panel.pass(59999);
        EXPECT_EQ(panel.levels(), usersLevels);
        panel.pass(1);
        EXPECT_EQ(panel.levels(), dimmedTo(0));
        EXPECT_EQ(panel.blackWindow(), "black");
        panel.user(true);
        EXPECT_EQ(panel.tell(5, 0), 0);
        EXPECT_EQ(panel.tell(3, 1000), 0);
        panel.driver().settle();
        EXPECT_EQ(panel.blackWindow(), "none");
        panel.configure(true, 5000, 64);
        EXPECT_EQ(panel.tell(1, 0), 0);
        EXPECT_EQ(panel.blackWindow(), "hidden");
    }
    EXPECT_EQ(panel.errors(), Lines(3, "ERROR;ScreenSaverModule;settings error"));
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(ScreenSaver, ObeysOnlyCommandsWithoutAPowerManager) {
    SavingPanel panel;
    panel.panel().devices().setPresent("PowerManager", false);
    panel.reboot();
    panel.configure(true, 5000, 0);
    panel.startInPlace();
    EXPECT_EQ(panel.blackWindow(), "hidden");
    panel.pass(1000000);
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.tell(5, 1), 0);
    panel.pass(1000000);
    EXPECT_EQ(panel.levels(), dimmedTo(0));
    EXPECT_EQ(panel.blackWindow(), "black");
    EXPECT_EQ(panel.tell(2, 0), 0);
    panel.driver().settle();
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.blackWindow(), "none");
    EXPECT_EQ(panel.errors(), Lines{});
    EXPECT_EQ(panel.terminate(), 0U);
}
