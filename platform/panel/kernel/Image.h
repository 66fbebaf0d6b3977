// What run/kernel holds: the tables of one booted panel, mapped by every process that takes part.
//
// Fixed-width fields only and no pointers (a window procedure's address means something to its own process alone), so
// that 64-bit programs and 32-bit ARM programs share one image. All zero is the state before boot: a new file is a
// valid image. Everything is read and written under `lock`, except where a field is atomic.
//
// References between tables are slots: an index plus one, 0 means none.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace panel {

inline constexpr std::uint32_t maxProcesses = 32; // as on the platform
inline constexpr std::uint32_t maxThreads = 512;
inline constexpr std::uint32_t maxObjects = 1024;
inline constexpr std::uint32_t maxHandles = 512; // of one process
inline constexpr std::uint32_t maxWaitObjects = 64;
inline constexpr std::uint32_t maxWindows = 64;
inline constexpr std::uint32_t maxMessages = 16384;
inline constexpr std::uint32_t maxRegisteredMessages = 256;
inline constexpr std::uint32_t maxPrograms = 64;
inline constexpr std::uint32_t maxVolumes = 16;
inline constexpr std::uint32_t maxFaults = 32;
inline constexpr std::uint32_t maxQueueMessages = 256; // of all message queues
inline constexpr std::uint32_t maxQueueMessageSize = 256; // bytes
inline constexpr std::uint32_t maxBlockDevices = 8;
inline constexpr std::uint32_t maxPartitions = 8; // of a block device
inline constexpr std::uint32_t maxSignals = 32;
inline constexpr std::uint32_t maxLingering = 128;
inline constexpr std::uint32_t maxEnded = 64;
inline constexpr std::uint32_t maxMadeNames = 64;
inline constexpr std::uint64_t never = ~std::uint64_t{0}; // a deadline that does not come

using Slot = std::uint32_t; // index + 1; 0: none

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
    partitions, // a search for them
};

struct ObjectRecord {
    ObjectType type;
    std::uint32_t holders; // handles and waits; the object goes with the last
    std::uint32_t manualReset; // events
    std::uint32_t signalled; // events; processes and threads that have ended
    std::uint32_t exitCode; // processes that have ended
    Slot owner; // mutexes: the owning thread
    std::uint32_t recursion; // mutexes: how often the owner must release
    std::uint32_t limit; // queues: how many messages they take, 0: any number; notifications: wants block devices
    std::uint32_t size; // queues: bytes of a message at most
    std::uint32_t serial; // stores and partition searches: which use of the block device's record
    std::uint32_t next; // partition searches: where they go on
    Slot subject; // processes: its slot while it runs; files: 1 on the flash; devices: which, from 1; queues: the first
                  // message; notifications: their queue; stores and partition searches: the block device
    std::uint32_t access; // files: GENERIC_* bits
    std::uint32_t share; // files: FILE_SHARE_* bits
    std::uint64_t device; // files: identity on the host, which a rename does not change
    std::uint64_t inode;
    std::uint32_t named; // events and mutexes: 1 with a name, be it the empty one
    char name[788]; // events and mutexes: UTF-8; registry keys: their path
};

struct HandleRecord {
    Slot object; // 0: closed
    std::uint32_t serial; // how often the entry was used
};

enum class ProcessState : std::uint32_t { free, created, running };

struct ProcessRecord {
    ProcessState state;
    std::int32_t hostPid;
    std::uint64_t hostStart; // the host's start time of that pid, which makes it unmistakable
    std::uint32_t serial; // differs for each use of the record
    std::uint32_t program; // index into Image::programs
    std::uint32_t start; // how many-th start of that program since boot
    std::uint32_t aware; // takes part in the panel's clock: linked with this library
    std::uint32_t driver; // a test or the panel command: outside of the panel's time and power
    Slot starter; // the thread that started it, while the process stands still for it
    Slot owner; // the driver whose end ends it: a driver that owns what it starts names itself; 0: nobody
    std::atomic<std::uint32_t> released; // futex word: the process may begin
    std::atomic<std::uint32_t> exitKnown; // set with exitCode by the stub of a program that does not take part
    std::atomic<std::uint32_t> exitCode;
    Slot mainThread;
    Slot object;
    std::uint32_t threadsMade;
    std::uint32_t nextHandle; // where the search for a free entry goes on
    std::uint64_t device; // its executable's identity on the host
    std::uint64_t inode;
    char path[1048]; // as it was started by
    char commandLine[1024];
    HandleRecord handles[maxHandles];
};

