// The screen saver, as the operator sees it: what it asks of the backlight, what covers the screen, what it obeys.
#include "platform/panel/Client.h"
#include "platform/panel/Operator.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <algorithm>

using Lines = std::vector<std::string>;
using Words = std::vector<std::uint32_t>;
using panel::Behaviour;

namespace {

const Words usersLevels{200, 1, 200, 1}; // of a new panel

Words dimmedTo(std::uint32_t level) {
    return {level, 1, level, 1};
}

// A panel whose helper runs with these settings.
struct SavingPanel : ScenarioPanel {
    SavingPanel() {
        install();
    }
    SavingPanel(bool enabled, int timeout, int level) : SavingPanel() {
        configure(enabled, timeout, level);
        begin();
    }

    void configure(bool enabled, int timeout, int level) {
        write("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml",
              "<ScreenSaver><Settings><Enabled>" + std::to_string(enabled) + "</Enabled><UserInactivityTimeout>" +
                  std::to_string(timeout) + "</UserInactivityTimeout><MinLuminosityLevel>" + std::to_string(level) +
                  "</MinLuminosityLevel></Settings></ScreenSaver>");
    }

    void begin() {
        driver().start(helper);
        EXPECT_TRUE(reachesLoop());
        driver().settle();
    }

    std::optional<std::int64_t> tell(std::uint64_t command, std::int64_t argument) {
        return panel::sendMessage(panel::findWindow("ORVATarvexHelper"), "ORVATarvexScreenSaverMsg", command, argument,
                                  limit);
    }

    void user(bool active) {
        panel::setUserActive(active);
        driver().settle();
    }

    void pass(std::uint64_t milliseconds) {
        driver().advance(milliseconds);
        driver().settle();
    }

    void refuse(const char* operation) {
        panel().devices().setBehaviour("BKL1", {Behaviour::Kind::refuse, 31}, operation);
    }
    void obey() {
        panel().devices().setBehaviour("BKL1", {});
    }

    Words levels() {
        return driver().status().backLight;
    }
    std::uint64_t time() {
        return driver().status().time;
    }

    // "none", "hidden", or "black": then it is all that the screen shows.
    std::string blackWindow() {
        const panel::PanelStatus status = driver().status();
        if (status.screen.cover == "ORVAScreenSaver")
            return status.screen.background;
        for (const panel::WindowStatus& window : status.windows)
            if (window.className == "ORVAScreenSaver")
                return window.visible ? "visible, but not covering" : "hidden";
        return "none";
    }

    std::int32_t cursor() {
        return driver().status().screen.cursorCount;
    }

    // After a command that the helper does not survive.
    std::uint32_t exitCode() {
        EXPECT_TRUE(driver().waitUntil([this] { return driver().status().processes.empty(); }, limit));
        return exitCodeOf("TarvexHelper.exe#1");
    }

    // What the helper's thread did with screen and backlight since the trace was switched on.
    Lines steps(const std::string& thread) const;
};

std::string between(const std::string& text, const std::string& first, const std::string& last) {
    const auto begin = text.find(first) + first.size();
    return text.substr(begin, text.find(last, begin) - begin);
}

Lines SavingPanel::steps(const std::string& thread) const {
    Lines found;
    std::string changeEvent;
    for (const std::string& line : trace()) {
        if (line.find(" TarvexHelper.exe#1 " + thread + ' ') == std::string::npos)
            continue;
        const auto is = [&](const char* function) { return line.find(std::string(" ") + function + "[") != line.npos; };
        if (is("PostMessageW"))
            found.push_back("post " + between(line, ", ", ","));
        else if (is("DeviceIoControl"))
            found.push_back(line.find("0x1130408") != line.npos ? "read" : "write " + between(line, "c, {", " "));
        else if (is("CreateEventW") && line.find("\"BackLightLevelChangeEvent\"") != line.npos)
            changeEvent = between(line, ") = ", " ");
        else if (!changeEvent.empty() && line.find('(' + changeEvent) != line.npos)
            found.push_back(is("EventModify") ? "change event set" : "change event closed");
        else if (is("ShowCursor"))
            found.push_back("cursor " + between(line, "(", ")"));
        else if (is("ShowWindow"))
            found.push_back("window " + between(line, ", ", ")"));
    }
    return found;
}

const Lines changed{"change event set", "change event closed"};

Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

} // namespace

