// A fresh simulated panel for tests that drive helper processes from outside, in stepped mode (but for what never
// waits: that needs flowing time). Its destructor ends all programs and fails the test if one of them left a
// sanitizer's report.
#pragma once

#include "platform/panel/Driver.h"
#include "tests/support/Folders.h"
#include "tests/support/TracedCall.h"

#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

Lines joined(std::initializer_list<Lines> parts);

// The helper under test, which PANEL_HELPER may name; otherwise that of this build.
std::filesystem::path helperFile();

// What a helper logs when it starts in place on a panel whose registry does not know it, and these lines behind it.
std::vector<std::string> firstStartLines(const std::vector<std::string>& further);

class ScenarioPanel {
public:
    static constexpr const char* helper = "\\MMCMemory\\Tarvex\\TarvexHelper.exe";
    static constexpr const char* application = "\\MMCMemory\\Tarvex\\Tarvex.exe";
    static constexpr std::uint32_t limit = 600000; // ms of panel time that nothing here may take

    explicit ScenarioPanel(std::uint32_t ticks = 0, double flowing = 0); // 0: stepped; else panel seconds a second
    ~ScenarioPanel();
    ScenarioPanel(const ScenarioPanel&) = delete;
    ScenarioPanel& operator=(const ScenarioPanel&) = delete;

    // ---- what is on the panel

    // A disk with the folder "Tarvex" as script/package makes it, with the application, a text and a subfolder.
    void plugDisk(const std::string& name);
    void put(std::string_view panelPath, const std::filesystem::path& file); // a copy
    void install(); // helper, application and the modules' settings in place
    void write(std::string_view panelPath, std::string_view content);
    std::string read(std::string_view panelPath) const;
    bool exists(std::string_view panelPath) const;
    // Every file and folder below it: relative path to content; folders end in "\". Logs are left out.
    std::map<std::string, std::string> tree(std::string_view panelPath) const;
    // Every value of the registry: "HKEY_LOCAL_MACHINE\init|Launch61" to "REG_SZ text", or to its type and bytes.
    std::map<std::string, std::string> registry(panel::registry::Copy copy = panel::registry::Copy::now) const;

    // ---- what happens on it

    // Starts the program and waits until it ends; fails the test if it does not.
    std::uint32_t run(const std::string& path, const std::string& commandLine = {});
    // Starts the helper in place and waits for its message loop.
    void startInPlace();
    // Waits until a helper's message loop runs; false if none gets there.
    bool reachesLoop();
    // Waits until the helper's loop runs or no helper is left; true: it runs.
    bool settlesInLoop();
    bool loopRuns();
    // A message to the helper's window, as "ORVATarvexBuzzerMsg", and its answer; empty: there is none.
    std::optional<std::int64_t> send(const char* message, std::uint64_t code, std::int64_t argument = 0,
                                     std::uint32_t limitOfAnswer = limit);
    std::optional<std::int64_t> command(std::uint64_t code); // "ORVATarvexMsg"
    // Sends command 1 and waits for the end; the exit code.
    std::uint32_t terminate();
    std::uint32_t exitCodeOf(const std::string& process); // "TarvexHelper.exe#2", which has ended
    bool isRunning(const std::string& process);
    // The k-th call of the function by the first helper's main thread will fail.
    void failCall(const char* function, std::uint32_t call = 1);
    // Lets time pass, until all is quiet.
    void pass(std::uint64_t milliseconds);

    // The helper's log so far, as it is in the files, oldest first.
    std::string logText() const;
    // Its lines without the time stamps: "INFO;Init of Helper".
    Lines log() const;
    Lines lastLines(std::size_t count) const; // of it, if it has so many
    std::vector<std::string> errors() const; // those lines of it
    // What the module manager and the modules write as they are made, with the settings of install() and plugDisk(), or
    // without any.
    static std::vector<std::string> managerLines(bool withSettings = true);
    // The helper's calls since the trace was switched on; with a name: of this function.
    std::vector<TracedCall> calls(std::string_view function = {}) const;
    // Power off and on again; what was plugged stays.
    void reboot();

    panel::Panel& panel() {
        return simulated;
    }
    panel::Driver& driver() {
        return *attached;
    }

private:
    void attach();
    void checkOutputs();

    const FreshFolder folder;
    panel::BootOptions bootOptions;
    panel::Panel simulated;
    std::unique_ptr<panel::Driver> attached;
};
