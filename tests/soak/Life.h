// A random life: a panel with a helper, what steps do to both, and what must hold after each step.
//
// The model is small. It knows what may end the helper, and what the statistics must be. While a fault, a refused
// request or a power cut may have changed more than that, only the invariants remain that hold always.
#pragma once

#include "platform/panel/Operator.h"
#include "tests/support/ScenarioPanel.h"

#include <functional>
#include <set>
#include <stdexcept>

// An invariant does not hold.
struct Finding : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Life {
public:
    static constexpr std::uint32_t answerLimit = 60000; // ms

    // Lives through an undisturbed start; the panel's state after it is the measure. `ticks`: at each boot.
    explicit Life(std::uint32_t ticks);

    // Takes a step. Throws a Finding if an invariant does not hold afterwards.
    void take(const std::function<void(Life&)>& step);

    // What steps do besides what they do to the panel. What is impossible at the moment does nothing.
    void rest(); // half a day, twice: the second half costs no memory
    void tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted);
    void start(bool fromDisk);
    void end();
    void kill();
    void boot(bool cut, std::uint32_t sectors);
    void plug(const panel::Disk& disk);
    void configure(const std::string& content, bool good);
    void add(panel::Fault fault);
    void calm(); // neither a fault nor a device that does not answer
    void bootCleanly(); // everything in order, and a clean boot: the panel comes to the state of the undisturbed start

    ScenarioPanel panel;

private:
    void startListed();
    void look(); // takes the status, and what follows from it for the model
    bool isOn();
    const panel::ProcessStatus* helper() const; // the oldest that runs; null: there is none
    panel::Behaviour::Kind kindOf(const char* device); // a device that is gone refuses
    std::map<std::string, std::string> state() const;
    void check();
    void checkAnswer();
    void checkEnds();
    void checkTrace();
    void checkUse();
    void checkTotals();
    void updateTotals(const panel::CallStatus& wait);

    const std::uint32_t ticks;
    std::map<std::string, std::string> undisturbed;
    panel::PanelStatus status;
    bool held = false; // a call was held, so the log may have grown
    bool tampered = false; // since the last clean boot: files and registry may have lost what docs/reliability.md lists

    // Of this boot.
    std::uint32_t boots = 0;
    std::set<std::string> ended;
    std::set<std::string> passing; // helpers that are to end by themselves
    std::set<std::string> killed;
    std::uint32_t hits = 0; // of faults
    std::streamoff traced = 0; // bytes of the trace that were looked at
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
        std::uint32_t programs = 0; // that disks have started
        std::uint32_t reloads = 0;
    } base, use;

    // The statistics: of the last update, and as the file must show them.
    bool known = false;
    std::string updater; // process and boot
    std::uint32_t updates = 0; // of this process
    std::uint64_t updated = 0; // panel ms
    std::uint32_t sessionCount = 0;
    std::uint32_t sessionDuration = 0; // s
    std::uint32_t totalCount = 0;
    std::uint32_t totalDuration = 0; // s
};