TEST(ScreenSaver, DimsAfterTheTimeoutAndRestoresInOrder) {
    const struct {
        int level;
        std::uint32_t dimmed;
        const char* written;
        bool black;
    } cases[] = {{0, 0, "00", true}, {1, 0, "00", false}, {128, 127, "7f", false}, {255, 254, "fe", false}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.level);
        SavingPanel panel(true, 60000, each.level);
        panel.panel().devices().setValues("BKL1", {90, 1, 91, 1}); // the user's own choice, made while it is bright
        panel.driver().setTracing(true);
        panel.user(false);
        panel.pass(59999);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.blackWindow(), "hidden");
        panel.pass(1);
        EXPECT_EQ(panel.levels(), dimmedTo(each.dimmed));
        EXPECT_EQ(panel.blackWindow(), each.black ? "black" : "hidden");
        EXPECT_EQ(panel.cursor(), each.black ? -1 : 0);
        const auto dimming = panel.panel().devices().requests("BKL1").back();
        EXPECT_EQ(dimming.time, 60000U);
        EXPECT_EQ(dimming.thread, 2U);
        panel.pass(3600000);
        panel.user(true);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.blackWindow(), "hidden");
        EXPECT_EQ(panel.cursor(), each.black ? 0 : 1);
        const auto signals = panel.driver().status().signals;
        EXPECT_TRUE(std::any_of(signals.begin(), signals.end(), [](const panel::SignalStatus& signal) {
            return signal.event == "BackLightLevelChangeEvent" && signal.count == 2;
        }));
        const Lines show = each.black ? Lines{"post 0x401"} : Lines{};
        EXPECT_EQ(
            panel.steps("t2"),
            joined(
                {show, {"read", std::string("write ") + each.written}, changed, {"post 0x402", "write 5a"}, changed}));
        const Lines shown = each.black ? Lines{"cursor 0", "window 5"} : Lines{};
        EXPECT_EQ(panel.steps("t1"), joined({shown, {"cursor 1", "window 0"}})) << "hides what it has not shown, too";
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.levels(), (Words{90, 1, 91, 1}));
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(ScreenSaver, LosesCountOfTheCursorWithoutABlackScreen) {
    SavingPanel panel(true, 5000, 32);
    for (int round = 0; round < 3; ++round) {
        panel.user(false);
        panel.pass(5000);
        panel.user(true);
    }
    EXPECT_EQ(panel.cursor(), 3);
    EXPECT_EQ(panel.tell(4, 0), 0);
    panel.user(false);
    panel.pass(5000);
    EXPECT_EQ(panel.blackWindow(), "black");
    EXPECT_EQ(panel.cursor(), 2); // shown, over the black
    EXPECT_EQ(panel.tell(2, 0), 0);
    panel.driver().settle();
    EXPECT_EQ(panel.cursor(), 4);
}

TEST(ScreenSaver, StaysAwayWhileTheUserIsActiveInTime) {
    SavingPanel panel(true, 5000, 32);
    for (int round = 0; round < 3; ++round) {
        panel.user(false);
        panel.pass(4999);
        panel.user(true);
        panel.pass(100000);
    }
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.panel().devices().requests("BKL1").size(), 1U);
    EXPECT_EQ(panel.terminate(), 0U);
}

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
    SavingPanel panel(true, 5000, 0);
    for (const char* document : documents) {
        EXPECT_EQ(panel.tell(5, 1), 0);
        panel.driver().settle();
        EXPECT_EQ(panel.blackWindow(), "black");
        panel.write("\\MMCMemory\\Tarvex\\ScreenSaverConfig.xml", document);
        EXPECT_EQ(panel.tell(1, 0), 2);
        panel.driver().settle();
        EXPECT_EQ(panel.levels(), usersLevels);
        EXPECT_EQ(panel.blackWindow(), "none");
        EXPECT_EQ(panel.tell(3, 1000), 0);
        EXPECT_EQ(panel.blackWindow(), "none");
    }
    EXPECT_EQ(panel.errors(), Lines(3, "ERROR;ScreenSaverModule;settings error"));
    panel.configure(true, 5000, 64);
    EXPECT_EQ(panel.tell(1, 0), 0);
    EXPECT_EQ(panel.blackWindow(), "hidden");
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(ScreenSaver, TakesValuesOfTheFileAsTheyAre) {
    SavingPanel panel(true, -1, 300); // a time-out for ever, a level above the highest
    panel.user(false);
    panel.pass(1000000000);
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.tell(5, 1), 0);
    EXPECT_EQ(panel.levels(), dimmedTo(298));
    EXPECT_EQ(panel.log().back(), "INFO;ScreenSaverModule;message handled 5 result: 0");
    EXPECT_EQ(panel.log().at(2),
              "INFO;ScreenSaverModule;settings loaded;timeout: 4294967295 backlight: 300 enabled: 1");
}

