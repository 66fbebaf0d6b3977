// "EMMC.xml" over a helper's life, from outside.
#include "tests/support/ScenarioPanel.h"
#include "tests/support/StatisticsFile.h"

#include <gtest/gtest.h>

using panel::Behaviour;

namespace {

constexpr const char* key = "HKEY_LOCAL_MACHINE\\ORVA"; // of the platform version
constexpr std::uint64_t hour = 3600000;

struct CountingPanel : ScenarioPanel {
    explicit CountingPanel(std::uint32_t ticks = 0) : ScenarioPanel(ticks) {
        install();
    }
    // With this count in the driver, so many ms after the boot.
    void startHelper(std::uint32_t counted, std::uint64_t after) {
        setCount(counted);
        driver().advance(after);
        startInPlace();
    }
    void setCount(std::uint32_t counted) {
        panel().devices().setValues("SHC1", {counted});
    }
};

} // namespace

TEST(EMMC, IsRecordedOverHoursAndReboots) {
    CountingPanel panel;
    panel.startHelper(500, 31999);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(500, 31, 500, 31));
    panel.pass(2 * hour);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(500, 7231, 500, 7231));
    panel.setCount(700);
    panel.pass(hour);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(700, 10831, 700, 10831));
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(700, 10831, 700, 10831)) << "the end writes nothing";

    panel.reboot();
    panel.startHelper(20, 5000); // the counter begins anew
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(20, 5, 720, 10836));
    panel.panel().devices().setBehaviour("SHC1", {Behaviour::Kind::refuse, 31}, "count");
    panel.pass(hour);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(0, 3605, 700, 14436));
    panel.panel().devices().setBehaviour("SHC1", {});
    panel.setCount(60);
    panel.pass(hour);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(60, 7205, 760, 18036));
    EXPECT_EQ(panel.terminate(), 0U);
    EXPECT_EQ(panel.errors(), Lines{}) << "nothing of this is reported";
}

TEST(EMMC, CountsWhatWasBeforeTheStartAsOftenAsTheHelperIsStarted) {
    CountingPanel panel(0xFFFFE000); // the tick count begins anew within the first session
    panel.startHelper(5, 0);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(5, 4294959, 5, 4294959));
    panel.pass(300000);
    EXPECT_EQ(panel.terminate(), 0U);
    panel.startHelper(5, 0);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(5, 291, 10, 4294959 + 300 + 291));
    EXPECT_EQ(panel.terminate(), 0U);
}

namespace {

// The calls of the monitor's thread in its first or second update.
std::vector<TracedCall> callsOfUpdate(unsigned update) {
    CountingPanel panel;
    panel.driver().setTracing(true);
    panel.startHelper(40, 0);
    panel.pass(300300);
    std::vector<TracedCall> calls = panel.calls();
    std::erase_if(calls, [updates = 1U, update](const TracedCall& call) mutable {
        const bool waits = call.thread == 2 && call.function == "WaitForSingleObject";
        updates += waits;
        return waits || call.thread != 2 || updates != update;
    });
    return calls;
}

// While the thread stands before the call, the start fails (update 1), or the helper is told to end (update 2). The
// total in the file then, and what the next start makes of it.
std::string leftBy(const TracedCall& call, unsigned update) {
    CountingPanel panel;
    panel.write(statisticsPath, statisticsFile(3, 5, 700000, 86443200));
    panel.driver().addFault({call.function, "TarvexHelper.exe", 1, 2, call.number, false, panel::FaultAction::hold});
    if (update == 1) {
        panel.setCount(40);
        panel.panel().devices().setBehaviour("BKL1", {Behaviour::Kind::block}, "read");
        const auto helper = panel.driver().start(ScenarioPanel::helper);
        panel.driver().settle();
        panel.panel().devices().setBehaviour("BKL1", {Behaviour::Kind::refuse, 31}, "read");
        EXPECT_EQ(panel.driver().waitForExit(helper, ScenarioPanel::limit), 1U);
        panel.panel().devices().setBehaviour("BKL1", {}, "read");
    } else {
        panel.startHelper(40, 0);
        panel.setCount(60);
        panel.driver().advance(300300);
        EXPECT_EQ(panel.terminate(), 1U);
    }
    EXPECT_EQ(panel.driver().faults().at(0).hits, 1U);
    const std::string left = panel.read(statisticsPath);
    const auto total = left.find("7000");
    panel.reboot();
    panel.startInPlace();
    const bool goesOn = panel.read(statisticsPath).find("<TotalDuration>864") != std::string::npos;
    return (total < left.size() ? left.substr(total, 6) : "empty") + (goesOn ? ", goes on" : ", from 0");
}

} // namespace

TEST(EMMC, LosesItsTotalsIfTheProcessEndsBetweenOpeningAndWriting) {
    const Lines expected[] = {
        {"EventModify: 700000, goes on", "WriteFile: empty, from 0", "CloseHandle: 700040, goes on"},
        {"GetFileAttributesW: 700040, goes on", "WriteFile: empty, from 0", "CloseHandle: 700060, goes on"},
    };
    for (const unsigned update : {1U, 2U}) {
        const std::vector<TracedCall> calls = callsOfUpdate(update);
        EXPECT_GE(calls.size(), 10U);
        Lines found; // each call from which on it costs something else
        for (std::string before; const TracedCall& call : calls) {
            const std::string left = leftBy(call, update);
            if (left != before)
                found.push_back(call.function + ": " + left);
            before = left;
        }
        EXPECT_EQ(found, expected[update - 1]);
    }
}

TEST(EMMC, IsRecordedFromVersion15On) {
    for (const auto& [version, recorded] : {std::pair{"2.14", false}, {"2.15", true}}) {
        SCOPED_TRACE(version);
        ScenarioPanel panel;
        panel.install();
        panel.panel().changeRegistry(
            [text = version](auto& tree) { tree.make(key)->set(panel::registry::textValue("Version", text)); }, true);
        panel.startInPlace();
        EXPECT_EQ(panel.exists(statisticsPath), recorded);
        EXPECT_EQ(panel.panel().devices().requests("SHC1").size(), recorded ? 1U : 0U);
        EXPECT_EQ(panel.terminate(), 0U);
        EXPECT_EQ(panel.errors(), Lines{});
    }
}

TEST(EMMC, AMissingVersionOrOneThatIsNoTextEndsTheHelper) {
    ScenarioPanel panel;
    panel.install();
    panel.panel().changeRegistry([](auto& tree) { tree.make(key)->values.remove("Version"); }, true);
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
    EXPECT_EQ(panel.log(), firstStartLines({"INFO;Module manager initialization",
                                            "ERROR;Exception OrvaUtils::Registry::RegistryException: "
                                            "Cannot query the given registry value",
                                            "INFO;Helper terminated"}));
    panel.panel().changeRegistry([](auto& tree) { tree.make(key)->set(panel::registry::numberValue("Version", 2)); },
                                 true);
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
    EXPECT_TRUE(panel.lastLines(2).at(0).ends_with("::RegistryException: Unexpected value type"));
    EXPECT_FALSE(panel.exists(statisticsPath));
}
