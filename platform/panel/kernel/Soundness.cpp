#include "platform/panel/kernel/Soundness.h"

#include "platform/panel/Functions.h"
#include "platform/panel/kernel/Host.h"

#include <algorithm>
#include <bitset>
#include <cstring>

namespace panel {

namespace {

constexpr std::int64_t farDate = 253402300800000; // ms from 1970 to the year 10000
constexpr std::uint32_t largestScreen = 16384;
constexpr std::uint32_t largestFactor = 100000000;

template<std::size_t size>
bool ends(const char (&text)[size]) {
    return std::memchr(text, 0, size) != nullptr;
}

// Follows linked lists of records. A record may be in one list only, and only once.
template<std::uint32_t size>
class Chains {
public:
    template<class Record>
    bool follow(const Record* records, Slot first, std::uint32_t used) {
        for (Slot slot = first; slot; slot = records[slot - 1].next) {
            if (slot > used || seen[slot - 1])
                return false;
            seen.set(slot - 1);
        }
        return true;
    }

private:
    std::bitset<size> seen;
};

bool areSound(const ClockRecord& clock) {
    return clock.mode <= ClockMode::flowing && clock.factor - 1 < largestFactor && clock.now < farDate &&
           clock.realBase >= 0 && clock.realBase <= host::monotonicNanoseconds() && clock.bootDate > -farDate &&
           clock.bootDate < farDate;
}

bool isSound(const Image& image, const ObjectRecord& object) {
    if (object.type > ObjectType::partitions || !ends(object.name) || object.owner > image.threadsUsed)
        return false;
    switch (object.type) {
    case ObjectType::process:
        return object.subject <= image.processesUsed;
    case ObjectType::thread:
        return object.subject <= image.threadsUsed;
    case ObjectType::notification:
        return object.subject - 1 < image.objectsUsed;
    case ObjectType::store:
    case ObjectType::partitions:
        return object.subject - 1 < maxBlockDevices;
    default: // the subject of other types is not a slot, or is the head of a list that is checked elsewhere
        return true;
    }
}

bool isSound(const Image& image, const ProcessRecord& process) {
    const auto isOpenable = [&](const HandleRecord& handle) { return handle.object <= image.objectsUsed; };
    return process.state <= ProcessState::running && process.hostPid >= 0 && process.program < maxPrograms &&
           process.starter <= image.threadsUsed && process.owner <= image.processesUsed &&
           process.mainThread <= image.threadsUsed && process.object <= image.objectsUsed && ends(process.path) &&
           ends(process.commandLine) && std::all_of(std::begin(process.handles), std::end(process.handles), isOpenable);
}

bool isSound(const Image& image, const ThreadRecord& thread) {
    // waitCount is checked below, but the range must be valid even for a wrong count.
    const auto* const end = thread.waitObjects + std::min(thread.waitCount, maxWaitObjects);
    const bool waits = thread.waitKind == WaitKind::objects;
    return thread.state <= ThreadState::waiting && thread.process - 1 < image.processesUsed &&
           thread.object <= image.objectsUsed && thread.waitKind <= WaitKind::held &&
           (!waits ||
            (thread.waitCount <= maxWaitObjects &&
             std::all_of(thread.waitObjects, end, [&](Slot object) { return object - 1 < image.objectsUsed; }))) &&
           thread.postedLast <= image.messagesUsed && thread.sentLast <= image.messagesUsed &&
           thread.replyFrom <= image.threadsUsed;
}

// Returns whether all lists of messages end and share no record.
bool listsEnd(const Image& image) {
    Chains<maxMessages> messages;
    Chains<maxQueueMessages> queued;
    bool sound = messages.follow(image.messages, image.freeMessage, image.messagesUsed);
    for (const ThreadRecord& thread : usedThreads(image))
        sound = sound && messages.follow(image.messages, thread.postedFirst, image.messagesUsed) &&
                messages.follow(image.messages, thread.sentFirst, image.messagesUsed);
    for (const ObjectRecord& object : usedObjects(image))
        sound = sound && (object.type != ObjectType::queue ||
                          queued.follow(image.queueMessages, object.subject, maxQueueMessages));
    return sound;
}

bool isSound(const BlockDeviceRecord& device) {
    return ends(device.name) && device.partitionCount <= maxPartitions &&
           std::all_of(std::begin(device.partitions), std::end(device.partitions),
                       [](const PartitionRecord& partition) { return ends(partition.volume); });
}

template<class Records, class Predicate>
bool all(const Records& records, Predicate predicate) {
    return std::all_of(std::begin(records), std::end(records), predicate);
}

} // namespace

bool isSound(const Image& image) {
    if (image.on > 1 || image.threadsUsed > maxThreads || image.objectsUsed > maxObjects ||
        image.processesUsed > maxProcesses || image.messagesUsed > maxMessages ||
        image.activeEvent > image.objectsUsed || image.inactiveEvent > image.objectsUsed ||
        image.mouseHook.thread > image.threadsUsed || image.screenWidth - 1 >= largestScreen ||
        image.screenHeight - 1 >= largestScreen || !areSound(image.clock))
        return false;
    const auto sound = [&](const auto& record) { return isSound(image, record); };
    return all(usedObjects(image), sound) && all(usedProcesses(image), sound) && all(usedThreads(image), sound) &&
           all(std::span(image.messages, image.messagesUsed),
               [&](const MessageRecord& message) { return message.sender <= image.threadsUsed; }) &&
           listsEnd(image) &&
           all(image.windows,
               [&](const WindowRecord& window) {
                   return !window.used || (window.thread - 1 < image.threadsUsed && ends(window.className) &&
                                           image.threads[window.thread - 1].process != 0);
               }) &&
           all(image.queueMessages,
               [](const QueueMessageRecord& message) {
                   return message.next <= maxQueueMessages && message.size <= maxQueueMessageSize;
               }) &&
           all(image.blockDevices, [](const BlockDeviceRecord& device) { return isSound(device); }) &&
           all(image.programs, [](const ProgramRecord& program) { return ends(program.name); }) &&
           all(image.ended, [](const EndedRecord& ended) { return ended.program < maxPrograms; }) &&
           all(image.signals, [](const SignalRecord& signal) { return ends(signal.name); }) &&
           image.storage <= StoragePolicy::torn && ends(image.directory) &&
           all(image.volumes, [](const auto& volume) { return ends(volume); }) &&
           all(image.registeredMessages, [](const auto& name) { return ends(name); }) &&
           all(image.faults, [](const FaultRecord& fault) {
               return fault.action <= FaultAction::hold && fault.function < functionCount && ends(fault.program);
           });
}

} // namespace panel
