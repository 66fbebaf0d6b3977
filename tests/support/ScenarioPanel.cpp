#include "tests/support/ScenarioPanel.h"

#include "platform/panel/Client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

namespace {

constexpr const char* windowClass = "ORVATarvexHelper";
constexpr std::int64_t bootDate = 1709791509000; // 2024-03-07 06:05:09 UTC

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

fs::path freshDirectory() {
    std::string name = (fs::temp_directory_path() / "panel-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("cannot make a directory " + name);
    return name;
}

// Those of the package.
std::vector<fs::path> settingsFiles() {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(PANEL_SETTINGS))
        files.push_back(entry.path());
    return files;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
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

fs::path programFile(std::string_view name) {
    return fs::path(PANEL_PROGRAMS) / name;
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

ScenarioPanel::ScenarioPanel(std::uint32_t ticks, double flowing) {
    bootOptions.mode = flowing == 0 ? panel::ClockMode::stepped : panel::ClockMode::flowing;
    bootOptions.factor = flowing == 0 ? 1 : flowing;
    bootOptions.ticks = ticks;
    panel::PanelOptions options;
    options.date = bootDate;
    simulated = std::make_unique<panel::Panel>(panel::Panel::create(freshDirectory(), options));
    attach();
}

void ScenarioPanel::attach() {
    simulated->boot(bootOptions);
    attached = std::make_unique<panel::Driver>(*simulated);
}

ScenarioPanel::~ScenarioPanel() {
    attached->waitForLingering();
    attached.reset();
    checkOutputs();
    if (simulated->isOn())
        simulated->off();
    fs::remove_all(simulated->directory());
}

void ScenarioPanel::checkOutputs() {
    for (const fs::directory_entry& entry : fs::directory_iterator(simulated->directory() / "run/output"))
        EXPECT_EQ(contentOf(entry.path()), "") << entry.path().filename();
}

void ScenarioPanel::reboot() {
    attached->waitForLingering();
    attached.reset();
    checkOutputs();
    if (simulated->isOn())
        simulated->off();
    attach();
}

void ScenarioPanel::plugDisk(const std::string& name, bool withApplication) {
    const fs::path folder = freshDirectory();
    fs::create_directories(folder / "Tarvex/data/deep");
    fs::copy_file(helperFile(), folder / "Tarvex/TarvexHelper.exe");
    for (const fs::path& file : settingsFiles())
        fs::copy_file(file, folder / "Tarvex" / file.filename());
    if (withApplication)
        fs::copy_file(programFile("Tarvex"), folder / "Tarvex/Tarvex.exe");
    std::ofstream(folder / "Tarvex/readme.txt") << "from " << name;
    std::ofstream(folder / "Tarvex/data/deep/table.bin") << std::string(70000, 'x');
    simulated->plug({{{folder, name}}});
    fs::remove_all(folder);
}

void ScenarioPanel::put(std::string_view panelPath, const fs::path& file) {
    const fs::path place = simulated->hostPath(panelPath);
    fs::create_directories(place.parent_path());
    fs::copy_file(file, place, fs::copy_options::overwrite_existing);
}

void ScenarioPanel::install() {
    put(helper, helperFile());
    put(application, programFile("Tarvex"));
    for (const fs::path& file : settingsFiles())
        put("\\MMCMemory\\Tarvex\\" + file.filename().string(), file);
}

void ScenarioPanel::write(std::string_view panelPath, std::string_view content) {
    const fs::path place = simulated->hostPath(panelPath);
    fs::create_directories(place.parent_path());
    std::ofstream(place, std::ios::binary) << content;
}

std::string ScenarioPanel::read(std::string_view panelPath) const {
    EXPECT_TRUE(exists(panelPath)) << panelPath;
    return contentOf(simulated->hostPath(panelPath));
}

bool ScenarioPanel::exists(std::string_view panelPath) const {
    return fs::exists(simulated->hostPath(panelPath));
}

std::map<std::string, std::string> ScenarioPanel::tree(std::string_view panelPath) const {
    std::map<std::string, std::string> entries;
    const fs::path top = simulated->hostPath(panelPath);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(top)) {
        std::string name = entry.path().lexically_relative(top).string();
        std::replace(name.begin(), name.end(), '/', '\\');
        if (name.find("helper_log") != std::string::npos)
            continue;
        if (entry.is_directory())
            entries[name + '\\'];
        else
            entries[name] =
                entry.file_size() > 100000 ? std::to_string(entry.file_size()) + " bytes" : contentOf(entry.path());
    }
    return entries;
}

std::map<std::string, std::string> ScenarioPanel::registry(panel::registry::Copy copy) const {
    const panel::registry::Tree tree = simulated->registry(copy);
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

std::optional<std::int64_t> ScenarioPanel::command(std::uint64_t code) {
    return panel::sendMessage(panel::findWindow(windowClass), "ORVATarvexMsg", code, 0, limit);
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

std::vector<std::string> ScenarioPanel::log() const {
    std::vector<fs::path> files;
    for (const char* name : {"\\MMCMemory\\Tarvex\\helper_log0.txt", "\\MMCMemory\\Tarvex\\helper_log1.txt"})
        if (exists(name))
            files.push_back(simulated->hostPath(name));
    if (files.size() == 2 && fs::last_write_time(files[1]) < fs::last_write_time(files[0]))
        std::swap(files[0], files[1]);
    std::vector<std::string> lines;
    for (const fs::path& file : files)
        for (const std::string& line : linesOf(contentOf(file)))
            lines.push_back(line.substr(std::min(line.find(';') + 1, line.size())));
    return lines;
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

std::vector<std::string> ScenarioPanel::trace() const {
    return linesOf(contentOf(simulated->directory() / "run/trace"));
}
