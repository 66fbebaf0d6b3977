// A simulated panel: a directory with everything that a panel stores. The class creates panels and switches their
// power.
//
//     fs/        the panel's file system
//     devices/   panel.json: screen size and date of the calendar clock; disks.json: the plugged disks (Disks.h);
//                one file per device (Devices.h)
//     registry/  the current registry, and its copy in flash, which survives a power cut (Registry.h)
//     run/       state that a power cycle clears: the kernel file, the trace, output/ (the output of programs)
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
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

// The names of the storage policies, in the order of StoragePolicy. storageNamed throws for an unknown name.
inline constexpr const char* storageNames[] = {"kept", "closed", "torn"};
StoragePolicy storageNamed(std::string_view name);

inline constexpr std::uint32_t maxScreen = 16384; // pixels, width and height

// The facts of a new panel.
struct PanelOptions {
    std::uint32_t screenWidth = 800; // pixels
    std::uint32_t screenHeight = 480;
    std::int64_t date = -1; // date of the calendar clock in ms since 1970 UTC; below 0: the host's date
    std::string version = "2.15"; // platform version: HKEY_LOCAL_MACHINE\ORVA, "Version"
    std::string name = "Panel"; // device name: HKEY_LOCAL_MACHINE\Ident, "Name"
    std::vector<std::string> without; // names of knownDevices() that the panel lacks
    std::uint16_t model = 1026; // model code: tag 18
    StoragePolicy storage = StoragePolicy::kept;
    std::string guid = std::string("\x00\x11\x22\x33\x44\x55\x66\x77\x88\x99\xaa\xbb\xcc\xdd\xee\xff", 16); // tag 48
};

// The clock of a booting panel.
struct BootOptions {
    ClockMode mode = ClockMode::flowing;
    double factor = 1; // flowing mode: panel seconds per real second, 0.001 to 100000
    std::uint32_t ticks = 0; // tick count at boot in ms
};

// A panel by its directory. Any number of objects and processes may use the same directory.
class Panel {
public:
    // Creates a panel. The directory must be empty or not exist. A failure leaves nothing behind.
    static Panel create(const std::filesystem::path& directory, const PanelOptions& options);
    // Creates a panel whose files `fill` puts into the directory.
    static Panel createFilled(const std::filesystem::path& directory,
                              const std::function<void(const std::filesystem::path&)>& fill);
    // Opens an existing panel. Throws if the directory is not a panel.
    explicit Panel(const std::filesystem::path& directory);

    const std::filesystem::path& directory() const {
        return root;
    }
    // Returns the host path of a panel path. Does not search the file system: the names must have the same upper and
    // lower case as on the host.
    std::filesystem::path hostPath(std::string_view panelPath) const;

    Devices devices() const {
        return Devices(root);
    }
    Disks disks() const {
        return Disks(root);
    }

    // Throws if another user has booted the panel. The text names that user.
    void checkOwner() const;

    // Returns screen size, storage policy and the stored date (see `date`). The other fields keep their defaults.
    PanelOptions options() const;
    // Returns whether the panel has power.
    bool isOn() const;
    // Returns why the panel went off: "panel off", "panel cut", or "fault at TarvexHelper.exe#1 t1 WriteFile[3](...)".
    // Returns "" while the panel is on, and if the reason is not known.
    std::string whyOff() const;
    // Returns the panel's date in ms since 1970 UTC. It stands still while the panel is off.
    std::int64_t date() const;
    // Returns the date of the last boot in ms since 1970 UTC. It is not known for a new panel, a copied one and one
    // whose kernel file is gone.
    std::optional<std::int64_t> bootDate() const;
    // Switches the panel on. Driver::startInit then starts the programs of the registry.
    void boot(const BootOptions& options);
    // Shuts the panel down cleanly: ends all programs at once and flushes the registry. fs/ and devices/ stay; the next
    // boot clears run/. If some data cannot be stored, throws an exception that lists the data; the panel is off
    // nevertheless.
    void off();
    // Cuts the power: like `off`, but the registry falls back to its flushed state, and files to what is committed and,
    // with StoragePolicy::torn, the first `sectors` sectors of the rest of each file. Throws for sectors with another
    // policy.
    void cut(std::uint32_t sectors = 0);

    // Sets the storage policy. Everything that was written so far counts as committed.
    void setStorage(StoragePolicy policy);

    // Reads the registry. While the panel is off, both copies are the one in flash.
    registry::Tree registry(registry::Copy copy) const;
    // Changes the registry under the kernel's lock. With `flushed` the copy in flash changes too. While the panel is
    // off, both copies change.
    void changeRegistry(const std::function<void(registry::Tree&)>& change, bool flushed);

    // Plugs a disk at the panel's current date (Disks::plug). Returns the device name, "DSK1:".
    std::string plug(Disk disk);

private:
    struct Fresh { // marks the constructor for a directory that is not a panel yet
        std::filesystem::path directory;
    };
    explicit Panel(const Fresh& fresh);
    void fill(const PanelOptions& options) const; // writes the files of a new panel
    // `sectors`: empty for a clean shutdown
    void stop(std::optional<std::uint32_t> sectors);
    void saveDate(std::int64_t date) const;
    void initialise(Image& image, const BootOptions& options, std::int64_t date) const;

    std::filesystem::path root;
};

} // namespace panel
