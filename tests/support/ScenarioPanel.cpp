#include "tests/support/ScenarioPanel.h"

#include "platform/panel/Client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace fs = std::filesystem;

namespace {

constexpr const char* windowClass = "ORVATarvexHelper";

// Those of the package.
std::vector<fs::path> settingsFiles() {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(PANEL_SETTINGS))
        files.push_back(entry.path());
    return files;
}

void collect(const panel::registry::Key& key, const std::string& path, std::map<std::string, std::string>& values) {
    for (const panel::registry::Value& value : key.values) {
        std::string text;
        const bool isText = value.type == panel::registry::typeText && panel::registry::textOf(value, text);
        values[path + '|' + value.name] =
            panel::registry::typeName(value.type) + ' ' + (isText ? text : panel::registry::hexOf(value.data));
    }
    for (const panel::registry::Key& below : key.keys)
        collect(below, path + '\\' + below.name, values);
}

} // namespace

Lines joined(std::initializer_list<Lines> parts) {
    Lines all;
    for (const Lines& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

fs::path helperFile() {
    const char* named = std::getenv("PANEL_HELPER");
    return named ? fs::path(named) : programFile("TarvexHelper");
}

std::vector<std::string> firstStartLines(const std::vector<std::string>& further) {
    std::vector<std::string> lines{"INFO;Init of Helper", "INFO;Configuring my autorun",
                                   "INFO;Associate .osr file to Tarvex.exe"};
    lines.insert(lines.end(), further.begin(), further.end());
    return lines;
}

ScenarioPanel::ScenarioPanel(std::uint32_t ticks, double flowing) : simulated(newPanel(folder.path)) {
    bootOptions.mode = flowing == 0 ? panel::ClockMode::stepped : panel::ClockMode::flowing;
    bootOptions.factor = flowing == 0 ? 1 : flowing;
    bootOptions.ticks = ticks;
    attach();
}

void ScenarioPanel::attach() {
    simulated.boot(bootOptions);
    attached = std::make_unique<panel::Driver>(simulated);
}

ScenarioPanel::~ScenarioPanel() {
    attached->waitForLingering();
    attached.reset();
    checkOutputs();
    if (simulated.isOn())
        simulated.off();
}

void ScenarioPanel::checkOutputs() {
    for (const fs::directory_entry& entry : fs::directory_iterator(simulated.directory() / "run/output"))
        EXPECT_EQ(readText(entry.path()), "") << entry.path().filename();
}

void ScenarioPanel::reboot() {
    attached->waitForLingering();
    attached.reset();
    checkOutputs();
    if (simulated.isOn())
        simulated.off();
    attach();
}

void ScenarioPanel::plugDisk(const std::string& name) {
    const FreshFolder disk;
    const fs::path top = disk.path / "Tarvex";
    writeText(top / "readme.txt", "from " + name);
    writeText(top / "data/deep/table.bin", std::string(70000, 'x'));
    fs::copy_file(helperFile(), top / "TarvexHelper.exe");
    for (const fs::path& file : settingsFiles())
        fs::copy_file(file, top / file.filename());
    fs::copy_file(programFile("Tarvex"), top / "Tarvex.exe");
    simulated.plug({{{disk.path, name}}});
}

void ScenarioPanel::put(std::string_view panelPath, const fs::path& file) {
    const fs::path place = simulated.hostPath(panelPath);
    fs::create_directories(place.parent_path());
    fs::remove(place); // the host refuses to write into a program that still ends
    fs::copy_file(file, place);
}

void ScenarioPanel::install() {
    put(helper, helperFile());
    put(application, programFile("Tarvex"));
    for (const fs::path& file : settingsFiles())
        put("\\MMCMemory\\Tarvex\\" + file.filename().string(), file);
}

void ScenarioPanel::write(std::string_view panelPath, std::string_view content) {
    writeText(simulated.hostPath(panelPath), content);
}

std::string ScenarioPanel::read(std::string_view panelPath) const {
    return readText(simulated.hostPath(panelPath));
}

bool ScenarioPanel::exists(std::string_view panelPath) const {
    return fs::exists(simulated.hostPath(panelPath));
}

std::map<std::string, std::string> ScenarioPanel::tree(std::string_view panelPath) const {
    std::map<std::string, std::string> entries;
    const fs::path top = simulated.hostPath(panelPath);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top)) {
        std::string name = entry.path().lexically_relative(top).string();
        std::replace(name.begin(), name.end(), '/', '\\');
        if (name.find("helper_log") != std::string::npos)
            continue;
        if (entry.is_directory())
            entries[name + '\\'];
        else
            entries[name] =
                entry.file_size() > 100000 ? std::to_string(entry.file_size()) + " bytes" : readText(entry.path());
    }
    return entries;
}

