// A simulated panel: a directory, and what can be done with its power and its disks.
//
//     fs/        the panel's file system
//     devices/   panel.json: screen size and the calendar clock's date; disks.json: what is plugged (Disks.h);
//                the devices (Devices.h)
//     registry/  what the registry holds, and what would be left of it after a power cut (Registry.h)
//     run/       what a power cycle forgets: kernel, trace, output/ (what programs print)
//
// All failures are std::runtime_error with a text for people.
#pragma once

#include "platform/panel/Devices.h"
#include "platform/panel/Disks.h"
#include "platform/panel/Registry.h"
#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

struct PanelOptions {
    std::uint32_t screenWidth = 800; // pixels
    std::uint32_t screenHeight = 480;
    std::int64_t date = -1; // ms since 1970 UTC; below 0: the host's
    std::string version = "2.15"; // of the platform: HKEY_LOCAL_MACHINE\ORVA, "Version"
    std::string name = "Panel"; // HKEY_LOCAL_MACHINE\Ident, "Name"
    std::vector<std::string> without; // the devices that it lacks, of knownDevices()
    std::uint16_t model = 1026; // the model code, tag 18
    std::string guid = std::string("\x00\x11\x22\x33\x44\x55\x66\x77\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16); // tag 48
};

struct BootOptions {
    ClockMode mode = ClockMode::flowing;
    double factor = 1; // flowing: panel seconds in a real second, 0.001 to 100000
    std::uint32_t ticks = 0; // the tick count at boot, ms
};

class Panel {
public:
    // Makes the directory; it must not exist yet, or be empty. A failure leaves nothing behind.
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
    Disks disks() const {
        return Disks(root);
    }

    // Fails, and says whom to ask, when another user has booted it.
    void checkOwner() const;

    PanelOptions options() const; // screen and date, as of the last switching off
    bool isOn() const;
    void boot(const BootOptions& options);
    // Both end all programs at once; fs/ and devices/ stay, run/ is cleared by the next boot. A failure to store
    // something says that the panel is off all the same.
    void off();
    void cut(); // the registry falls back to what was flushed

    registry::Tree registry(registry::Copy copy) const;
    // Under the kernel's lock; `flushed`: flash has it too. Off, both copies are the same.
    void changeRegistry(const std::function<void(registry::Tree&)>& change, bool flushed);

    // Its partitions' folders appear as volumes, and programs hear of it; the device that it got ("DSK1:").
    std::string plug(Disk disk);

private:
    struct Fresh { // an empty directory
        std::filesystem::path directory;
    };
    explicit Panel(const Fresh& fresh);
    void fill(const PanelOptions& options) const; // a new panel's directory
    void stop(void (*settleRegistry)(const std::filesystem::path&), const char* whatFails);
    std::int64_t currentDate() const; // ms since 1970 UTC, on the panel
    void saveDate(std::int64_t date) const;
    void initialise(Image& image, const BootOptions& options, std::int64_t date) const;

    std::filesystem::path root;
};

} // namespace panel