enum class ThreadState : std::uint32_t { free, running, waiting };
enum class WaitKind : std::uint32_t { none, time, objects, section, message, reply, device };

struct ThreadRecord {
    ThreadState state;
    Slot process;
    std::uint32_t number; // 1 for the process's first thread
    std::uint32_t driver;
    Slot object; // 0 while nobody has a handle to it
    std::atomic<std::uint32_t> word; // what the thread sleeps on; changes when it may go on
    std::atomic<std::uint32_t> wakeDue; // marked as running, but not woken yet
    WaitKind waitKind;
    std::uint32_t waitCount;
    std::uint32_t waitResult;
    std::uint64_t waitKey; // sections: the address in the process
    std::uint64_t waitOrder; // first come, first served
    std::uint64_t deadline; // panel time in ms
    Slot waitObjects[maxWaitObjects];
    Slot postedFirst; // its message queue
    Slot postedLast;
    Slot sentFirst; // messages that others sent and wait for
    Slot sentLast;
    std::int64_t reply; // what its own sent message was answered
    std::uint64_t replyToken; // which sent message it waits for
    Slot replyFrom; // the thread that is to answer it
    std::uint32_t replied; // 1: answered, 2: the receiver is gone
    std::uint32_t id; // what GetCurrentThreadId answers; does not repeat soon
    std::uint64_t waitingSince; // panel ms
    char call[120]; // the platform call that it waits in, as the trace shows it; empty: in none
};

struct MessageRecord {
    Slot next;
    Slot window;
    std::uint32_t windowSerial;
    Slot sender; // 0: posted
    std::uint32_t message;
    std::uint32_t time; // ticks
    std::uint64_t token; // the sender's replyToken
    std::uint64_t wParam;
    std::int64_t lParam;
};

struct WindowRecord {
    std::uint32_t used;
    std::uint32_t serial;
    Slot thread;
    std::uint32_t visible;
    std::int32_t x, y, width, height;
    std::uint32_t extendedStyle;
    std::uint32_t background; // its class's brush
    std::uint64_t order; // which of all showings was its last
    std::uint64_t procedure; // address in its process
    char className[128];
};

struct QueueMessageRecord {
    std::uint32_t used;
    Slot next;
    std::uint32_t size;
    std::uint8_t bytes[maxQueueMessageSize];
};

struct PartitionRecord {
    char volume[64]; // its top folder, without a separator; of one that is not mounted: what it would be
    std::uint32_t attributes; // PARTITION_ATTRIBUTE_*
    std::uint32_t unused;
};

struct BlockDeviceRecord {
    std::uint32_t used;
    std::uint32_t serial;
    std::uint64_t readyAt; // panel ms; never: its store does not open
    char name[16]; // "DSK1:"
    std::uint32_t partitionCount;
    std::uint32_t unused;
    PartitionRecord partitions[maxPartitions];
};

struct HookRecord {
    Slot thread; // that installed it; 0: there is none
    std::uint32_t serial;
    std::uint64_t procedure; // address in its process
};

struct ProgramRecord {
    char name[128]; // file name, as first started
    std::uint32_t starts;
};

enum class ClockMode : std::uint32_t { stepped, flowing };

struct ClockRecord {
    ClockMode mode;
    std::uint32_t factor; // flowing: panel ms in 1000 real ms
    std::uint64_t now; // panel ms since boot; flowing: at realBase
    std::int64_t realBase; // flowing: host's monotonic time in ns
    std::int64_t bootDate; // ms since 1970 UTC
    std::uint32_t bootTicks; // the tick count at boot
    std::uint32_t unused;
};

enum class FaultAction : std::uint32_t { none, fail, cut };

struct FaultRecord {
    FaultAction action;
    std::uint32_t function; // Function
    std::uint32_t start; // 0: every start of the program
    std::uint32_t thread; // 0: every thread
    std::uint32_t call; // 1: the first
    std::uint32_t ever; // from that call on
    std::uint32_t hits;
    std::uint32_t answers; // `answer` stands in for the list's failure
    std::int64_t answer;
    char program[128]; // empty: every program
};

struct LingeringRecord { // a process that has ended on the panel, but not yet on the host
    std::int32_t hostPid;
    std::uint32_t unused;
    std::uint64_t hostStart;
};

struct EndedRecord { // a program's exit code for people; the platform keeps it in the process object alone
    std::uint32_t program; // index into Image::programs
    std::uint32_t start; // 0: the entry is free
    std::uint32_t exitCode;
    std::uint32_t unused;
    std::uint64_t time; // panel ms
};

