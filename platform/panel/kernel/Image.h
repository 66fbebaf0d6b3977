// The content of run/kernel: the tables of one booted panel (Records.h). Every process of the panel maps this file.
//
// A file of zeros is a valid image: the state before boot. All fields are read and written under `lock`, except atomic
// fields.
#pragma once

#include "platform/panel/kernel/Records.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace panel {

// The whole content of the file.
struct Image {
    std::atomic<std::uint32_t> magic; // boot sets it last; the Watcher clears it when the file was overwritten
    std::uint32_t version; // imageVersion
    std::uint64_t fileDevice; // identity of the kernel file: a copied panel is off, since its file has another identity
    std::uint64_t fileInode;
    char hostBoot[40]; // host::bootId at boot: after a reboot of the host the panel is off
    std::uint32_t headSum; // checksum of version, fileDevice, fileInode and hostBoot, which never change
    std::atomic<std::uint32_t> lock; // the kernel's lock (Lock.h): its owner; top bit: a thread waits to own the lock
    std::atomic<std::uint32_t> on; // 1 while the panel has power
    std::uint32_t threadsUsed; // number of records that were ever used; searches stop there
    std::uint32_t objectsUsed;
    std::uint32_t processesUsed;
    std::uint32_t running; // number of running threads of programs
    std::uint32_t waitingDrivers; // number of waiting driver threads
    std::uint64_t waitOrder; // number of waits and sent messages so far
    ClockRecord clock;
    std::atomic<std::uint32_t> tracing; // 0: off; else the limit of the trace (Trace.h)
    std::atomic<std::uint32_t> faultCount;
    std::uint32_t screenWidth;
    std::uint32_t screenHeight;
    StoragePolicy storage;
    std::uint32_t flashWritable; // 1 after the volume driver's "writable" request
    Slot activeEvent; // the power manager's events; 0: the panel has no power manager
    Slot inactiveEvent;
    std::uint32_t backLight[4]; // the record of the backlight driver
    HookRecord mouseHook;
    std::uint64_t shows; // number of times that a window was shown
    std::int32_t cursorCount; // the cursor is visible while the count is 0 or more
    std::atomic<std::uint32_t> watched; // futex word: 1 while `panel view` sleeps until the next release of the lock
    SignalRecord signals[maxSignals];
    std::uint32_t messagesUsed; // number of records of `messages` that were ever used
    Slot freeMessage; // list of free records below messagesUsed
    std::uint32_t nextLingering; // number of records written to `lingering` so far
    std::uint32_t threadIds; // number of thread ids given so far
    std::uint32_t endedCount; // number of programs that have ended since boot
    char directory[4096]; // the panel's directory on the host
    char volumes[maxVolumes][64]; // names of the volumes; empty: the entry is free
    char registeredMessages[maxRegisteredMessages][128];
    std::uint8_t programsMessages[maxRegisteredMessages]; // 1: registered by a program, not only by a command
    ProgramRecord programs[maxPrograms];
    FaultRecord faults[maxFaults];
    LingeringRecord lingering[maxLingering];
    EndedRecord ended[maxEnded]; // ring buffer of the latest records
    std::uint64_t namesMade; // number of names written to `madeNames` so far
    MadeNameRecord madeNames[maxMadeNames]; // ring buffer of the latest records
    BlockDeviceRecord blockDevices[maxBlockDevices];
    QueueMessageRecord queueMessages[maxQueueMessages];
    ObjectRecord objects[maxObjects];
    WindowRecord windows[maxWindows];
    ThreadRecord threads[maxThreads];
    ProcessRecord processes[maxProcesses];
    MessageRecord messages[maxMessages];
};

// Returns a number that stands for the layout of Image. A program with another number, for example a loader that was
// built from older sources, cannot map the kernel file: it would misread the tables. Add a line for each new table.
constexpr std::uint32_t layoutNumber() {
    const std::size_t facts[] = {
        4, // increment it when a field changes its meaning, but not its place
        sizeof(Image),
        offsetof(Image, on),
        offsetof(Image, clock),
        offsetof(Image, tracing),
        offsetof(Image, storage),
        offsetof(Image, volumes),
        offsetof(Image, programs),
        offsetof(Image, faults),
        offsetof(Image, lingering),
        offsetof(Image, ended),
        offsetof(Image, madeNames),
        offsetof(Image, blockDevices),
        offsetof(Image, queueMessages),
        offsetof(Image, objects),
        offsetof(Image, windows),
        offsetof(Image, threads),
        offsetof(Image, processes),
        offsetof(Image, messages),
        offsetof(FaultRecord, sectors),
        offsetof(ObjectRecord, device),
        offsetof(BlockDeviceRecord, partitions),
        offsetof(ProcessRecord, hostStart),
        offsetof(ProcessRecord, path),
        offsetof(ProcessRecord, handles),
        offsetof(ThreadRecord, waitKey),
        offsetof(ThreadRecord, waitObjects),
        offsetof(ThreadRecord, id),
        offsetof(MessageRecord, time),
        offsetof(WindowRecord, procedure),
    };
    std::uint32_t number = 2166136261U; // FNV-1a over words
    for (const std::size_t fact : facts)
        number = (number ^ static_cast<std::uint32_t>(fact)) * 16777619U;
    return number;
}

inline constexpr std::uint32_t imageMagic = 0x4C4E4150;
inline constexpr std::uint32_t imageVersion = layoutNumber();

// The records of a table that were ever used. Searches of threads, objects and processes can stop at their end.
inline std::span<ThreadRecord> usedThreads(Image& image) {
    return {image.threads, image.threadsUsed};
}
inline std::span<const ThreadRecord> usedThreads(const Image& image) {
    return {image.threads, image.threadsUsed};
}
inline std::span<const ObjectRecord> usedObjects(const Image& image) {
    return {image.objects, image.objectsUsed};
}
inline std::span<ProcessRecord> usedProcesses(Image& image) {
    return {image.processes, image.processesUsed};
}
inline std::span<const ProcessRecord> usedProcesses(const Image& image) {
    return {image.processes, image.processesUsed};
}

} // namespace panel
