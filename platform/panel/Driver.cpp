#include "platform/panel/Driver.h"

#include "platform/panel/Functions.h"
#include "platform/panel/Program.h"
#include "platform/panel/Runtime.h"
#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Messages.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Wait.h"

#include <algorithm>
#include <stdexcept>
#include <unistd.h>

namespace panel {

namespace {

constexpr std::uint32_t glance = 20; // flowing: panel ms between two looks at a condition
constexpr std::uint32_t realPatience = 60000; // real ms that a program may take for its last words

// Under the lock; whom the call has released is woken after it.
class Call {
public:
    explicit Call(Image& image) : lock(image), panel(image) {}
    ~Call() {
        lock.release();
        scheduler::deliverWakes(panel);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    Lock lock;

private:
    Image& panel;
};

Slot self() {
    return Runtime::instance().thread().slot;
}

std::uint32_t sleepUntil(Call& call, Image& image, std::uint64_t deadline, WaitKind kind = WaitKind::time) {
    scheduler::at(image, self()).waitKind = kind;
    return block(call.lock, image, self(), deadline);
}

std::uint64_t nextDeadline(const Image& image) {
    std::uint64_t nearest = never;
    for (const ThreadRecord& thread : image.threads)
        if (thread.state == ThreadState::waiting)
            nearest = std::min(nearest, thread.deadline);
    return nearest;
}

std::uint64_t toNumber(const std::string& text, std::size_t& used) {
    try {
        return std::stoull(text, &used, 0);
    } catch (const std::exception&) {
        used = 0;
        return 0;
    }
}

const char* errorText(std::uint32_t error) {
    switch (error) {
    case 2:
        return "there is no such file";
    case 3:
        return "there is no such folder";
    case 5:
        return "it is a folder";
    case 89:
        return "the panel runs as many programs as it can";
    case 193:
        return "it is no program (a program for the panel's simulation, or a script that begins with #!)";
    default:
        return "the host refused";
    }
}

} // namespace

Driver::Driver(const Panel& driven, const std::string& countsAs) : panel(driven) {
    Runtime::attachDriver(panel.directory().string(), countsAs);
}

Driver::~Driver() {
    Runtime::detachDriver();
}

Image& Driver::image() {
    return Runtime::instance().image();
}

ProcessHandle Driver::start(const std::string& path, const std::string& commandLine) {
    Call call(image());
    processes::noticeDead(image());
    const Started started = startProgram(image(), panel.directory().string(), path, commandLine, self());
    if (!started.process)
        throw std::runtime_error("cannot start " + path + ": " + errorText(started.error));
    const ProcessRecord& process = processes::at(image(), started.process);
    const std::uint32_t handle = objects::openHandle(image(), Runtime::instance().process(), process.object);
    return {processes::name(image(), process), handle, process.hostPid, process.aware != 0};
}

std::optional<std::uint32_t> Driver::waitForExit(const ProcessHandle& process, std::uint32_t limit) {
    if (!process.aware) { // it does not hold the panel's time: the host's is all there is
        {
            Call call(image());
            processes::letStartedRun(image(), self());
        }
        host::waitForEnd(process.hostPid, host::startTime(process.hostPid), limit);
        return exitCode(process);
    }
    Call call(image());
    const Slot object = objects::resolve(image(), Runtime::instance().process(), process.handle);
    if (!object)
        throw std::runtime_error(process.name + " is not known here");
    if (waitForObjects(call.lock, image(), self(), &object, 1, limit) != 0)
        return std::nullopt;
    return objects::at(image(), object).exitCode;
}

std::optional<std::uint32_t> Driver::exitCode(const ProcessHandle& process) {
    Call call(image());
    processes::noticeDead(image());
    const Slot object = objects::resolve(image(), Runtime::instance().process(), process.handle);
    if (!object || !objects::at(image(), object).signalled)
        return std::nullopt;
    return objects::at(image(), object).exitCode;
}

void Driver::advance(std::uint64_t milliseconds) {
    Call call(image());
    sleepUntil(call, image(), clock::now(image()) + milliseconds);
}

void Driver::settle() {
    if (image().clock.mode == ClockMode::stepped)
        advance(0);
}

bool Driver::waitUntil(const std::function<bool()>& condition, std::uint64_t limit) {
    std::uint64_t end = 0;
    {
        Call call(image());
        end = clock::now(image()) + limit;
    }
    for (;;) {
        settle();
        if (condition())
            return true;
        Call call(image());
        if (clock::now(image()) >= end)
            return false;
        const bool stepped = image().clock.mode == ClockMode::stepped;
        const std::uint64_t next = stepped ? nextDeadline(image()) : clock::now(image()) + glance;
        sleepUntil(call, image(), std::min(next, end));
    }
}

std::uint32_t Driver::findWindow(const std::string& className) {
    Call call(image());
    return messages::findWindow(image(), className);
}

std::uint32_t Driver::messageNumber(const std::string& name) {
    std::size_t used = 0;
    const std::uint64_t number = toNumber(name, used);
    if (!name.empty() && used == name.size() && number <= 0xFFFF)
        return static_cast<std::uint32_t>(number);
    const std::uint32_t registered = name.empty() ? 0 : messages::registerName(image(), name);
    if (!registered)
        throw std::runtime_error("not the name of a message: \"" + name + "\"");
    return registered;
}

std::optional<std::int64_t> Driver::send(std::uint32_t window, const std::string& message, std::uint64_t wParam,
                                         std::int64_t lParam, std::uint32_t limit) {
    Call call(image());
    const messages::Message sent{window, messageNumber(message), wParam, lParam, 0, 0, 0};
    if (!messages::send(image(), self(), sent))
        throw std::runtime_error("there is no such window");
    ThreadRecord& me = scheduler::at(image(), self());
    sleepUntil(call, image(), clock::deadline(image(), limit), WaitKind::reply);
    if (me.replied == 1)
        return me.reply;
    return std::nullopt;
}

void Driver::post(std::uint32_t window, const std::string& message, std::uint64_t wParam, std::int64_t lParam) {
    Call call(image());
    if (!messages::post(image(), {window, messageNumber(message), wParam, lParam, 0, 0, 0}))
        throw std::runtime_error("there is no such window, or no room for another message");
}

bool Driver::isOn() {
    const Lock lock(image());
    return image().on;
}

PanelStatus Driver::status() {
    Call call(image());
    processes::noticeDead(image());
    const ClockRecord& clock = image().clock;
    PanelStatus status{clock.mode,
                       clock.factor / 1000.0,
                       clock::now(image()),
                       clock::ticks(image()),
                       clock::date(image()),
                       image().tracing.load(std::memory_order_relaxed) != 0,
                       {},
                       {},
                       {}};
    for (Slot slot = 1; slot <= maxProcesses; ++slot) {
        const ProcessRecord& process = processes::at(image(), slot);
        if (process.state == ProcessState::free || slot == Runtime::instance().process())
            continue;
        ProcessStatus entry{processes::name(image(), process),
                            process.path,
                            process.commandLine,
                            process.hostPid,
                            process.driver != 0,
                            0,
                            0};
        for (const ThreadRecord& thread : image().threads)
            if (thread.state != ThreadState::free && thread.process == slot) {
                ++entry.threads;
                entry.waiting += thread.state == ThreadState::waiting;
            }
        status.processes.push_back(std::move(entry));
    }
    for (std::uint32_t age = maxEnded; age > 0; --age) {
        const EndedRecord& ended = image().ended[(image().endedCount - age) % maxEnded];
        if (ended.start)
            status.ended.push_back(
                {std::string(image().programs[ended.program].name) + '#' + std::to_string(ended.start), ended.exitCode,
                 ended.time});
    }
    for (const WindowRecord& window : image().windows)
        if (window.used) {
            const Slot owner = scheduler::at(image(), window.thread).process;
            const std::string process = processes::name(image(), processes::at(image(), owner));
            status.windows.push_back({window.className, process, window.visible != 0});
        }
    return status;
}

void Driver::setTicks(std::uint32_t ticks) {
    Call call(image());
    image().clock.bootTicks += ticks - clock::ticks(image());
}

void Driver::setTracing(bool on) {
    image().tracing.store(on, std::memory_order_relaxed);
}

void Driver::addFault(const Fault& fault) {
    const auto function = functionNamed(fault.function);
    if (!function)
        throw std::runtime_error("the platform has no function \"" + fault.function + "\"");
    if (fault.action == FaultAction::fail && !facts(*function).canFail)
        throw std::runtime_error(fault.function + " cannot fail");
    if (fault.call == 0)
        throw std::runtime_error("calls are counted from 1");
    Call call(image());
    for (FaultRecord& record : image().faults) {
        if (record.action != FaultAction::none)
            continue;
        record = {fault.action,
                  static_cast<std::uint32_t>(*function),
                  fault.start,
                  fault.thread,
                  fault.call,
                  fault.ever,
                  0,
                  {}};
        copyText(record.program, fault.program);
        image().faultCount.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    throw std::runtime_error("the panel keeps no more than " + std::to_string(maxFaults) + " faults at a time");
}

std::vector<Fault> Driver::faults() {
    Call call(image());
    std::vector<Fault> result;
    for (const FaultRecord& fault : image().faults)
        if (fault.action != FaultAction::none)
            result.push_back({std::string(facts(static_cast<Function>(fault.function)).name), fault.program,
                              fault.start, fault.thread, fault.call, fault.ever != 0, fault.action, fault.hits});
    return result;
}

void Driver::clearFaults() {
    Call call(image());
    for (FaultRecord& fault : image().faults)
        fault.action = FaultAction::none;
    image().faultCount.store(0, std::memory_order_relaxed);
}

void Driver::waitForLingering() {
    for (std::uint32_t index = 0; index < maxLingering; ++index) {
        LingeringRecord entry{};
        {
            Call call(image());
            entry = image().lingering[index];
        }
        if (entry.hostPid && !host::waitForEnd(entry.hostPid, entry.hostStart, realPatience))
            throw std::runtime_error("process " + std::to_string(entry.hostPid) + " does not end");
    }
}

} // namespace panel
