// The devices of a panel: drivers, the tag library and the power manager.
//
// The folder devices/ holds their state and their records as text:
//
//     BKL1.json      one file per device: whether the panel has the device, its values, its behaviour per operation
//     tags/18        one file per tag: the tag's bytes in hexadecimal
//     requests       the requests of programs since boot, one line per request
//     touches        the touches since boot, with the window that got each one
//
// These files can be read and changed whether the panel is on or off. A device reads its file at each request. A device
// with a panel path is a driver: programs open it with CreateFileW. The operations of the tag library are its
// functions.
//
//     BKL1           the backlight: "read", "write"; four values, which the driver holds after boot
//     BZR1           the buzzer: "beep"
//     SHC1           the eMMC's write counter: "count"; one value, the count
//     NANDFlash      the write protection of the flash volume: "writable", "read-only"
//     tags           the library tagUserAPI.dll
//     PowerManager   the two user activity events; boot decides whether the panel has them
//
// All failures are std::runtime_error with a text for people.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

// An operation of a device. The numbers apply to drivers only.
struct OperationFacts {
    std::string_view name;
    std::uint32_t code; // IOCTL code
    std::uint32_t input; // size of the input in bytes
    std::uint32_t output; // size of the output in bytes
};

// The constant facts of a device.
struct DeviceFacts {
    std::string_view name;
    std::string_view path; // panel path for CreateFileW; empty: the device is not a driver
    std::string_view what; // description for people
    std::vector<OperationFacts> operations;
    std::vector<std::uint32_t> values; // initial values on a new panel
};

// Returns all devices that a panel can have.
const std::vector<DeviceFacts>& knownDevices();

// The behaviour of a device in one operation.
struct Behaviour {
    enum class Kind {
        answer, // works at once
        refuse, // fails with `number` as the error
        block, // waits until somebody sets another behaviour
        delay, // works after `number` ms of panel time
        code, // tag library only: the function returns success with `number` as its error code
    };
    Kind kind = Kind::answer;
    std::uint32_t number = 0;
};

// The state of a device, as its file holds it.
struct DeviceState {
    std::string name;
    bool present = false; // whether the panel has the device
    std::vector<std::uint32_t> values;
    std::map<std::string, Behaviour, std::less<>> behaviours; // by operation; `answer` is left out

    Behaviour behaviour(std::string_view operation) const;
};

// A line of devices/requests.
struct Request {
    std::uint64_t time = 0; // panel ms since boot
    std::string process; // "TarvexHelper.exe#1"
    std::uint32_t thread = 0; // thread number in the process, by order of creation
    std::string device;
    std::string operation;
    std::vector<std::uint32_t> words; // the data sent to the device or received from it
    std::uint32_t error = 0; // 0: success
};

// A line of devices/touches: one mouse event.
struct LandedTouch {
    std::uint64_t time = 0; // panel ms since boot
    std::string event; // "press", "release", "right-press", "right-release", "move"
    std::int32_t x = 0; // pixels
    std::int32_t y = 0;
    bool swallowed = false; // the mouse hook swallowed the event
    std::string window; // class of the uppermost window at this place; empty: no window
    std::string process; // process of that window
};

// Reads and changes the files in devices/. The class keeps nothing but paths, so objects are cheap to create.
class Devices {
public:
    explicit Devices(const std::filesystem::path& panelDirectory);

    // Returns the facts of a device. The name is case-insensitive. Throws for an unknown name.
    static const DeviceFacts& facts(std::string_view name);
    // Returns the driver that CreateFileW opens for this panel path, or null.
    static const DeviceFacts* driverAt(std::string_view panelPath);

    // Reads a device's file. Throws if the file cannot be read.
    DeviceState state(std::string_view name) const;
    bool has(std::string_view name) const;

    // Throws if the device cannot have this behaviour. An empty operation stands for all operations of the device.
    static void check(std::string_view name, Behaviour behaviour, std::string_view operation = {});
    // Stores a behaviour. An empty operation stands for all operations of the device. Requests that are waiting in the
    // device also follow the new behaviour.
    void setBehaviour(std::string_view name, Behaviour behaviour, std::string_view operation = {}) const;
    // Adds the device to the panel or removes it.
    void setPresent(std::string_view name, bool present) const;
    // Stores the values. Throws if the device has another number of values. The values of the backlight take effect at
    // once, and each boot restores them.
    void setValues(std::string_view name, const std::vector<std::uint32_t>& values) const;

    // Returns the requests since boot, oldest first. An empty name stands for all devices.
    std::vector<Request> requests(std::string_view device = {}) const;
    // Appends a request. The caller holds the kernel's lock if the panel is on.
    void note(const Request& request) const;

    // Returns the touches since boot, oldest first.
    std::vector<LandedTouch> touches() const;
    // Appends a touch. The caller holds the kernel's lock.
    void note(const LandedTouch& touch) const;

    std::map<std::uint32_t, std::string> tags() const; // each tag's bytes by tag number
    std::optional<std::string> tag(std::uint32_t id) const; // empty: the tag does not exist
    void setTag(std::uint32_t id, std::string_view bytes) const;
    bool removeTag(std::uint32_t id) const; // returns false if the tag does not exist

    // Writes the files of a new panel. The panel has every device except those in `without`.
    void create(const std::vector<std::string>& without) const;
    // Clears requests and touches. Boot calls this.
    void forgetRequests() const;

private:
    std::filesystem::path fileOf(std::string_view name) const;
    std::filesystem::path fileOf(std::uint32_t tag) const;
    void save(const DeviceState& state) const;

    std::filesystem::path root; // the panel's directory
    std::filesystem::path folder; // devices/
};

} // namespace panel