TEST(ScreenSaver, EndsTheHelperWithoutItsDriver) {
    const Lines end{"ERROR;Exception ScreenBackLightException: Driver open failed", "INFO;Helper terminated"};
    SavingPanel atBoot;
    atBoot.panel().devices().setPresent("BKL1", false);
    EXPECT_EQ(atBoot.run(ScenarioPanel::helper), 1U);
    EXPECT_EQ(atBoot.log(), joined({{"INFO;Init of Helper", "INFO;Module manager initialization"},
                                    {ScenarioPanel::moduleLines().front()},
                                    end}));
    for (const auto& [command, argument] : {std::pair{2, 1}, {5, 1}, {1, 0}}) {
        SavingPanel panel(false, 5000, 128);
        panel.panel().devices().setPresent("BKL1", false);
        panel.configure(true, 5000, 128);
        EXPECT_EQ(panel.tell(static_cast<std::uint64_t>(command), argument), 0);
        EXPECT_EQ(panel.exitCode(), 1U);
        Lines log = panel.log();
        EXPECT_EQ(Lines(log.end() - 2, log.end()), end);
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
        const Lines log = panel.log();
        EXPECT_EQ(Lines(log.end() - 2, log.end()),
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
        EXPECT_EQ(panel.levels(), dimmedTo(0)); // for good
        EXPECT_EQ(panel.blackWindow(), "none");
    }
}

TEST(ScreenSaver, ObeysOnlyCommandsWithoutAPowerManager) {
    SavingPanel panel;
    panel.panel().devices().setPresent("PowerManager", false);
    panel.reboot();
    panel.configure(true, 5000, 0);
    panel.begin();
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

TEST(ScreenSaver, RestoresTheScreenAtItsEnd) {
    SavingPanel panel(true, 5000, 0);
    panel.user(false);
    panel.pass(5000);
    EXPECT_EQ(panel.blackWindow(), "black");
    panel.driver().setTracing(true);
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.levels(), usersLevels);
    EXPECT_EQ(panel.blackWindow(), "none");
    // Nobody serves the window any more: what is posted to it is lost, and it goes with the process. The cursor does
    // not come back.
    EXPECT_EQ(panel.cursor(), -1);
    EXPECT_EQ(panel.steps("t1"),
              joined({{"post 0x10"}, {"post 0x402", "write c8"}, changed, {"post 0x402", "post 0x10"}}));
    EXPECT_EQ(panel.errors(), Lines{});
}

TEST(ScreenSaver, FailsTheEndOfAHelperWhoseMonitorDoesNotEnd) {
    SavingPanel panel(true, 5000, 128);
    panel.panel().devices().setBehaviour("BKL1", {Behaviour::Kind::block, 0}, "read");
    panel.user(false);
    panel.pass(5000); // its thread waits in the driver for ever
    const std::uint64_t asked = panel.time();
    EXPECT_EQ(panel.terminate(), 1U);
    EXPECT_EQ(panel.driver().status().ended.back().time, asked + 40000);
    EXPECT_EQ(panel.errors(),
              Lines{"ERROR;Exception UserInactivityMonitorException: Failed to terminate monitor thread"});
    EXPECT_EQ(panel.levels(), usersLevels);
}
