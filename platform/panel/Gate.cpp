#include "platform/panel/Gate.h"

#include "platform/panel/Text.h"
#include "platform/panel/Trace.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Power.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Storage.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace panel {

namespace trace {

namespace {

// A line of the trace must stay one line.
std::string oneLine(std::string text) {
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
        text.replace(at, 1, "\\n");
    return text;
}

} // namespace

void add(std::string& text, std::int64_t value) {
    text += std::to_string(value);
}

void add(std::string& text, const wchar_t* value) {
    if (!value)
        text += "null";
    else
        text += '"' + oneLine(toUtf8(value)) + '"';
}

void addHandle(std::string& text, std::uintptr_t value) {
    if (value == 0)
        text += "null";
    else if (value == ~std::uintptr_t{0})
        text += "-1";
    else
        addHex(text, value);
}

void addHex(std::string& text, std::uint64_t value) {
    char number[24];
    std::snprintf(number, sizeof number, "0x%llx", static_cast<unsigned long long>(value));
    text += number;
}

void addBytes(std::string& text, const void* bytes, std::size_t count) {
    constexpr std::size_t shown = 64;
    const auto* at = static_cast<const unsigned char*>(bytes);
    char number[8];
    text += '{';
    for (std::size_t index = 0; index < count && index < shown; ++index) {
        std::snprintf(number, sizeof number, index ? " %02x" : "%02x", at[index]);
        text += number;
    }
    text += (count > shown ? " ... of " + std::to_string(count) : "") + '}';
}

} // namespace trace

Gate::Gate(Function called, Plain)
    : runtime(Runtime::instance()),
      thread(runtime.thread()),
      call{called, ++thread.calls[static_cast<std::size_t>(called)], {}, currentCall},
      tracing(runtime.image().tracing.load(std::memory_order_relaxed)) {
    currentCall = &call;
}

void Gate::begin() {
    if (tracing) {
        const Lock lock(runtime.image());
        begun = clock::now(runtime.image());
    }
    // The counters are read without the lock: a program without faults and trace must not pay for it.
    if (runtime.image().faultCount.load(std::memory_order_relaxed))
        applyFaults();
}

bool Gate::isMeant(const FaultRecord& fault) const {
    const ProcessRecord& self = runtime.processRecord();
    return fault.action != FaultAction::none && fault.function == static_cast<std::uint32_t>(call.function) &&
           (fault.program[0] == 0 || equalCaseBlind(fault.program, runtime.image().programs[self.program].name)) &&
           (fault.start == 0 || fault.start == self.start) && (fault.thread == 0 || fault.thread == thread.number) &&
           (fault.ever ? call.number >= fault.call : call.number == fault.call);
}

void Gate::applyFaults() {
    Image& panel = runtime.image();
    Lock lock(panel);
    for (FaultRecord& fault : panel.faults) {
        if (fault.action != FaultAction::hold || !isMeant(fault) || scheduler::at(panel, slot()).driver)
            continue;
        ++fault.hits;
        scheduler::at(panel, slot()).waitKind = WaitKind::held;
        block(lock, panel, slot(), never);
        break; // the release has removed all faults that hold; one that was added since then is for later calls
    }
    for (FaultRecord& fault : panel.faults) {
        if (fault.action == FaultAction::hold || !isMeant(fault))
            continue;
        ++fault.hits;
        if (fault.action == FaultAction::cut && !runtime.processRecord().driver) {
            if (panel.storage != StoragePolicy::torn || call.function != Function::WriteFile)
                cutPower(lock, fault.sectors);
            tears = fault.sectors;
        }
        if (fault.action == FaultAction::fail) {
            faultHit = true;
            if (fault.answers)
                failure = fault.answer;
            note("fault");
        }
    }
}

void Gate::cutPower(Lock& lock, std::uint32_t sectors) {
    Image& panel = runtime.image();
    const std::string where = processes::name(panel, runtime.processRecord()) + " t" + std::to_string(thread.number);
    power::off(panel, runtime.directory(), "fault at " + where + ' ' + call.text(), [&] {
        try {
            storage::cutPower(runtime.directory(), panel.storage == StoragePolicy::torn ? sectors : 0);
        } catch (const std::exception&) {
            // The host is full. The next boot tries again.
        }
    });
    lock.release();
    scheduler::deliverWakes(panel);
    raise(SIGKILL); // power::off spares the calling process: it must release the lock first
    std::abort();
}

void Gate::deliverWakes() {
    scheduler::deliverWakes(runtime.image());
}

Gate::~Gate() {
    if (tears) {
        Lock lock(runtime.image());
        cutPower(lock, *tears);
    }
    if (tracing) {
        Image& panel = runtime.image();
        const Lock lock(panel); // keeps the lines in the order of their times, and ends them at the limit
        const std::uint64_t ended = clock::now(panel);
        if (ended != begun)
            note("after " + std::to_string(ended - begun) + " ms");
        const std::string name = processes::name(panel, runtime.processRecord());
        const std::string line = traceLine(ended, name, thread.number, call.text()) + " = " +
                                 (result.empty() ? "void" : result) + notes + '\n';
        if (const std::uint32_t limit = panel.tracing.load(std::memory_order_relaxed))
            if (!writeTraceLine(runtime.directory(), line, limit))
                panel.tracing.store(0, std::memory_order_relaxed);
    }
    deliverWakes();
    currentCall = call.outer;
}

} // namespace panel
