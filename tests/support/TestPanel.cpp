#include "tests/support/TestPanel.h"

#include "platform/panel/Runtime.h"
#include "tests/support/TracedCall.h"

#include <algorithm>
#include <memory>

namespace testing_panel {

namespace fs = std::filesystem;

namespace {

constexpr const char* helperPath = "\\MMCMemory\\Tarvex\\TarvexHelper.exe";

std::unique_ptr<panel::Panel> current;
std::unique_ptr<panel::Driver> attached;
std::uintmax_t traceStart = 0;

} // namespace

Session::Session() {
    current = std::make_unique<panel::Panel>(newPanel(folder.path));
    panel::BootOptions boot;
    boot.mode = panel::ClockMode::stepped;
    current->boot(boot);
    attached = std::make_unique<panel::Driver>(*current, helperPath);
}

Session::~Session() {
    attached.reset();
    if (current->isOn())
        current->off();
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

fs::path hostPath(std::string_view panelPath) {
    return current->hostPath(panelPath);
}

std::string readFile(std::string_view panelPath) {
    return readText(hostPath(panelPath));
}

void writeFile(std::string_view panelPath, std::string_view content) {
    writeText(hostPath(panelPath), content);
}

void put(std::string_view panelPath, const fs::path& file) {
    fs::create_directories(hostPath(panelPath).parent_path());
    fs::copy_file(file, hostPath(panelPath));
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

void pass(std::uint64_t milliseconds) {
    advance(milliseconds);
    attached->settle();
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

Lines trace(std::initializer_list<std::string_view> functions) {
    Lines lines;
    for (const TracedCall& call : tracedCalls(current->directory(), traceStart))
        if (functions.size() == 0 || std::find(functions.begin(), functions.end(), call.function) != functions.end())
            lines.push_back(call.text);
    return lines;
}

} // namespace testing_panel
