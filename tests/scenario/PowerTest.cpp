// The panel's power: boot, off, a power cut, and what a damaged or lost kernel file costs.
#include "platform/panel/Runtime.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Lock.h"
#include "tests/support/ScenarioPanel.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* actor = "\\MMCMemory\\Actor.exe";

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
        panel::registry::Tree tree = panel.registry(panel::registry::Copy::now);
        std::string names;
        for (const auto& value : tree.make("HKEY_LOCAL_MACHINE\\init")->values)
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
    EXPECT_EQ(panel.driver().status().processes.at(1).commandLine, "61");
    launch(panel, "Launch50", actor, false);
    panel.panel().off(); // an orderly end keeps it
    EXPECT_EQ(launches(panel.panel()), "Launch61 launch7 Launch Launch50 ");
}

TEST(Power, ACutInAProgramsCallEndsTheWaitForTheProgram) {
    ScenarioPanel panel;
    panel.install();
    panel.driver().addFault({"WriteFile", "TarvexHelper.exe", 1, 1, 4, false, panel::FaultAction::cut});
    const auto process = panel.driver().start(ScenarioPanel::helper);
    EXPECT_EQ(panel.driver().waitForExit(process, ScenarioPanel::limit), 0xC0000005U);
    EXPECT_FALSE(panel.panel().isOn());
}

TEST(Power, TheKernelsLockIsTakenOverFromADeadOwner) {
    ScenarioPanel panel;
    panel::Image& image = panel::Runtime::instance().image();
    const pid_t child = fork();
    if (child == 0) {
        image.lock.store(panel::Lock::nameOf(getpid())); // holds it, and dies with it
        raise(SIGKILL);
    }
    waitpid(child, nullptr, 0);
    panel.driver().advance(10);
    EXPECT_EQ(panel.driver().status().time, 10U);
    image.lock.store(panel::Lock::nameOf(getppid()) ^ 1U << 22); // it began at another time: only its id is the same
    panel.driver().advance(10);
    EXPECT_EQ(panel.driver().status().time, 20U);
}

namespace {

// What a killed test leaves behind: a panel on which the helper runs, and a program that has started a script.
[[noreturn]] void driveAndDie(const fs::path& directory, int pids) {
    panel::Panel panel = newPanel(directory);
    fs::create_directories(panel.hostPath("\\MMCMemory\\Tarvex"));
    fs::copy_file(helperFile(), panel.hostPath(ScenarioPanel::helper));
    fs::copy_file(programFile("Actor"), panel.hostPath(actor));
    writeText(panel.hostPath("\\MMCMemory\\script.exe"), "#!/bin/sh\nsleep 1000\n");
    panel.boot({});
    panel::Driver driver(panel);
    driver.start(ScenarioPanel::helper);
    driver.start(actor, "start \\MMCMemory\\script.exe");
    driver.waitUntil([&] { return driver.status().processes.size() == 3; }, ScenarioPanel::limit);
    for (const auto& process : driver.status().processes)
        [[maybe_unused]] const auto written = write(pids, &process.hostPid, sizeof process.hostPid);
    raise(SIGKILL);
    _exit(0);
}

} // namespace

TEST(Power, NothingOutlivesATestThatIsKilled) {
    const FreshFolder host;
    int pids[2];
    ASSERT_EQ(pipe(pids), 0);
    const pid_t test = fork(); // before this process has a part in a panel
    if (test == 0)
        driveAndDie(host.path / "panel", pids[1]);
    close(pids[1]);
    int ended = 0;
    for (pid_t pid = 0; read(pids[0], &pid, sizeof pid) == sizeof pid; ++ended)
        EXPECT_TRUE(panel::host::waitForEnd(pid, panel::host::startTime(pid), 60000)) << pid;
    EXPECT_EQ(ended, 3);
    waitpid(test, nullptr, 0);
    panel::Panel(host.path / "panel").off();
}