std::map<std::string, std::string> ScenarioPanel::registry(panel::registry::Copy copy) const {
    const panel::registry::Tree tree = simulated.registry(copy);
    std::map<std::string, std::string> values;
    for (const panel::registry::Key& root : tree.roots())
        collect(root, root.name, values);
    return values;
}

std::uint32_t ScenarioPanel::run(const std::string& path, const std::string& commandLine) {
    const auto process = attached->start(path, commandLine);
    const auto code = attached->waitForExit(process, limit);
    EXPECT_TRUE(code) << process.name << " does not end";
    return code.value_or(0xFFFFFFFF);
}

void ScenarioPanel::startInPlace() {
    attached->start(helper);
    EXPECT_TRUE(reachesLoop());
}

void ScenarioPanel::failCall(const char* function, std::uint32_t call) {
    attached->addFault({function, "TarvexHelper.exe", 1, 1, call});
}

void ScenarioPanel::pass(std::uint64_t milliseconds) {
    attached->advance(milliseconds);
    attached->settle();
}

bool ScenarioPanel::loopRuns() {
    return panel::findWindow(windowClass) != 0;
}

bool ScenarioPanel::reachesLoop() {
    return attached->waitUntil([this] { return loopRuns(); }, limit);
}

bool ScenarioPanel::settlesInLoop() {
    const auto settled = [this] { return loopRuns() || attached->status().processes.empty(); };
    EXPECT_TRUE(attached->waitUntil(settled, limit)) << "neither in the loop nor ended";
    return loopRuns();
}

std::optional<std::int64_t> ScenarioPanel::send(const char* message, std::uint64_t code, std::int64_t argument,
                                                std::uint32_t limitOfAnswer) {
    return panel::sendMessage(panel::findWindow(windowClass), message, code, argument, limitOfAnswer);
}

std::optional<std::int64_t> ScenarioPanel::command(std::uint64_t code) {
    return send("ORVATarvexMsg", code);
}

std::uint32_t ScenarioPanel::terminate() {
    EXPECT_EQ(command(1), 0);
    const auto gone = [this] { return attached->status().processes.empty(); };
    EXPECT_TRUE(attached->waitUntil(gone, limit)) << "the helper does not end";
    const auto ended = attached->status().ended;
    EXPECT_FALSE(ended.empty());
    return ended.empty() ? 0xFFFFFFFF : ended.back().exitCode;
}

std::uint32_t ScenarioPanel::exitCodeOf(const std::string& process) {
    for (const panel::EndedStatus& ended : attached->status().ended)
        if (ended.name == process)
            return ended.exitCode;
    ADD_FAILURE() << process << " has not ended";
    return 0xFFFFFFFF;
}

bool ScenarioPanel::isRunning(const std::string& process) {
    for (const panel::ProcessStatus& running : attached->status().processes)
        if (running.name == process)
            return true;
    return false;
}

std::string ScenarioPanel::logText() const {
    std::vector<fs::path> files;
    for (const char* name : {"\\MMCMemory\\Tarvex\\helper_log0.txt", "\\MMCMemory\\Tarvex\\helper_log1.txt"})
        if (exists(name))
            files.push_back(simulated.hostPath(name));
    if (files.size() == 2 && fs::last_write_time(files[1]) < fs::last_write_time(files[0]))
        std::swap(files[0], files[1]);
    std::string text;
    for (const fs::path& file : files)
        text += readText(file);
    return text;
}

std::vector<std::string> ScenarioPanel::log() const {
    return linesOf(withoutStamps(logText()));
}

Lines ScenarioPanel::lastLines(std::size_t count) const {
    Lines lines = log();
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(count, lines.size())));
    return lines;
}

std::vector<std::string> ScenarioPanel::errors() const {
    std::vector<std::string> lines = log();
    std::erase_if(lines, [](const std::string& line) { return line.find("ERROR;") != 0; });
    return lines;
}

std::vector<std::string> ScenarioPanel::managerLines(bool withSettings) {
    if (!withSettings)
        return {"INFO;Module manager initialization", "ERROR;ScreenSaverModule;settings error",
                "ERROR;BuzzerModule;settings error"};
    return {"INFO;Module manager initialization",
            "INFO;ScreenSaverModule;settings loaded;timeout: 300000 backlight: 32 enabled: 1",
            "INFO;BuzzerModule;settings loaded; enabled: 1"};
}

std::vector<TracedCall> ScenarioPanel::calls(std::string_view function) const {
    std::vector<TracedCall> found = tracedCalls(simulated.directory());
    std::erase_if(found, [&](const TracedCall& call) {
        return call.program != "TarvexHelper.exe" || (!function.empty() && call.function != function);
    });
    return found;
}
