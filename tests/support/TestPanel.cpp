#include "tests/support/TestPanel.h"

#include "platform/panel/Runtime.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>
#include <unistd.h>

namespace testing_panel {

namespace fs = std::filesystem;

namespace {

constexpr const char* helperPath = "\\MMCMemory\\Tarvex\\TarvexHelper.exe";
constexpr std::int64_t bootDate = 1709791509000; // 2024-03-07 06:05:09 UTC

std::unique_ptr<panel::Panel> current;
std::unique_ptr<panel::Driver> attached;
std::uintmax_t traceStart = 0;

fs::path freshDirectory() {
    std::string name = (fs::temp_directory_path() / "panel-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("cannot make a directory " + name);
    return name;
}

} // namespace

Session::Session() {
    panel::PanelOptions options;
    options.date = bootDate;
    current = std::make_unique<panel::Panel>(panel::Panel::create(freshDirectory(), options));
    panel::BootOptions boot;
    boot.mode = panel::ClockMode::stepped;
    current->boot(boot);
    attached = std::make_unique<panel::Driver>(*current, helperPath);
}

Session::~Session() {
    attached.reset();
    if (current->isOn())
        current->off();
    fs::remove_all(current->directory());
    current.reset();
}

panel::Driver& driver() {
    return *attached;
}

panel::Devices devices() {
    return current->devices();
}

fs::path panelDirectory() {
    return current->directory();
}

fs::path programFile(std::string_view name) {
    return fs::path(PANEL_PROGRAMS) / name;
}

fs::path hostPath(std::string_view panelPath) {
    return current->hostPath(panelPath);
}

std::string readText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << "no file " << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void writeText(const fs::path& file, std::string_view content) {
    std::ofstream(file, std::ios::binary) << content;
}

std::string readFile(std::string_view panelPath) {
    return readText(hostPath(panelPath));
}

void writeFile(std::string_view panelPath, std::string_view content) {
    fs::create_directories(hostPath(panelPath).parent_path());
    std::ofstream(hostPath(panelPath), std::ios::binary) << content;
}

bool exists(std::string_view panelPath) {
    return fs::exists(hostPath(panelPath));
}

std::vector<std::string> list(std::string_view panelPath) {
    std::vector<std::string> names;
    if (fs::is_directory(hostPath(panelPath)))
        for (const fs::directory_entry& entry : fs::directory_iterator(hostPath(panelPath)))
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

void advance(std::uint64_t milliseconds) {
    attached->advance(milliseconds);
}

void setTicks(std::uint32_t ticks) {
    attached->setTicks(ticks);
}

void failCall(const char* function, unsigned k, bool ever) {
    // Counted from now on: what this thread has called before does not matter to the test.
    panel::Fault fault;
    fault.function = function;
    fault.thread = panel::callingThreadNumber();
    fault.call = panel::callsMade(function) + k;
    fault.ever = ever;
    attached->addFault(fault);
}

void startTrace() {
    const fs::path file = current->directory() / "run/trace";
    traceStart = fs::exists(file) ? fs::file_size(file) : 0;
    attached->setTracing(true);
}

std::vector<std::string> trace() {
    std::ifstream file(current->directory() / "run/trace");
    file.seekg(static_cast<std::streamoff>(traceStart));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        // "      1000 TarvexHelper.exe#1 t1 Sleep[1](1000) = void"
        std::istringstream words(line);
        std::string skipped;
        words >> skipped >> skipped >> skipped >> std::ws;
        std::getline(words, line);
        const auto open = line.find('[');
        const auto close = line.find(']');
        lines.push_back(line.substr(0, open) + line.substr(close + 1));
    }
    return lines;
}

} // namespace testing_panel
