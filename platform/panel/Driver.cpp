#include "platform/panel/Driver.h"

#include "platform/panel/Call.h"
#include "platform/panel/Functions.h"
#include "platform/panel/Program.h"
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Storage.h"
#include "platform/panel/kernel/Wait.h"

#include <algorithm>
#include <stdexcept>
#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t glance = 20; // flowing mode: panel ms between two checks of a condition, with a small factor
constexpr std::uint32_t mostGlances = 100; // per real second, with any factor
constexpr std::uint32_t realPatience = 60000; // real ms for an ended program to leave the host

void sleepUntil(Call& call, std::uint64_t deadline) {
    scheduler::at(call.image, call.self).waitKind = WaitKind::time;
    block(call.lock, call.image, call.self, deadline);
}

std::uint64_t nextDeadline(const Image& image) {
    std::uint64_t nearest = never;
    for (const ThreadRecord& thread : usedThreads(image))
        if (thread.state == ThreadState::waiting)
            nearest = std::min(nearest, thread.deadline);
    return nearest;
}

const char* errorText(std::uint32_t error) {
    switch (error) {
    case 2:
        return "there is no such file";
    case 3:
        return "there is no such folder";
    case 5:
        return "it is a folder";
    case 21:
        return "the panel has been switched off";
    case 89:
        return "the panel runs as many programs as it can";
    case 123:
        return "that is not a panel path (such as \\MMCMemory\\Tarvex\\Tarvex.exe)";
    case 206:
        return "its path or its arguments are too long";
    default:
        return "the host refused";
    }
}

} // namespace

Driver::Driver(const Panel& driven, const std::string& countsAs, Programs programs) : panel(driven) {
    Runtime::attachDriver(panel.directory().string(), countsAs, programs == Programs::end);
}

Driver::~Driver() {
    Runtime::detachDriver();
}

ProcessHandle Driver::start(const std::string& path, const std::string& commandLine) {
    Call call;
    processes::noticeDead(call.image);
    const Started started = startProgram(call.image, panel.directory().string(), path, commandLine, call.self);
    if (!started.process) {
        const bool bad = started.error == 193;
        const std::string full = path.starts_with('\\') ? path : '\\' + path;
        const Place place = locate(panel.directory().string(), full);
        throw std::runtime_error("cannot start " + path + ": " +
                                 (bad ? whyNot(kindOf(place.host)) : errorText(started.error)));
    }
    const ProcessRecord& process = processes::at(call.image, started.process);
    const std::uint32_t handle = objects::openHandle(call.image, Runtime::instance().process(), process.object);
    return {processes::name(call.image, process), handle, process.hostPid, process.aware != 0};
}

std::vector<InitStart> Driver::startInit() {
    const registry::Tree tree = panel.registry(registry::Copy::now);
    const registry::Key* init = tree.find("HKEY_LOCAL_MACHINE\\init");
    std::vector<InitStart> starts;
    for (const registry::Value& value : init ? init->values : NamedList<registry::Value>()) {
        constexpr std::string_view launch = "launch";
        const std::string name = fold(value.name);
        InitStart start;
        if (!name.starts_with(launch) || !numberIn(std::string_view(name).substr(launch.size()), start.number))
            continue;
        registry::textOf(value, start.path); // the result does not matter: an unterminated text counts, too
        if (value.type != registry::typeText && value.type != registry::typeExpandText)
            start.failure = "it is not a text";
        else if (start.path.empty())
            start.failure = "it does not name a program";
        else if (start.path.find('\\') == std::string::npos)
            start.path = "\\Windows\\" + start.path;
        starts.push_back(std::move(start));
    }
    // Equal numbers ("Launch5", "launch05") keep the order of the registry.
    std::stable_sort(starts.begin(), starts.end(),
                     [](const InitStart& first, const InitStart& second) { return first.number < second.number; });
    for (InitStart& each : starts) {
        if (!each.failure.empty())
            continue;
        try {
            each.process = start(each.path, std::to_string(each.number));
        } catch (const std::runtime_error& error) {
            each.failure = error.what();
        }
    }
    return starts;
}

std::optional<std::uint32_t> Driver::waitForExit(const ProcessHandle& process, std::uint32_t limit) {
    if (!process.aware) { // panel time does not wait for this program, so the limit counts real time
        {
            Call call;
            processes::letStartedRun(call.image, call.self);
        }
        host::waitForEnd(process.hostPid, host::startTime(process.hostPid), limit);
        return exitCode(process);
    }
    Call call;
    const Slot object = objects::resolve(call.image, Runtime::instance().process(), process.handle);
    if (!object)
        throw std::runtime_error(process.name + " is not known here");
    if (waitForObjects(call.lock, call.image, call.self, &object, 1, limit) != 0)
        return std::nullopt;
    return objects::at(call.image, object).exitCode;
}

std::optional<std::uint32_t> Driver::exitCode(const ProcessHandle& process) {
    Call call;
    processes::noticeDead(call.image);
    const Slot object = objects::resolve(call.image, Runtime::instance().process(), process.handle);
    if (!object || !objects::at(call.image, object).signalled)
        return std::nullopt;
    return objects::at(call.image, object).exitCode;
}

