// A random life: a panel with a helper, what steps do to both, and what must hold after each step.
//
// The model is small. It knows what may end the helper, and what the statistics must be. While a failing call, a
// refused request or a power cut may have changed more than that, only the invariants remain that hold always.
#pragma once

#include "platform/panel/Operator.h"
#include "tests/support/ScenarioPanel.h"

#include <functional>
#include <set>
#include <stdexcept>
#include <tuple>

// An invariant does not hold.
struct Finding : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Life {
public:
    static constexpr std::uint32_t answerLimit = 60000; // ms

    // Lives through an undisturbed start; the panel's state after it is the measure. `ticks`: at each boot.
    Life(std::uint32_t ticks, panel::StoragePolicy policy);

    // Takes a step. Throws a Finding if an invariant does not hold afterwards.
    void take(const std::function<void(Life&)>& step);

    // What steps do besides what they do to the panel. What is impossible at the moment does nothing.
    void rest(); // half a day, twice: the second half costs no memory
    void tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted);
    bool isIdle(); // no helper runs
    void start(bool fromDisk);
    void end();
    void kill();
    void boot(bool cut, std::uint32_t sectors);
    void plug(const panel::Disk& disk);
    void configure(const std::string& content, bool good);
    // Adds a fault. `draw` chooses its call: a call of an undisturbed start and end (`fromDisk`: of an installation) if
    // no helper runs or `fresh` says that it has just been started; else one of the next calls that the helper repeats.
    void add(panel::Fault fault, std::uint32_t draw, bool fresh, bool fromDisk = false);
    void calm(); // neither a fault nor a device that does not answer
    void bootCleanly(); // everything in order, and a clean boot: the panel comes to the state of the undisturbed start

    ScenarioPanel panel;

private:
    using Place = std::tuple<std::uint32_t, std::string, std::uint32_t>; // thread, function, call
    std::set<Place> places(std::uint32_t process) const; // of its calls in the trace that can fail
    std::set<Place> next();
    void startListed();
    void look(); // takes the status, and what follows from it for the model
    bool isOn();
    const panel::ProcessStatus* helper() const; // the oldest that runs; null: there is none
    panel::Behaviour::Kind kindOf(const char* device); // a device that is gone refuses, unless it blocks or delays
    bool isHindering(); // the backlight
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
    std::set<Place> started; // calls of an undisturbed start and end
    std::set<Place> installed; // and of an installation
    bool held = false; // a call was held, and the log may have outgrown its limit since
    bool tampered = false; // since the last clean boot: files and registry may have lost what docs/reliability.md lists

    // Of this boot.
    std::uint32_t boots = 0;
    std::set<std::string> ended;
    std::set<std::string> passing; // helpers that are to end by themselves
    std::set<std::string> killed;
    bool mayStayDim = false; // a helper could not restore the screen
    std::map<std::string, std::uint32_t> hits; // of each fault
    std::streamoff traced = 0; // bytes of the trace that were looked at
    std::streamoff rested = 0; // those until the helper was first at rest
    std::uint32_t reloads = 0; // each may leave a touch thread

    // Of this helper.
    bool disturbed = false; // a call has failed
    bool holds = false; // at present: a fault holds a call of one of its threads
    bool blocked = false; // at present: its main thread stands in a call that blocks or is held, or waits for one
    bool hindered = false; // the backlight refuses, or a thread stands in such a call, so it may end with 1
    bool told = false; // to end
    std::uint64_t toldAt = 0; // panel ms
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
    bool mayForget = true; // the totals may have begun at 0 since they were known
    std::uint32_t knownDuration = 0; // the total then, s
    std::string updater; // process and boot
    std::uint32_t updates = 0; // of this process
    std::uint64_t updated = 0; // panel ms
    std::uint32_t sessionCount = 0;
    std::uint32_t sessionDuration = 0; // s
    std::uint32_t totalCount = 0;
    std::uint32_t totalDuration = 0; // s
};
