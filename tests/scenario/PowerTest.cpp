// The panel's power and its disks.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Lock.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* actor = "\\MMCMemory\\Actor.exe";

// A folder of the host with a file, and with a link that leads out of it.
struct HostFolder : FreshFolder {
    HostFolder() {
        writeText(path / "disk/sub/file.txt", "content");
        writeText(path / "precious/file.txt", "content");
        fs::create_directory_symlink(path / "precious", path / "disk/link");
    }
};

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

TEST(Power, BelongsToWhomHasBooted) {
    ScenarioPanel panel;
    panel.panel().checkOwner();
    const fs::path kernel = panel.panel().directory() / "run/kernel";
    const bool isRoot = geteuid() == 0; // else everybody counts as another one
    for (fs::path above = kernel.parent_path(); isRoot && above != fs::temp_directory_path();
         above = above.parent_path())
        fs::permissions(above, fs::perms(0755));
    fs::permissions(kernel, fs::perms(isRoot ? 0644 : 0));
    EXPECT_EQ(isRoot ? seteuid(65534) : 0, 0);
    try {
        panel.panel().checkOwner();
        ADD_FAILURE() << "everybody may";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find(" has booted this panel, and you are "), std::string::npos);
    }
    EXPECT_EQ(isRoot ? seteuid(0) : 0, 0);
    fs::permissions(kernel, fs::perms(0644));
}

TEST(Power, ACutLosesWhatTheRegistryHasNotFlushed) {
    const auto launches = [](const panel::Panel& panel) {
        const panel::registry::Tree tree = panel.registry(panel::registry::Copy::now);
        std::string names;
        for (const auto& value : tree.find("HKEY_LOCAL_MACHINE\\init")->values)
            names += value.name + ' ';
        return names;
    };
    const auto launch = [](ScenarioPanel& panel, const char* name, const char* path, bool flushed) {
        panel.panel().changeRegistry(
            [&](panel::registry::Tree& tree) {
                tree.make("HKEY_LOCAL_MACHINE\\init")->set(panel::registry::textValue(name, path));
            },
            flushed);
    };
    ScenarioPanel panel;
    panel.put(actor, programFile("Actor"));
    panel.put("\\Windows\\Other.exe", programFile("Actor"));
    launch(panel, "Launch61", actor, true);
    launch(panel, "launch7", "Other.exe", true);
    launch(panel, "Launch", actor, true); // has no number
    launch(panel, "Launch50", actor, false);
    panel.panel().cut();
    EXPECT_EQ(launches(panel.panel()), "Launch61 launch7 Launch ");
    panel.reboot();
    const auto starts = panel.driver().startInit();
    ASSERT_EQ(starts.size(), 2U);
    EXPECT_EQ(starts[0].process.name, "Other.exe#1"); // in the order of the numbers
    EXPECT_EQ(starts[1].process.name, "Actor.exe#1");
    EXPECT_EQ(panel.driver().status().processes[1].commandLine, "61");
    launch(panel, "Launch50", actor, false);
    panel.panel().off(); // an orderly end keeps it
    EXPECT_EQ(launches(panel.panel()), "Launch61 launch7 Launch Launch50 ");
}

TEST(Power, OnStartsWhatIsListedHoweverItIsWritten) {
    using panel::registry::Bytes;
    ScenarioPanel panel;
    panel.put("\\Windows\\A.exe", programFile("Actor"));
    const Bytes text{'A', 0, '.', 0, 'e', 0, 'x', 0, 'e', 0};
    Bytes trailing = text;
    trailing.insert(trailing.end(), {0, 0, 'B', 0});
    panel.panel().changeRegistry(
        [&](panel::registry::Tree& tree) {
            panel::registry::Key* init = tree.make("HKEY_LOCAL_MACHINE\\init");
            init->set({"Launch1", panel::registry::typeText, text});
            init->set({"Launch2", panel::registry::typeExpandText, trailing});
            init->set(panel::registry::numberValue("Launch3", 61));
            init->set(panel::registry::textValue("Launch4", ""));
            init->set(panel::registry::textValue("Launch4294967297", "A.exe"));
            init->set(panel::registry::textValue("Launch5x", "A.exe"));
        },
        false);
    std::string started;
    for (const panel::InitStart& start : panel.driver().startInit())
        started += std::to_string(start.number) + ' ' + start.process.name + start.failure + '\n';
    EXPECT_EQ(started, "1 A.exe#1\n2 A.exe#2\n3 it is no text\n4 it names no program\n");
}

