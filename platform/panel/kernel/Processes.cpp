#include "platform/panel/kernel/Processes.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Messages.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Scheduler.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <unistd.h>

namespace panel::processes {

namespace {

constexpr std::uint32_t lastBreath = 5000; // real ms for a killed process to end

std::uint32_t programIndex(Image& image, std::string_view path) {
    const std::string_view file = fileName(path).substr(0, sizeof ProgramRecord::name - 1);
    for (std::uint32_t index = 0; index < maxPrograms; ++index) {
        ProgramRecord& program = image.programs[index];
        if (program.name[0] == 0)
            copyText(program.name, file);
        if (equalCaseBlind(program.name, file))
            return index;
    }
    return maxPrograms - 1; // the table is full: further programs share the last entry
}

Slot makeRecord(Image& image, const Program& program) {
    for (Slot slot = 1; slot <= maxProcesses; ++slot) {
        ProcessRecord& record = at(image, slot);
        if (slot > image.processesUsed) {
            image.processesUsed = slot;
            std::fill(std::begin(record.handles), std::end(record.handles), HandleRecord{});
        }
        if (record.state != ProcessState::free)
            continue;
        const std::uint32_t program_ = programIndex(image, program.path);
        record.hostPid = 0;
        record.hostStart = 0;
        ++record.serial;
        record.program = program_;
        record.start = ++image.programs[program_].starts;
        record.aware = program.aware;
        record.driver = 0;
        record.starter = 0;
        record.owner = 0;
        record.released.store(0, std::memory_order_relaxed);
        record.exitKnown.store(0, std::memory_order_relaxed);
        record.exitCode.store(0, std::memory_order_relaxed);
        record.mainThread = 0;
        record.object = 0;
        record.threadsMade = 0;
        record.device = program.device;
        record.inode = program.inode;
        copyText(record.path, program.path);
        copyText(record.commandLine, program.commandLine);
        return slot;
    }
    return 0;
}

Slot makeThreadRecord(Image& image, Slot process) {
    for (Slot slot = 1; slot <= maxThreads; ++slot) {
        ThreadRecord& record = scheduler::at(image, slot);
        if (slot > image.threadsUsed) {
            image.threadsUsed = slot;
            record.state = ThreadState::free;
            record.postedFirst = record.postedLast = record.sentFirst = record.sentLast = 0;
        }
        if (record.state != ThreadState::free)
            continue;
        ProcessRecord& owner = at(image, process);
        record.process = process;
        record.number = ++owner.threadsMade;
        record.driver = owner.driver && record.number == 1;
        record.object = 0;
        record.wakeDue.store(0, std::memory_order_relaxed);
        record.waitKind = WaitKind::none;
        record.deadline = never;
        record.replyFrom = 0;
        record.call[0] = 0;
        record.id = 0x1000 + 4 * ++image.threadIds;
        return slot;
    }
    return 0;
}

// Returns the exit code of a process that has ended on the host. A program that takes part in the panel ends itself
// with endProcess, so without a recorded code the process was killed.
std::uint32_t codeOfDead(const ProcessRecord& process) {
    if (process.exitKnown.load(std::memory_order_acquire))
        return process.exitCode.load(std::memory_order_relaxed);
    return killedExitCode;
}

void killHostProcess(const ProcessRecord& process) {
    // The start time guards against a reused pid; pid 1 and below would hit other processes.
    if (process.hostPid <= 1 || !host::isAlive(process.hostPid, process.hostStart))
        return;
    ::kill(-process.hostPid, SIGKILL); // the process group, with the children of a script
    ::kill(process.hostPid, SIGKILL);
}

} // namespace

ProcessRecord& at(Image& image, Slot process) {
    return image.processes[process - 1];
}

Slot make(Image& image, const Program& program, Slot starter) {
    const Slot process = makeRecord(image, program);
    if (!process)
        return 0;
    const Slot object = objects::make(image, ObjectType::process);
    const Slot thread = program.aware && object ? makeThreadRecord(image, process) : 0;
    if (!object || (program.aware && !thread)) {
        if (object)
            objects::at(image, object).type = ObjectType::free;
        return 0;
    }
    ProcessRecord& record = at(image, process);
    record.state = ProcessState::created;
    record.starter = starter;
    record.owner = at(image, scheduler::at(image, starter).process).owner;
    record.object = object;
    record.mainThread = thread;
    objects::at(image, object).subject = process;
    if (thread)
        scheduler::at(image, thread).state = ThreadState::waiting;
    return process;
}

Slot makeDriver(Image& image, const Program& program, std::int32_t hostPid, bool owns) {
    const Slot process = makeRecord(image, program);
    if (!process)
        return 0;
    ProcessRecord& record = at(image, process);
    record.driver = 1;
    record.owner = owns ? process : 0;
    const Slot thread = makeThreadRecord(image, process);
    if (!thread)
        return 0;
    record.state = ProcessState::running;
    record.hostPid = hostPid;
    record.hostStart = host::startTime(hostPid);
    record.mainThread = thread;
    scheduler::at(image, thread).state = ThreadState::running;
    return process;
}

Slot makeThread(Image& image, Slot process) {
    const Slot thread = makeThreadRecord(image, process);
    if (thread) {
        scheduler::at(image, thread).state = ThreadState::running;
        ++image.running;
    }
    return thread;
}

void endThread(Image& image, Slot thread) {
    letStartedRun(image, thread);
    scheduler::endThread(image, thread);
    messages::removeThread(image, thread);
}

void letRun(Image& image, Slot slot) {
    ProcessRecord& process = at(image, slot);
    process.state = ProcessState::running;
    process.starter = 0;
    if (process.mainThread)
        scheduler::startsRunning(image, process.mainThread);
    process.released.store(1, std::memory_order_release);
    host::futexWake(process.released, INT_MAX); // as for threads
}

void letStartedRun(Image& image, Slot starter) {
    for (Slot slot = 1; slot <= image.processesUsed; ++slot)
        if (at(image, slot).state == ProcessState::created && at(image, slot).starter == starter)
            letRun(image, slot);
}

void end(Image& image, Slot process, std::uint32_t exitCode) {
    ProcessRecord& record = at(image, process);
    if (!record.aware && record.hostPid > 1)
        ::kill(-record.hostPid, SIGKILL); // the children of a script end with it
    if (!record.driver && record.hostPid)
        image.ended[image.endedCount++ % maxEnded] = {record.program, record.start, exitCode, 0, clock::now(image)};
    for (Slot thread = 1; thread <= image.threadsUsed; ++thread)
        if (scheduler::at(image, thread).state != ThreadState::free && scheduler::at(image, thread).process == process)
            endThread(image, thread);
    objects::closeAllHandles(image, process);
    if (const Slot object = record.object) {
        record.object = 0;
        ObjectRecord& ended = objects::at(image, object);
        ended.subject = 0;
        ended.exitCode = exitCode;
        ended.signalled = 1;
        scheduler::serve(image, object);
        if (ended.holders == 0)
            ended.type = ObjectType::free;
    }
    bool own = false; // the calling process is owned, too: it is killed last, so that it can kill the others
    for (ProcessRecord& owned : usedProcesses(image)) {
        if (owned.state == ProcessState::free || owned.owner != process || &owned == &record)
            continue;
        owned.owner = 0;
        if (owned.hostPid == getpid())
            own = true;
        else
            killHostProcess(owned);
    }
    // Last: if this process is killed in here, another process repeats the whole function.
    record.state = ProcessState::free;
    if (own)
        raise(SIGKILL);
}

void noticeDead(Image& image) {
    const pid_t me = getpid();
    bool someDied = false;
    for (Slot slot = 1; slot <= image.processesUsed; ++slot) {
        ProcessRecord& process = at(image, slot);
        // A process is created under one lock. A record without a pid therefore comes from a starter that died in
        // between.
        if (process.state == ProcessState::free || process.hostPid == me ||
            (process.hostPid != 0 && host::isAlive(process.hostPid, process.hostStart)))
            continue;
        end(image, slot, codeOfDead(process));
        someDied = true;
    }
    if (someDied)
        scheduler::recover(image);
}

void killOnHost(const Image& image) {
    for (const ProcessRecord& process : image.processes)
        if (!process.driver)
            killHostProcess(process);
    for (const ProcessRecord& process : image.processes)
        if (!process.driver && process.hostPid > 1)
            host::waitForEnd(process.hostPid, process.hostStart, lastBreath);
}

void kill(Image& image, Slot slot) {
    if (at(image, slot).hostPid != getpid())
        killHostProcess(at(image, slot));
    end(image, slot, killedExitCode);
}

void killAll(Image& image) {
    for (Slot slot = 1; slot <= image.processesUsed; ++slot) {
        const ProcessRecord& process = at(image, slot);
        if (process.state != ProcessState::free && !process.driver)
            kill(image, slot);
    }
}

std::string name(const Image& image, const ProcessRecord& process) {
    return std::string(image.programs[process.program].name) + "#" + std::to_string(process.start);
}

} // namespace panel::processes
