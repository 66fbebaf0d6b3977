// A simulated panel for measurements. It has a folder of its own, is on with a flowing clock, and has this process as a
// driver. All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Client.h"
#include "platform/panel/Driver.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

class MeasuredPanel {
public:
    MeasuredPanel() : simulated(panel::Panel::create(freshDirectory(), {})) {
        simulated.boot({});
        attached = std::make_unique<panel::Driver>(simulated);
    }

    ~MeasuredPanel() {
        attached.reset();
        simulated.off();
        std::filesystem::remove_all(directory());
    }

    MeasuredPanel(const MeasuredPanel&) = delete;
    MeasuredPanel& operator=(const MeasuredPanel&) = delete;

    const std::filesystem::path& directory() const {
        return simulated.directory();
    }

    panel::Devices devices() const {
        return simulated.devices();
    }

    std::filesystem::path hostPath(std::string_view panelPath) const {
        return simulated.hostPath(panelPath);
    }

    void writeFile(std::string_view panelPath, std::string_view content) const {
        std::filesystem::create_directories(hostPath(panelPath).parent_path());
        std::ofstream(hostPath(panelPath)) << content;
    }

    // Installs and starts this build's helper, or the helper that PANEL_HELPER in the environment names. Returns the
    // number of its window once the helper handles messages.
    std::uint32_t startHelper() {
        constexpr const char* installed = "\\MMCMemory\\Tarvex\\TarvexHelper.exe";
        const char* named = std::getenv("PANEL_HELPER");
        std::filesystem::create_directories(hostPath(installed).parent_path());
        std::filesystem::copy_file(named ? named : PANEL_PROGRAMS "/TarvexHelper", hostPath(installed));
        attached->start(installed);
        std::uint32_t window = 0;
        waitUntil([&window] { return (window = panel::findWindow("ORVATarvexHelper")) != 0; });
        return window;
    }

    // Throws after a minute.
    void waitUntil(const std::function<bool()>& condition) {
        constexpr std::uint32_t limit = 60000; // ms
        if (!attached->waitUntil(condition, limit))
            throw std::runtime_error("the helper does not get there");
    }

private:
    static std::filesystem::path freshDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "panel-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a directory " + name);
        return name;
    }

    panel::Panel simulated;
    std::unique_ptr<panel::Driver> attached;
};