TEST(Power, ACutInAProgramsCallLeavesWhatWasWrittenAndNothingElse) {
    ScenarioPanel panel;
    panel.install();
    panel.write("\\MMCMemory\\Tarvex\\config.xml", "replaced");
    // Three calls are the log's, the fourth is the settings'.
    panel.driver().addFault({"WriteFile", "TarvexHelper.exe", 1, 1, 4, false, panel::FaultAction::cut});
    const auto process = panel.driver().start(ScenarioPanel::helper);
    EXPECT_EQ(panel.driver().waitForExit(process, ScenarioPanel::limit), 0xC0000005U); // the waiting one is woken
    EXPECT_FALSE(panel.panel().isOn());
    EXPECT_EQ(panel.read("\\MMCMemory\\Tarvex\\config.xml"), ""); // opened for replacing
    EXPECT_EQ(panel.log(), firstStartLines({}));
    panel.reboot();
    panel.startInPlace();
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
    const HostFolder host;
    const fs::path folder = host.path / "disk";
    EXPECT_THROW(panel.panel().plug({{{panel.panel().directory(), "Hard Disk"}}}), std::runtime_error);
    panel.panel().plug({{{folder, "Hard Disk"}}});
    EXPECT_EQ(panel.read("\\Hard Disk\\sub\\file.txt"), "content");
    fs::remove(panel.panel().hostPath("\\Hard Disk\\sub\\file.txt"));
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was a copy
    panel.panel().plug({{{folder, "Hard Disk2"}}, 0, true});
    EXPECT_THROW(panel.panel().plug({{{folder, "hard disk2"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().plug({{{folder, "a\\b"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().plug({{{folder / "none", "Hard Disk3"}}}), std::runtime_error);
    EXPECT_THROW(panel.panel().disks().unplug("MMCMemory"), std::runtime_error);
    panel.put("\\Hard Disk2\\Tarvex\\TarvexHelper.exe", helperFile());
    fs::create_directory_symlink(host.path / "precious", folder / "Tarvex/link");
    EXPECT_EQ(panel.run("\\Hard Disk2\\Tarvex\\TarvexHelper.exe"), 0U); // which deletes its folder
    EXPECT_TRUE(fs::exists(host.path / "precious/file.txt")); // but nothing outside of the disk
    panel.reboot();
    EXPECT_EQ(panel.read("\\Hard Disk2\\sub\\file.txt"), "content"); // still plugged
    panel.panel().disks().unplug("HARD DISK2");
    EXPECT_TRUE(fs::exists(folder / "sub/file.txt")); // it was in place
    panel.panel().disks().unplug("Hard Disk");
    EXPECT_FALSE(panel.exists("\\Hard Disk"));
}

TEST(Disks, WrittenByHandNeverLeadOutOfThePanel) {
    ScenarioPanel panel;
    panel.write("\\precious.txt", "content");
    for (const char* volume : {"../precious", "", "MMCMemory", "windows"}) {
        writeText(panel.panel().directory() / "devices/disks.json",
                  R"([{"device":"DSK1:","inPlace":false,"readyAfter":0,"partitions":[{"volume":")" +
                      std::string(volume) + R"(","attributes":16}]}])");
        EXPECT_THROW(panel.panel().disks().unplug("DSK1:"), std::runtime_error) << volume;
    }
    EXPECT_TRUE(panel.exists("\\precious.txt"));
    EXPECT_TRUE(panel.exists("\\MMCMemory"));
    panel.panel().disks().create(); // empty again
}

TEST(Disks, OfTwoPluggedAtOnceBothStay) {
    ScenarioPanel panel;
    const HostFolder host;
    std::vector<pid_t> children;
    for (int index = 0; index < 6; ++index) {
        children.push_back(fork());
        if (children.back() == 0) {
            panel::Panel(panel.panel().directory()).plug({{{host.path / "disk", ""}}});
            _exit(0);
        }
    }
    for (const pid_t child : children)
        waitpid(child, nullptr, 0);
    for (int index = 0; index < 6; ++index)
        panel.panel().disks().unplug("Hard Disk" + (index ? std::to_string(index + 1) : ""));
}

TEST(Starting, IsFinishedWithoutAStarterThatWasKilled) {
    int names[2];
    ASSERT_EQ(pipe(names), 0);
    const pid_t starter = fork(); // before this process has a part in the panel
    if (starter == 0) { // a command of its own, killed before it lets the program run
        char directory[4096] = {};
        if (read(names[0], directory, sizeof directory - 1) > 0) {
            panel::Driver driver{panel::Panel(directory)};
            driver.start(actor, "sleep 1000 exit 5");
        }
        raise(SIGKILL);
    }
    ScenarioPanel panel;
    panel.put(actor, programFile("Actor"));
    const std::string directory = panel.panel().directory().string();
    ASSERT_EQ(write(names[1], directory.data(), directory.size()), static_cast<ssize_t>(directory.size()));
    waitpid(starter, nullptr, 0);
    const auto ended = [&] { return !panel.driver().status().ended.empty(); };
    EXPECT_TRUE(panel.driver().waitUntil(ended, 60000));
    EXPECT_EQ(panel.exitCodeOf("Actor.exe#1"), 5U);
    EXPECT_EQ(panel.run(actor, "sleep 1000 exit 6"), 6U); // and the clock is right
    EXPECT_EQ(panel.driver().status().time, 2000U);
}

TEST(Power, IsNotOnInACopyOfAPanel) {
    ScenarioPanel panel;
    const HostFolder host;
    fs::copy(panel.panel().directory(), host.path / "copy", fs::copy_options::recursive);
    EXPECT_FALSE(panel::Panel(host.path / "copy").isOn());
    EXPECT_TRUE(panel.panel().isOn());
    fs::resize_file(host.path / "copy/run/kernel", 100);
    panel::Panel(host.path / "copy").boot({});
    EXPECT_TRUE(panel::Panel(host.path / "copy").isOn());
    panel::Panel(host.path / "copy").off();
}