void Driver::advance(std::uint64_t milliseconds) {
    Call call;
    sleepUntil(call, clock::now(call.image) + milliseconds);
}

void Driver::settle() {
    if (Runtime::instance().image().clock.mode == ClockMode::stepped)
        advance(0);
}

bool Driver::waitUntil(const std::function<bool()>& condition, std::uint64_t limit) {
    std::uint64_t end = 0;
    {
        Call call;
        end = clock::now(call.image) + limit;
    }
    for (;;) {
        settle();
        if (condition())
            return true;
        // In stepped mode nothing can change before the next deadline.
        Call call;
        if (clock::now(call.image) >= end)
            return false;
        const ClockRecord& clock = call.image.clock;
        const std::uint64_t next = clock.mode == ClockMode::stepped
                                       ? nextDeadline(call.image)
                                       : clock::now(call.image) + std::max(glance, clock.factor / mostGlances);
        sleepUntil(call, std::min(next, end));
    }
}

bool Driver::kill(const std::string& process) {
    Call call;
    processes::noticeDead(call.image);
    for (Slot slot = 1; slot <= maxProcesses; ++slot) {
        const ProcessRecord& record = processes::at(call.image, slot);
        if (record.state == ProcessState::free || record.driver || processes::name(call.image, record) != process)
            continue;
        processes::kill(call.image, slot);
        return true;
    }
    return false;
}

bool Driver::isOn() {
    const Call call;
    return call.image.on;
}

PanelStatus Driver::status() {
    Call call;
    processes::noticeDead(call.image);
    return statusOf(call.image, Runtime::instance().process());
}

void Driver::setTicks(std::uint32_t ticks) {
    // Time itself must not jump, so the tick count at boot moves instead.
    Call call;
    call.image.clock.bootTicks += ticks - clock::ticks(call.image);
}

void Driver::setTracing(bool on, std::uint32_t limit) {
    Call call; // a call that ends the trace at its limit also stores, under the lock
    call.image.tracing.store(on ? limit : 0, std::memory_order_relaxed);
}

void Driver::addFault(const Fault& fault) {
    const auto function = functionNamed(fault.function);
    if (!function)
        throw std::runtime_error("the platform has no function \"" + fault.function + "\"");
    if (fault.action == FaultAction::fail && !facts(*function).canFail)
        throw std::runtime_error(fault.function + " cannot fail");
    if (fault.call == 0)
        throw std::runtime_error("calls are counted from 1");
    Call call;
    if (fault.sectors && call.image.storage != StoragePolicy::torn)
        throw std::runtime_error(storage::onlyTorn);
    for (FaultRecord& record : call.image.faults) {
        if (record.action != FaultAction::none)
            continue;
        record = {fault.action,
                  static_cast<std::uint32_t>(*function),
                  fault.start,
                  fault.thread,
                  fault.call,
                  fault.ever,
                  0,
                  fault.answer.has_value(),
                  fault.answer.value_or(0),
                  fault.sectors,
                  0,
                  {}};
        copyText(record.program, fault.program);
        call.image.faultCount.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    throw std::runtime_error("the panel keeps at most " + std::to_string(maxFaults) + " faults at a time");
}

std::vector<Fault> Driver::faults() {
    Call call;
    std::vector<Fault> result;
    for (const FaultRecord& fault : call.image.faults)
        if (fault.action != FaultAction::none)
            result.push_back({std::string(facts(static_cast<Function>(fault.function)).name), fault.program,
                              fault.start, fault.thread, fault.call, fault.ever != 0, fault.action, fault.hits,
                              fault.sectors, fault.answers ? std::optional(fault.answer) : std::nullopt});
    return result;
}

namespace {

// Removes the faults that hold calls, or all faults, and lets the held calls continue.
void removeFaults(bool all) {
    Call call;
    for (FaultRecord& fault : call.image.faults)
        if (fault.action == FaultAction::hold || (all && fault.action != FaultAction::none)) {
            fault.action = FaultAction::none;
            call.image.faultCount.fetch_sub(1, std::memory_order_relaxed);
        }
    for (Slot thread = 1; thread <= call.image.threadsUsed; ++thread) {
        const ThreadRecord& record = scheduler::at(call.image, thread);
        if (record.state == ThreadState::waiting && record.waitKind == WaitKind::held)
            scheduler::release(call.image, thread, 0);
    }
}

} // namespace

void Driver::releaseCalls() {
    removeFaults(false);
}

void Driver::clearFaults() {
    removeFaults(true);
}

void Driver::waitForLingering() {
    for (std::uint32_t index = 0; index < maxLingering; ++index) {
        LingeringRecord entry{};
        {
            Call call;
            entry = call.image.lingering[index];
        }
        if (entry.hostPid && !host::waitForEnd(entry.hostPid, entry.hostStart, realPatience))
            throw std::runtime_error("process " + std::to_string(entry.hostPid) + " does not end");
    }
}

} // namespace panel
