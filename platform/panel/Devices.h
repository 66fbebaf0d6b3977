// What a panel has besides its programs and files: drivers, the tag library, the power manager. Their state goes in,
// and the requests of programs come out, in devices/, where people read it:
//
//     BKL1.json      one file a device: whether the panel has it, its values, what it does when it is asked
//     tags/18        one file a tag: its bytes in hexadecimal
//     requests       what programs have asked of the devices since boot, one line a request
//     touches        where the panel was touched since boot, and which window got it
//
// All of it can be looked at and changed while the panel is on or off; a device looks at its file when it is asked.
// Devices with a panel path are drivers, opened by CreateFileW. The tag library's operations are its functions.
//
//     BKL1           the backlight: "read", "write"; four values, the levels that it has from boot on
//     BZR1           the buzzer: "beep"
//     SHC1           the eMMC's counter: "count"; one value, the count
//     NANDFlash      the flash volume's protection: "writable", "read-only"
//     tags           the library tagUserAPI.dll
//     PowerManager   the two events of the user's activity; looked at when the panel boots
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

struct OperationFacts {
    std::string_view name;
    std::uint32_t code; // of the request; drivers
    std::uint32_t input; // bytes that it takes
    std::uint32_t output; // bytes that it gives
};

struct DeviceFacts {
    std::string_view name;
    std::string_view path; // what CreateFileW opens; empty: no driver
    std::string_view what; // for people
    std::vector<OperationFacts> operations;
    std::vector<std::uint32_t> values; // of a new panel
};

const std::vector<DeviceFacts>& knownDevices();

// What a device does with an operation.
struct Behaviour {
    enum class Kind {
        answer,
        refuse, // fails with `number` as the error
        block, // answers when it is told to do something else
        delay, // answers after `number` ms of panel time
        code, // tag library: succeeds, and yet gives `number` as its error code
    };
    Kind kind = Kind::answer;
    std::uint32_t number = 0;
};

struct DeviceState {
    std::string name;
    bool present = false;
    std::vector<std::uint32_t> values;
    std::map<std::string, Behaviour, std::less<>> behaviours; // by operation; those that simply answer are left out

    Behaviour behaviour(std::string_view operation) const;
};

struct Request {
    std::uint64_t time = 0; // panel ms since boot
    std::string process; // "TarvexHelper.exe#1"
    std::uint32_t thread = 0; // by order of creation
    std::string device;
    std::string operation;
    std::vector<std::uint32_t> words; // what was sent, or what came back
    std::uint32_t error = 0; // 0: it was granted
};

struct LandedTouch { // one event of the person at the panel
    std::uint64_t time = 0; // panel ms since boot
    std::string event; // "press", "release", "right-press", "right-release", "move"
    std::int32_t x = 0; // pixels
    std::int32_t y = 0;
    bool swallowed = false; // the mouse hook has kept it from the window
    std::string window; // the class of the uppermost window there; empty: none
    std::string process; // its
};

class Devices {
public:
    explicit Devices(const std::filesystem::path& panelDirectory);

    // By name, case-blind; an unknown one is a failure.
    static const DeviceFacts& facts(std::string_view name);
    // The driver that this panel path opens; null: none.
    static const DeviceFacts* driverAt(std::string_view panelPath);

    DeviceState state(std::string_view name) const;
    bool has(std::string_view name) const;

    // Throws std::runtime_error if the device cannot be told so; without operation: of any.
    static void check(std::string_view name, Behaviour behaviour, std::string_view operation = {});
    // Without operation: every one of the device. A request that waits in a driver looks again.
    void setBehaviour(std::string_view name, Behaviour behaviour, std::string_view operation = {}) const;
    void setPresent(std::string_view name, bool present) const;
    // As many as the device has. Of the backlight: what the user chooses; it has these levels now, and from boot on.
    void setValues(std::string_view name, const std::vector<std::uint32_t>& values) const;

    std::vector<Request> requests(std::string_view device = {}) const; // oldest first; without device: of all
    void note(const Request& request) const; // wants the lock of a panel that is on

    std::vector<LandedTouch> touches() const; // since boot, oldest first
    void note(const LandedTouch& touch) const; // wants the lock

    std::map<std::uint32_t, std::string> tags() const; // bytes by number
    std::optional<std::string> tag(std::uint32_t id) const;
    void setTag(std::uint32_t id, std::string_view bytes) const;
    bool removeTag(std::uint32_t id) const; // false: there is none

    // Of a new panel; every device is there but those that are named.
    void create(const std::vector<std::string>& without) const;
    void forgetRequests() const; // at boot

private:
    std::filesystem::path fileOf(std::string_view name) const;
    std::filesystem::path fileOf(std::uint32_t tag) const;
    void save(const DeviceState& state) const;

    std::filesystem::path root; // of the panel
    std::filesystem::path folder;
};

} // namespace panel