TEST(Power, ADamagedKernelFileEndsWhatRunsAndIsNeverOff) {
    using panel::Image;
    const auto write = [](const fs::path& file, std::size_t place, std::uint32_t word) {
        std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(place)).write(reinterpret_cast<const char*>(&word), sizeof word);
    };
    enum class Then { error, off, stuck };
    const struct {
        const char* name;
        Then then;
        std::function<void(const std::string&)> damage;
    } rows[] = {
        {"cut short", Then::error, [](const auto& file) { fs::resize_file(file, 100); }},
        {"emptied", Then::error, [](const auto& file) { fs::resize_file(file, 0); }},
        {"no magic", Then::error, [&](const auto& file) { write(file, offsetof(Image, magic), 1); }},
        {"another version", Then::error, [&](const auto& file) { write(file, offsetof(Image, version), 1); }},
        {"another's", Then::error, [&](const auto& file) { write(file, offsetof(Image, fileInode), 1); }},
        {"unsound", Then::error, [&](const auto& file) { write(file, offsetof(Image, mouseHook), 1U << 30); }},
        {"changed", Then::error, [&](const auto& file) { write(file, offsetof(Image, cursorCount), 1); }},
        {"replaced", Then::off,
         [](const auto& file) {
             fs::copy_file(file, file + "2");
             fs::rename(file + "2", file);
         }},
        {"removed", Then::off, [](const auto& file) { fs::remove(file); }},
        {"removed, with a second name", Then::off,
         [](const auto& file) {
             fs::create_hard_link(file, file + "2");
             fs::remove(file);
         }},
        {"its folder moved away", Then::off,
         [](const auto& file) { fs::rename(fs::path(file).parent_path(), fs::path(file).parent_path() += "2"); }},
        {"the panel moved away, and a copy in its place", Then::off,
         [](const auto& file) {
             const fs::path root = fs::path(file).parent_path().parent_path();
             fs::rename(root, root.string() + "2");
             fs::copy(root.string() + "2", root, fs::copy_options::recursive);
         }},
        {"removed while its lock is held", Then::off,
         [](const auto& file) {
             panel::mapImage(file, false)->lock = panel::Lock::nameOf(getpid());
             fs::remove(file);
         }},
        {"a folder in its place", Then::error,
         [](const auto& file) {
             fs::remove(file);
             fs::create_directory(file);
         }},
        {"its lock held for ever", Then::stuck,
         [](const auto& file) { panel::mapImage(file, false)->lock = panel::Lock::nameOf(getpid()); }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const FreshFolder host;
        panel::Panel panel = newPanel(host.path / "panel");
        fs::copy_file(programFile("Actor"), panel.hostPath(actor));
        panel.boot({});
        const fs::path file = panel.directory() / "run/kernel";
        struct stat status {};
        stat(file.c_str(), &status);
        EXPECT_GE(status.st_blocks * 512, status.st_size); // no full disk can take it away again
        pid_t pid = 0;
        {
            panel::Driver driver(panel, panel::Driver::command, panel::Driver::Programs::stay);
            pid = driver.start(actor, "set begun wait never").hostPid;
            EXPECT_TRUE(driver.waitUntil([&] { return !driver.status().signals.empty(); }, ScenarioPanel::limit));
        }
        const auto born = panel::host::startTime(pid);
        row.damage(file);
        if (row.then == Then::stuck) {
            EXPECT_THROW(panel.off(), std::runtime_error); // the clock's date is lost
        }
        EXPECT_TRUE(panel::host::waitForEnd(pid, born, 60000));
        if (row.then == Then::error) {
            EXPECT_THROW(panel.isOn(), std::runtime_error);
            EXPECT_THROW(panel.boot({}), std::runtime_error);
            EXPECT_THROW(panel.off(), std::runtime_error);
        }
        EXPECT_FALSE(panel.isOn());
        panel.boot({});
        EXPECT_TRUE(panel.isOn());
        panel.off();
    }
}

namespace {

std::uint64_t switchesOf(pid_t pid) { // of the host's processor, by all its threads
    std::uint64_t sum = 0;
    for (const auto& thread : fs::directory_iterator("/proc/" + std::to_string(pid) + "/task")) {
        std::ifstream file(thread.path() / "status");
        for (std::string word; file >> word;)
            if (word.find("voluntary_ctxt_switches:") != std::string::npos && file >> word)
                sum += std::stoull(word);
    }
    return sum;
}

} // namespace

TEST(Power, AtRestInFlowingTimeAPanelWakesOnlyForEvents) {
    ScenarioPanel panel(0, 1);
    panel.install();
    panel.put(actor, programFile("Actor"));
    const auto helper = panel.driver().start(ScenarioPanel::helper);
    ASSERT_TRUE(panel.reachesLoop());
#if defined(__SANITIZE_THREAD__)
    bool rested = true; // the sanitizer's own thread never does
#else
    bool rested = false;
#endif
    for (int second = 0; second < 60 && !rested; ++second) { // the first ones may still see the start
        const std::uint64_t before = switchesOf(helper.hostPid);
        panel.driver().advance(1000);
        rested = switchesOf(helper.hostPid) == before;
    }
    EXPECT_TRUE(rested);
    panel.write("\\MMCMemory\\script.exe", "#!/bin/sh\nsleep 1000\n");
    const auto waiting = panel.driver().start(actor, "start \\MMCMemory\\script.exe");
    pid_t script = 0;
    EXPECT_TRUE(panel.driver().waitUntil(
        [&] {
            for (const auto& process : panel.driver().status().processes)
                script = process.name == "script.exe#1" ? process.hostPid : script;
            return script != 0;
        },
        ScenarioPanel::limit));
    kill(script, SIGKILL);
    EXPECT_EQ(panel.driver().waitForExit(waiting, ScenarioPanel::limit), 0xC0000005U); // who waits for it hears of it
    panel.terminate();
}
