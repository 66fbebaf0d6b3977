// A random life: a panel with a helper, what steps do to both, and what must hold after each step.
//
// The model is small. It knows what may end the helper, and what the statistics must be. While a fault, a refused
// request or a power cut may have changed more than that, only the invariants remain that hold always.
#pragma once

#include "platform/panel/Operator.h"
#include "tests/soak/Totals.h"
#include "tests/support/ScenarioPanel.h"

#include <cstdint>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

// An invariant does not hold.
class Finding : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class PowerLoss { off, cut };

class Life {
public:
    // Lives through an undisturbed start, and keeps the panel's state after it as the measure. `ticks`: the tick count
    // at each boot.
    explicit Life(std::uint32_t ticks);

    // Takes what a step does, and throws a Finding if an invariant does not hold afterwards.
    void take(const std::function<void(Life&)>& step);

    // ---- what steps do; what is impossible at the moment does nothing

    void pass(std::uint64_t milliseconds);
    void rest(); // half a day, twice: nothing may grow in the second half
    void touch(panel::Touch::Kind kind, bool right);
    void setUserActive(bool active);
    void tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted);
    void chatter(std::uint32_t messages);
    void start(bool fromDisk);
    void end();
    void kill();
    // The panel goes off and on, and starts the programs of its registry, with these faults.
    void boot(PowerLoss loss, std::uint32_t sectors, const std::optional<panel::Fault>& fault);
    void plug(const std::string& commandFile, const std::string& volume, std::uint64_t readyAfter, bool mounted);
    void unplug(std::uint32_t which);
    // A settings file of a module with this content, which is good or not; "-" as content: without the file.
    void set(const char* file, const std::string& content, bool good);
    void setConfiguration(const std::string& content, bool good);
    void setDevice(const char* device, panel::Behaviour behaviour);
    void setPresent(const char* device, bool present);
    void count(std::uint32_t writes);
    void add(panel::Fault fault);
    void calm(); // no fault and no blocked device any more
    void setStorage(panel::StoragePolicy policy);
    // Everything in order again, and a clean boot: the panel must come to the state after an undisturbed start.
    void bootCleanly();

private:
    void startListed();
    void look(); // takes the status and the faults' hits, and what they mean
    bool isOn();
    const panel::ProcessStatus* helper() const; // the oldest that runs; null: there is none
    bool isPlugged(const std::string& volume);
    panel::Behaviour::Kind kindOf(const std::string& device) const;
    bool isHindering() const; // the backlight does not do what it is told
    std::string expected(const std::string& message, std::uint64_t code, std::int64_t argument) const;
    std::map<std::string, std::string> state() const;
    void check();
    void checkAnswer();
    void checkEnds();
    void checkTrace();
    void checkUse();
    void checkTotals();

    ScenarioPanel panel;
    const std::uint32_t ticks;
    std::map<std::string, std::string> undisturbed;
    panel::PanelStatus status;
    Totals totals;
    std::uint32_t counter = 0;
    std::uint32_t boots = 0;
    panel::StoragePolicy policy = panel::StoragePolicy::kept;
    std::map<std::string, panel::Behaviour::Kind> kinds; // of devices
    std::set<std::string> absent; // devices
    std::set<std::string> badSettings;
    bool held = false; // a call was held, so the log may have grown
    bool tampered = false; // since the last clean boot: files and registry may have lost what docs/reliability.md lists

    // Of this boot.
    std::set<std::string> ended;
    std::set<std::string> passing; // helpers that are to end by themselves
    std::set<std::string> killed;
    std::uint32_t hits = 0; // of faults
    std::streamoff traced = 0; // bytes of the trace that were looked at
    std::uint32_t programs = 0; // started by disks
    std::uint32_t reloads = 0; // each may leave a touch thread

    // Of this helper.
    bool disturbed = false; // a call has failed
    bool blocked = false; // at present: its main thread waits for a device that blocks, or in a call that is held
    bool hindered = false; // a device refuses or blocks, so it may end with 1
    bool told = false; // to end
    bool busy = false; // with a disk, when it was told
    struct Use {
        std::string process;
        std::uint32_t handles = 0;
        std::uint32_t threads = 0;
        std::uint32_t programs = 0;
        std::uint32_t reloads = 0;
    } base;
};