struct MadeNameRecord { // a name that a program has made in a folder (FolderNames.h)
    std::uint64_t device; // the folder's identity on the host
    std::uint64_t inode;
    char name[256];
};

struct SignalRecord { // how often an event was set, whoever held it
    char name[128]; // empty: the entry is free
    std::uint32_t count;
    std::uint32_t unused;
};

struct Image {
    std::atomic<std::uint32_t> magic; // set last, when the image is ready; 0 again once somebody wrote over the file
    std::uint32_t version;
    std::uint64_t fileDevice; // the kernel file's own identity: a copy of a panel that is on is off
    std::uint64_t fileInode;
    char hostBoot[40]; // and so is one that the host's own reboot has ended
    std::uint32_t headSum; // of the four fields above, which never change
    std::atomic<std::uint32_t> lock; // names its owner (Lock.h); top bit: somebody sleeps on it
    std::atomic<std::uint32_t> on; // the panel has power: 0 or 1
    std::uint32_t threadsUsed; // records that were ever used: nobody looks at those behind them
    std::uint32_t objectsUsed;
    std::uint32_t processesUsed;
    std::uint32_t running; // threads of the panel that are not waiting
    std::uint32_t waitingDrivers;
    std::uint64_t waitOrder;
    ClockRecord clock;
    std::atomic<std::uint32_t> tracing;
    std::atomic<std::uint32_t> faultCount;
    std::uint32_t screenWidth;
    std::uint32_t screenHeight;
    std::uint32_t flashWritable; // its volume driver was told so
    Slot activeEvent; // the power manager's; 0: the panel has none
    Slot inactiveEvent;
    std::uint32_t backLight[4]; // what the driver holds now
    HookRecord mouseHook;
    std::uint64_t shows; // of windows, so far
    std::int32_t cursorCount;
    std::atomic<std::uint32_t> watched; // futex word: 1 while somebody sleeps until the next release of the lock
    SignalRecord signals[maxSignals];
    std::uint32_t messagesUsed; // records of `messages` that were ever used
    Slot freeMessage;
    std::uint32_t nextLingering;
    std::uint32_t threadIds;
    std::uint32_t endedCount; // since boot
    char volumes[maxVolumes][64]; // top folders that are volumes of their own; empty: free
    char registeredMessages[maxRegisteredMessages][128];
    std::uint8_t programsMessages[maxRegisteredMessages]; // 1: a program has registered it, not a command alone
    ProgramRecord programs[maxPrograms];
    FaultRecord faults[maxFaults];
    LingeringRecord lingering[maxLingering];
    EndedRecord ended[maxEnded]; // a ring: the last ones
    std::uint64_t namesMade; // so far
    MadeNameRecord madeNames[maxMadeNames]; // a ring: the last ones
    BlockDeviceRecord blockDevices[maxBlockDevices];
    QueueMessageRecord queueMessages[maxQueueMessages];
    ObjectRecord objects[maxObjects];
    WindowRecord windows[maxWindows];
    ThreadRecord threads[maxThreads];
    ProcessRecord processes[maxProcesses];
    MessageRecord messages[maxMessages];
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free && sizeof(std::atomic<std::uint32_t>) == 4);
static_assert(sizeof(MessageRecord) == 48 && sizeof(ObjectRecord) == 864 && sizeof(ClockRecord) == 40 &&
              sizeof(BlockDeviceRecord) == 616 && sizeof(QueueMessageRecord) == 268);

// One number for the layout. A program that was built with another one, be it for the other machine, is refused: it
// would misread the tables. A new table of Image joins by a line here.
constexpr std::uint32_t layoutNumber() {
    const std::size_t facts[] = {
        3, // counts what changes in meaning alone
        sizeof(Image),
        offsetof(Image, on),
        offsetof(Image, clock),
        offsetof(Image, tracing),
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
        offsetof(ObjectRecord, device),
        offsetof(BlockDeviceRecord, partitions),
        offsetof(ProcessRecord, hostStart),
        offsetof(ProcessRecord, path),
        offsetof(ProcessRecord, handles),
        offsetof(ThreadRecord, waitKey),
        offsetof(ThreadRecord, waitObjects),
        offsetof(ThreadRecord, id),
        offsetof(MessageRecord, lParam),
        offsetof(WindowRecord, procedure),
    };
    std::uint32_t number = 2166136261U; // FNV-1a over words
    for (const std::size_t fact : facts)
        number = (number ^ static_cast<std::uint32_t>(fact)) * 16777619U;
    return number;
}

inline constexpr std::uint32_t imageMagic = 0x4C4E4150;
inline constexpr std::uint32_t imageVersion = layoutNumber();

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
