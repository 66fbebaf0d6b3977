// The panel's power and its disks.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Lock.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* actor = "\\MMCMemory\\Actor.exe";

fs::path makeFolder(const ScenarioPanel&, const fs::path& folder) {
    fs::create_directories(folder / "sub");
    std::ofstream(folder / "sub/file.txt") << "content";
    return folder;
}

} // namespace

TEST(Power, EndsAllProgramsAndKeepsFilesAndTheDate) {
    for (const bool cut : {false, true}) {
        ScenarioPanel panel;
        panel.put(actor, programFile("Actor"));
        panel.driver().start(actor, "wait never");
        const auto pid = panel.driver().start(actor, "sleep 100000").hostPid;
        panel.driver().advance(5000);
        const auto born = panel::host::startTime(pid);
        const auto before = panel.driver().status();
        EXPECT_EQ(before.processes.size(), 2U);
        if (cut)
            panel.panel().cut();
        else
            panel.panel().off();
        EXPECT_FALSE(panel.panel().isOn());
        EXPECT_TRUE(panel::host::waitForEnd(pid, born, 60000));
        EXPECT_THROW(panel.panel().off(), std::runtime_error);
        panel.reboot();
        EXPECT_THROW(panel.panel().boot({}), std::runtime_error); // it is on
        const auto after = panel.driver().status();
        EXPECT_EQ(after.time, 0U);
        EXPECT_EQ(after.date, before.date);
        EXPECT_TRUE(after.processes.empty());
        EXPECT_TRUE(panel.exists(actor));
        EXPECT_EQ(panel.run(actor), 0U);
        EXPECT_EQ(panel.exitCodeOf("Actor.exe#1"), 0U); // starts are counted from boot
    }
}

TEST(Power, ACutInAProgramsCallLeavesWhatWasWrittenAndNothingElse) {
    ScenarioPanel panel;
    panel.install();
    panel.write("\\MMCMemory\\Tarvex\\config.xml", "replaced");
    panel::Fault cut;
    cut.function = "WriteFile";
    cut.program = "TarvexHelper.exe";
    cut.call = 2; // the first is the log's, the second the settings'
    cut.action = panel::FaultAction::cut;
    panel.driver().addFault(cut);
    const auto process = panel.driver().start(ScenarioPanel::helper);
    EXPECT_EQ(panel.driver().waitForExit(process, ScenarioPanel::limit), 0xC0000005U); // the waiting one is woken
    EXPECT_FALSE(panel.panel().isOn());
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex\\config.xml"), ""); // opened for replacing
    EXPECT_EQ(panel.log(), std::vector<std::string>{"INFO;Init of Helper"});
    panel.reboot();
    panel.driver().start(ScenarioPanel::helper);
    EXPECT_TRUE(panel.reachesLoop());
}

TEST(Power, TheKernelsLockIsTakenOverFromADeadOwner) {
    ScenarioPanel panel;
    panel::Image& image = panel::Runtime::instance().image();
    const pid_t child = fork();
    if (child == 0) {
        image.lock.store(static_cast<std::uint32_t>(getpid())); // holds it, and dies with it
        raise(SIGKILL);
    }
    waitpid(child, nullptr, 0);
    panel.driver().advance(10);
    EXPECT_EQ(panel.driver().status().time, 10U);
}

TEST(Disks, ArePluggedAsCopiesOrInPlaceAndUnplugged) {
    ScenarioPanel panel;
    const fs::path folder = makeFolder(panel, panel.panel().directory() / "my folder");
    panel.panel().plug(folder, "Hard Disk", false);
    EXPECT_EQ(panel.read("\\Hard Disk\\sub\\file.txt"), "content");
    fs::remove(panel.panel().hostPath("\\Hard Disk\\sub\\file.txt"));
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was a copy
    panel.panel().plug(folder, "Hard Disk2", true);
    EXPECT_THROW(panel.panel().plug(folder, "hard disk2", false), std::runtime_error);
    EXPECT_THROW(panel.panel().plug(folder, "a\\b", false), std::runtime_error);
    EXPECT_THROW(panel.panel().plug(folder / "none", "Hard Disk3", false), std::runtime_error);
    EXPECT_THROW(panel.panel().unplug("MMCMemory"), std::runtime_error);
    panel.reboot();
    EXPECT_EQ(panel.read("\\Hard Disk2\\sub\\file.txt"), "content"); // still plugged
    panel.panel().unplug("HARD DISK2");
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was in place
    panel.panel().unplug("Hard Disk");
    EXPECT_FALSE(panel.exists("\\Hard Disk"));
}
