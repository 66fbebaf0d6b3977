// A random life: a panel with a helper, and what steps do to both besides what they do to the panel alone.
#pragma once

#include "tests/soak/Invariants.h"
#include "tests/soak/Places.h"

#include "platform/panel/Operator.h"

#include <functional>
#include <optional>

class Life {
public:
    // Lives through an undisturbed start; the panel's state after it is the measure. `ticks`: at each boot.
    Life(std::uint32_t ticks, panel::StoragePolicy policy);

    // Takes a step. Throws a Finding if an invariant does not hold afterwards.
    void take(const std::function<void(Life&)>& step);

    // What is impossible at the moment does nothing.
    void rest(); // half a day without events, twice
    // Takes a round so many times, twice: the second half costs nothing but so many KB and two handles of each program.
    // Returns how many programs the second half has started; empty: the helper was disturbed.
    std::optional<std::uint32_t> repeat(std::uint32_t rounds, std::size_t memory, const std::function<void()>& round);
    void tell(const std::string& message, std::uint64_t code, std::int64_t argument, bool posted);
    bool isIdle(); // no helper runs
    bool isUndisturbed(); // a helper runs, and each of its calls does what it should
    void start(bool fromDisk);
    void end();
    void kill();
    void boot(bool cut, std::uint32_t sectors);
    void plug(const panel::Disk& disk);
    void unplugAll();
    void configure(const std::string& content, bool good);
    void unregister(const char* key, const char* value);
    // Adds a fault, at any function or at that of the fault; its call counts from the next one. `draw` chooses that: a
    // call of an undisturbed start and end (`fromDisk`: of an installation) if no helper runs or `fresh` says that it
    // has just been started; else one of the next calls that the helper repeats.
    void add(panel::Fault fault, std::uint32_t draw, bool fresh, bool fromDisk = false);
    void calm(); // neither a fault nor a device that does not answer
    void bootCleanly(); // everything in order, and a clean boot: the panel comes to the state of the undisturbed start

    ScenarioPanel panel;

private:
    void loseHeldFiles();
    void startListed();
    void check();
    std::map<std::string, std::string> state() const;

    Conditions conditions{panel};
    Invariants invariants;
    std::map<std::string, std::string> undisturbed;
    std::set<Place> started; // calls of an undisturbed start and end
    std::set<Place> installed; // and of an installation
};
