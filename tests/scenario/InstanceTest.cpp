// One instance at a time, the hand-over in panel time, the follow-up of a restore, the end.
#include "tests/support/ScenarioPanel.h"
#include "tests/support/SettingsFile.h"

#include <gtest/gtest.h>

namespace {

const std::string restoring =
    settingsFile(3, {}, R"(    <Restore InProgress="1" RepositoryPath="\Hard Disk\a.osr" Force="0">
        <Components>
            <Component Name="one"/>
        </Components>
    </Restore>
)");

} // namespace

TEST(Instance, ASecondOneEndsAtOnceAndLogsNothing) {
    ScenarioPanel panel;
    panel.install();
    panel.driver().addFault({"CreateMutexW", "TarvexHelper.exe", 1});
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 0U); // nobody can tell whether it is the first one
    EXPECT_EQ(panel.log(), Lines{});
    panel.startInPlace();
    panel.put("\\Temp\\TarvexHelper.exe", helperFile());
    const Lines before = panel.log();
    const auto files = panel.tree("\\");
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 0U);
    EXPECT_EQ(panel.run("\\Temp\\TarvexHelper.exe"), 0U);
    EXPECT_EQ(panel.log(), before);
    EXPECT_EQ(panel.tree("\\"), files);
    EXPECT_EQ(panel.terminate(), 0U);
    panel.driver().start(ScenarioPanel::helper); // now that it is gone, the next one runs
    EXPECT_TRUE(panel.reachesLoop());
}

TEST(Instance, HandsOverInOrderAndAfterExactlyOneSecond) {
    for (const std::uint32_t ticks : {0U, 0xFFFFFFFFU - 499}) { // the second wraps in the middle of the pause
        ScenarioPanel panel(ticks);
        panel.plugDisk("Hard Disk");
        panel.driver().setTracing(true);
        EXPECT_EQ(panel.run("\\Hard Disk\\Tarvex\\TarvexHelper.exe"), 0U);
        ASSERT_TRUE(panel.reachesLoop());
        Lines steps; // of the first process: what it copied, its settings, and what came then
        std::uint64_t released = 0;
        std::uint64_t started = 0;
        for (const TracedCall& call : panel.calls()) {
            const std::string& function = call.function;
            const bool matters = function == "ReleaseMutex" || function == "Sleep" || function == "CreateProcessW" ||
                                 function == "CopyFileW" || call.firstText().ends_with("config.xml");
            if (call.process != 1 || !matters)
                continue;
            if (function != "CopyFileW" || steps.empty() || steps.back() != function) // copies in a row are one
                steps.push_back(function);
            if (function == "ReleaseMutex")
                released = call.time;
            if (function == "CreateProcessW") {
                started = call.time;
                EXPECT_NE(call.text.find("TarvexHelper.exe\", null)"), std::string::npos) << call.text;
            }
        }
        EXPECT_EQ(steps,
                  (Lines{"CopyFileW", "GetFileAttributesW", "CreateFileW", "ReleaseMutex", "Sleep", "CreateProcessW"}));
        EXPECT_EQ(started - released, 1000U);
        // The installed helper met no lock of its predecessor: it runs, and its stamps show the ticks of the panel.
        const std::string stamps = panel.read("\\MMCMemory\\Tarvex\\helper_log0.txt");
        EXPECT_EQ(stamps.find("2024-03-07 06:05:09," + std::to_string(ticks) + ";INFO;Init of Helper\n"), 0U);
        EXPECT_NE(stamps.find("2024-03-07 06:05:10," + std::to_string(ticks + 1000) + ";INFO;Init of Helper\n"),
                  std::string::npos);
    }
}

TEST(Instance, ReleasesItsLockOnceAndNeverClosesIt) {
    ScenarioPanel panel;
    panel.put("\\Temp\\TarvexHelper.exe", helperFile());
    panel.driver().setTracing(true);
    EXPECT_EQ(panel.run("\\Temp\\TarvexHelper.exe"), 0U);
    ASSERT_TRUE(panel.reachesLoop());
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 0U);
    EXPECT_EQ(panel.terminate(), 0U);
    // One hands over, one is told to end, one is too many.
    for (const std::uint32_t process : {1U, 2U, 3U}) {
        std::string mutex;
        Lines uses;
        for (const TracedCall& call : panel.calls()) {
            if (call.process != process)
                continue;
            if (call.function == "CreateMutexW") {
                EXPECT_EQ(call.arguments, "0, \"OrvaTarvexHelper.0\"");
                mutex = call.result;
            } else if (call.arguments == mutex && !mutex.empty()) {
                uses.push_back(call.function);
            }
        }
        EXPECT_EQ(uses, Lines{"ReleaseMutex"}) << process;
    }
}

TEST(Instance, StartsTheApplicationWhenARestoreIsInProgress) {
    ScenarioPanel panel;
    panel.install();
    panel.write(settingsPath, restoring);
    panel.startInPlace();
    Lines expected = ScenarioPanel::managerLines();
    expected.insert(expected.begin(), "INFO;Follow up needed");
    EXPECT_EQ(panel.log(), firstStartLines(expected));
    EXPECT_TRUE(panel.driver().waitUntil([&] { return !panel.isRunning("Tarvex.exe#1"); }, 60000));
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex\\Tarvex.started"), "-wait\n");
    EXPECT_EQ(panel.read(settingsPath), restoring);
    EXPECT_EQ(panel.terminate(), 0U);
}

TEST(Instance, FailsWithoutTheApplicationThatARestoreNeeds) {
    ScenarioPanel panel;
    panel.put(ScenarioPanel::helper, helperFile());
    panel.write(settingsPath, restoring + "<!-- -->");
    EXPECT_EQ(panel.run(ScenarioPanel::helper), 1U);
    EXPECT_EQ(panel.read(settingsPath), restoring) << "saved before";
    EXPECT_EQ(panel.log(),
              firstStartLines({"INFO;Follow up needed", "ERROR;Exception OrvaUtils::Exception: Cannot start tarvex"}));
}
