// The records in the tables of run/kernel (Image.h).
//
// The records have fields of fixed width and no pointers, so that 64-bit programs and 32-bit ARM programs can share one
// file. (The address of a window procedure is stored, but only its own process uses it.) A record of zeros is free.
//
// A reference to a record of another table is a slot: the index plus one. 0 means no record.
#pragma once

#include <atomic>
#include <cstdint>

namespace panel {

// Sizes of the tables. maxProcesses is the platform's own limit; the other tables are larger than the helper normally
// needs.
inline constexpr std::uint32_t maxProcesses = 32;
inline constexpr std::uint32_t maxThreads = 512;
inline constexpr std::uint32_t maxObjects = 1024;
inline constexpr std::uint32_t maxHandles = 512; // per process
inline constexpr std::uint32_t maxWaitObjects = 64;
inline constexpr std::uint32_t maxWindows = 64;
inline constexpr std::uint32_t maxMessages = 16384;
inline constexpr std::uint32_t maxRegisteredMessages = 256;
inline constexpr std::uint32_t maxPrograms = 64;
inline constexpr std::uint32_t maxVolumes = 16;
inline constexpr std::uint32_t maxFaults = 32;
inline constexpr std::uint32_t maxQueueMessages = 256; // in all message queues together
inline constexpr std::uint32_t maxQueueMessageSize = 256; // bytes
inline constexpr std::uint32_t maxBlockDevices = 8;
inline constexpr std::uint32_t maxPartitions = 8; // per block device
inline constexpr std::uint32_t maxSignals = 32;
inline constexpr std::uint32_t maxLingering = 128;
inline constexpr std::uint32_t maxEnded = 64;
inline constexpr std::uint32_t maxMadeNames = 64;
inline constexpr std::uint64_t never = ~std::uint64_t{0}; // a deadline that never comes

using Slot = std::uint32_t; // index + 1; 0: no record

// The types of kernel objects. Handles to all types share one table per process.
enum class ObjectType : std::uint32_t {
    free,
    event,
    mutex,
    process,
    thread,
    file,
    search,
    device,
    key,
    queue,
    notification,
    store,
    partitions, // a search for partitions
};

// A kernel object. Each comment names the types that use the field.
struct ObjectRecord {
    ObjectType type;
    std::uint32_t holders; // number of handles and waits; the object is freed when the number becomes 0
    std::uint32_t manualReset; // events
    std::uint32_t signalled; // events, queues; processes and threads: 1 once ended; mutexes: 1 once abandoned
    std::uint32_t exitCode; // processes that have ended
    Slot owner; // mutexes: the owning thread
    std::uint32_t recursion; // mutexes: how often the owner must still release
    // Queues: maximum number of messages, 0: no limit. Notifications: 1 if the program has asked for block devices.
    std::uint32_t limit;
    std::uint32_t size; // queues: maximum size of a message in bytes
    std::uint32_t serial; // stores and partition searches: BlockDeviceRecord::serial at the time of opening
    std::uint32_t next; // partition searches: index of the next partition
    // Processes and threads: their slot while they run. Files: 1 on the flash volume. Devices: the device's number,
    // from 1. Queues: the first message. Notifications: their queue. Stores and partition searches: the block device.
    Slot subject;
    std::uint32_t access; // files: GENERIC_* bits
    std::uint32_t share; // files: FILE_SHARE_* bits
    std::uint64_t device; // files: identity on the host, which a rename does not change
    std::uint64_t inode;
    std::uint32_t named; // events and mutexes: 1 if the object has a name; the name may be empty
    char name[788]; // events and mutexes: the name in UTF-8; registry keys: the path
};

// An entry of a process's table of handles.
struct HandleRecord {
    Slot object; // 0: closed
    std::uint32_t serial; // how often the entry was used; part of the handle's number
};

// `created`: the process exists, but does not run before its starter waits or ends.
enum class ProcessState : std::uint32_t { free, created, running };

// A process of the panel: a program or a driver. The record is free again when the process has ended; its process
// object keeps the exit code as long as a handle refers to it.
struct ProcessRecord {
    ProcessState state;
    std::int32_t hostPid;
    std::uint64_t hostStart; // start time of that pid on the host; identifies the process even if the pid is reused
    std::uint32_t serial; // differs for each use of the record
    std::uint32_t program; // index into Image::programs
    std::uint32_t start; // start number of that program since boot, from 1
    std::uint32_t aware; // 1: the program takes part in the panel's clock, being linked with this library
    std::uint32_t driver; // 1: a test or a `panel` command, which a power cut does not end
    Slot starter; // the thread that started the process, as long as the state is `created`
    // The slot of a driver: when that driver ends, this process ends too. In a driver that owns programs this is the
    // driver's own slot. 0: no owner.
    Slot owner;
    std::atomic<std::uint32_t> released; // futex word: 1 once the process may begin
    std::atomic<std::uint32_t> exitKnown; // 1: exitCode is valid; set by the parent of a program that is not aware
    std::atomic<std::uint32_t> exitCode;
    Slot mainThread;
    Slot object; // the process object
    std::uint32_t threadsMade;
    std::uint32_t nextHandle; // index at which the next search for a free handle begins
    std::uint64_t device; // the executable's identity on the host
    std::uint64_t inode;
    char path[1048]; // the panel path by which the process was started
    char commandLine[1024];
    HandleRecord handles[maxHandles];
};

enum class ThreadState : std::uint32_t { free, running, waiting };
// The reason of a wait: Sleep, kernel objects, a critical section, GetMessageW, the reply to a sent message, a device
// that blocks or delays, a fault that holds the call.
enum class WaitKind : std::uint32_t { none, time, objects, section, message, reply, device, held };

// A thread with its wait and its message queues. The scheduler (Scheduler.h) changes the state.
struct ThreadRecord {
    ThreadState state;
    Slot process;
    std::uint32_t number; // number in the process by order of creation, from 1
    std::uint32_t driver; // 1: the first thread of a driver
    Slot object; // the thread object; 0 while no handle to it exists
    std::atomic<std::uint32_t> word; // futex word of the thread's wait; changes when the thread is woken
    std::atomic<std::uint32_t> wakeDue; // 1: the thread is marked as running but not woken yet
    WaitKind waitKind;
    std::uint32_t waitCount; // used entries of waitObjects
    std::uint32_t waitResult;
    std::uint64_t waitKey; // critical sections: the section's address in the process
    std::uint64_t waitOrder; // number of the wait; earlier waits are served first
    std::uint64_t deadline; // panel time in ms
    Slot waitObjects[maxWaitObjects];
    Slot postedFirst; // list of posted messages
    Slot postedLast;
    Slot sentFirst; // list of messages that other threads have sent
    Slot sentLast;
    std::int64_t reply; // result of the message that this thread has sent
    std::uint64_t replyToken; // token of that message
    Slot replyFrom; // the receiver of that message
    std::uint32_t replied; // 1: replied, 2: the receiver is gone
    std::uint32_t id; // the result of GetCurrentThreadId; not reused soon
    std::uint64_t waitingSince; // panel ms
    char call[120]; // the platform call in which the thread waits, as the trace shows it; empty: no call
};

// A posted or sent message. Messages form linked lists: the queues of threads, and the list of free records.
struct MessageRecord {
    Slot next;
    Slot window;
    Slot sender; // 0: posted
    std::uint32_t message;
    std::uint32_t time; // tick count
    std::uint64_t token; // ThreadRecord::replyToken of the sender
    std::uint64_t wParam;
    std::int64_t lParam;
};

// A window. Its number, which is also its handle, consists of the serial and the slot.
struct WindowRecord {
    std::uint32_t used;
    std::uint32_t serial;
    Slot thread;
    std::uint32_t visible;
    std::int32_t x, y, width, height;
    std::uint32_t extendedStyle;
    std::uint32_t background; // the brush of the window's class
    std::uint64_t order; // the value of Image::shows when the window was shown last
    std::uint64_t procedure; // address in the window's process
    char className[128];
};

// A message in a point-to-point message queue (Queues.h).
struct QueueMessageRecord {
    std::uint32_t used;
    Slot next;
    std::uint32_t size;
    std::uint8_t bytes[maxQueueMessageSize];
};

// A partition of a block device (Disks.h).
struct PartitionRecord {
    char volume[64]; // name of the volume, without a backslash; it also names a partition that is not mounted yet
    std::uint32_t attributes; // PARTITION_ATTRIBUTE_* bits
    std::uint32_t unused;
};

// A plugged disk. A new disk in the same record has another serial, so handles to the old disk become invalid.
struct BlockDeviceRecord {
    std::uint32_t used;
    std::uint32_t serial; // differs for each use of the record
    std::uint64_t readyAt; // panel ms from which OpenStore succeeds, or `never`
    char name[16]; // "DSK1:"
    std::uint32_t partitionCount;
    std::uint32_t unused;
    PartitionRecord partitions[maxPartitions];
};

// The low-level mouse hook of the panel.
struct HookRecord {
    Slot thread; // the thread that installed the hook; 0: no hook is installed
    std::uint32_t serial;
    std::uint64_t procedure; // address in the thread's process
};

// A program that was started since boot, by its file name.
struct ProgramRecord {
    char name[128]; // file name, in the spelling of the first start
    std::uint32_t starts; // number of starts since boot
};

// The two modes of panel time (Clock.h).
enum class ClockMode : std::uint32_t { stepped, flowing };

// The clock of the panel. Tick count and date follow from `now`.
struct ClockRecord {
    ClockMode mode;
    std::uint32_t factor; // flowing mode: panel ms per 1000 real ms
    std::uint64_t now; // panel ms since boot; in flowing mode: at realBase
    std::int64_t realBase; // flowing mode: the host's monotonic time in ns
    std::int64_t bootDate; // date at boot in ms since 1970 UTC
    std::int64_t endDate; // date when the power went off
    std::uint32_t bootTicks; // tick count at boot
    std::uint32_t unused;
};

// What a power cut leaves of written files (Storage.h). `kept`: each completed write. `closed`: what was written
// through handles that are closed. `torn`: that, and some sectors of the rest.
enum class StoragePolicy : std::uint32_t { kept, closed, torn };

// `fail`: the call fails; `cut`: the power is cut at the call; `hold`: the call waits; `none`: the record is free.
enum class FaultAction : std::uint32_t { none, fail, cut, hold };

// An injected fault (Driver.h). All conditions must match the call.
struct FaultRecord {
    FaultAction action;
    std::uint32_t function; // a value of Function
    std::uint32_t start; // start number of the program; 0: every start
    std::uint32_t thread; // thread number; 0: every thread
    std::uint32_t call; // number of the call, from 1
    std::uint32_t ever; // 1: the fault also applies to all later calls
    std::uint32_t hits; // how often the fault was applied
    std::uint32_t answers; // 1: `answer` replaces the failure result from coredll.inc
    std::int64_t answer;
    std::uint32_t sectors; // power cuts: how many uncommitted sectors of each file stay (StoragePolicy::torn)
    std::uint32_t unused;
    char program[128]; // file name; empty: every program
};

// A process that has ended on the panel, but perhaps not yet on the host.
struct LingeringRecord {
    std::int32_t hostPid;
    std::uint32_t unused;
    std::uint64_t hostStart;
};

// The exit code of a program, for `panel ps --all`. Programs read it from the process object.
struct EndedRecord {
    std::uint32_t program; // index into Image::programs
    std::uint32_t start; // 0: the entry is free
    std::uint32_t exitCode;
    std::uint32_t unused;
    std::uint64_t time; // panel ms
};

// A name that a program has created in a folder (FolderNames.h).
struct MadeNameRecord {
    std::uint64_t device; // the folder's identity on the host
    std::uint64_t inode;
    char name[256];
};

// The number of times that a named event was set since boot.
struct SignalRecord {
    char name[128]; // empty: the entry is free
    std::uint32_t count;
    std::uint32_t unused;
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free && sizeof(std::atomic<std::uint32_t>) == 4);
static_assert(sizeof(MessageRecord) == 48 && sizeof(ObjectRecord) == 864 && sizeof(ClockRecord) == 48 &&
              sizeof(BlockDeviceRecord) == 616 && sizeof(QueueMessageRecord) == 268);

} // namespace panel
