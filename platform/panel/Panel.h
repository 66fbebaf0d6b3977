// A simulated panel: a directory, and what can be done with its power and its disks.
//
//     fs/        the panel's file system
//     devices/   panel.json: screen size and the calendar clock's date; volumes.json: which top folders are volumes;
//                the devices (Devices.h)
//     run/       what a power cycle forgets: kernel, trace, output/ (what programs print)
//
// All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Devices.h"
#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

struct PanelOptions {
    std::uint32_t screenWidth = 800; // pixels
    std::uint32_t screenHeight = 480;
    std::int64_t date = -1; // ms since 1970 UTC; below 0: the host's
    std::vector<std::string> without; // the devices that it lacks, of knownDevices()
    std::uint16_t model = 1026; // the model code, tag 18
    std::string guid = std::string("\x00\x11\x22\x33\x44\x55\x66\x77\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16); // tag 48
};

struct BootOptions {
    ClockMode mode = ClockMode::flowing;
    double factor = 1; // flowing: panel seconds in a real second
    std::uint32_t ticks = 0; // the tick count at boot, ms
};

struct Volume {
    std::string name; // the top folder
    bool disk; // plugged, can be unplugged
    bool inPlace; // shows a folder of the host itself, not a copy
};

class Panel {
public:
    // Makes the directory; it must not exist yet, or be empty.
    static Panel create(const std::filesystem::path& directory, const PanelOptions& options);
    explicit Panel(const std::filesystem::path& directory); // of an existing panel

    const std::filesystem::path& directory() const {
        return root;
    }
    // Where a panel path lies on the host; names as they are written.
    std::filesystem::path hostPath(std::string_view panelPath) const;

    Devices devices() const {
        return Devices(root);
    }

    PanelOptions options() const; // screen and date, as of the last switching off
    bool isOn() const;
    void boot(const BootOptions& options);
    // Both end all programs at once; fs/ and devices/ stay, run/ is cleared by the next boot.
    void off();
    void cut();

    std::vector<Volume> volumes() const;
    // The folder's content appears as a volume of this name. In place: programs write to and delete from the folder
    // itself. Works on and off.
    void plug(const std::filesystem::path& folder, const std::string& name, bool inPlace);
    void unplug(const std::string& name);

private:
    void stop();
    std::int64_t currentDate() const; // ms since 1970 UTC, on the panel
    void saveDate(std::int64_t date) const;
    void saveVolumes(const std::vector<Volume>& volumes) const;
    void initialise(Image& image, const BootOptions& options, std::int64_t date) const;

    std::filesystem::path root;
};

} // namespace panel
