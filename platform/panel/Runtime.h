// The connection of the calling process, and of each of its threads, to a panel.
//
// A program that the panel has started joins the panel at its first platform call. If a program of a panel is started
// outside of a panel, it prints a message and ends with exit code 127. A test or a `panel` command joins as a driver
// (Driver.h).
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/Watcher.h"
#include "platform/panel/kernel/Lock.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

// A result of a file search.
struct Found {
    std::string name;
    std::string hostPath;
    bool top; // the file lies in the panel's root
};

// Data of a handle that only this process needs.
struct LocalObject {
    int file = -1; // host descriptor of an open file
    std::vector<Found> found; // results of a search
    std::size_t nextFound = 0;
};

// The calling thread's data. The destructor removes the thread from the kernel file.
struct ThreadContext {
    Image* image = nullptr; // the panel that the slot belongs to
    Slot slot = 0;
    std::uint32_t id = 0; // thread id; tells different uses of the slot apart
    std::uint32_t number = 0; // thread number in the process, by order of creation
    std::uint32_t lastError = 0;
    std::uint32_t calls[functionCount] = {}; // calls of each platform function so far
    ~ThreadContext();
};

// The process-wide singleton. It lives until the process ends, since threads may use it during exit.
class Runtime {
public:
    // Returns the singleton and joins the panel at the first call. Does not return once the process has ended on the
    // panel.
    static Runtime& instance();

    // Joins the panel in this directory as a driver. Throws std::runtime_error if the panel is off. `path` is the path
    // that process lists show. With `owns` the programs that this process starts end with it.
    static void attachDriver(const std::string& directory, const std::string& path, bool owns);
    static void detachDriver();

    // Ends this process on the panel at once. The host runs its exit handlers afterwards.
    static void endProcess(std::uint32_t exitCode);

    Image& image() {
        return *mapped;
    }
    const std::string& directory() const {
        return root;
    }
    Slot process() const {
        return processSlot;
    }
    ProcessRecord& processRecord() {
        return mapped->processes[processSlot - 1];
    }
    // Returns this process's data of a handle. The caller holds the kernel's lock.
    LocalObject& local(std::uint32_t handle);

    // Returns the calling thread. Registers a thread that the panel does not know yet.
    ThreadContext& thread();
    // Makes the calling thread use a slot that CreateThread has already reserved for it.
    void adoptThread(Slot slot);

private:
    Runtime() = default;
    void attachProgram();
    bool begin(Slot slot, std::uint32_t serial); // false: the record belongs to another process

    Image* mapped = nullptr; // never unmapped: threads may still end while the process detaches
    enum class Part { none, program, driver };
    std::atomic<Part> part = Part::none;
    std::string root;
    Slot processSlot = 0;
    std::vector<LocalObject> locals;
    std::unique_ptr<Watcher> watcher;
};

// The calling thread's number, and its number of calls of a function so far. A test adds them to a fault that is to hit
// a future call.
std::uint32_t callingThreadNumber();
std::uint32_t callsMade(std::string_view function);

// Maps a kernel file. Returns null if the file is missing, if it is a copy from another panel, or if the host was
// rebooted since. Throws std::runtime_error if the file is damaged, has another version or cannot be opened. With
// `tables` it also checks all tables under the lock (Soundness.h). The panel may be off: check Image::on.
Image* mapImage(const std::string& path, bool tables = true);
// The checksum of the image's head (Image::headSum).
std::uint32_t headSum(const Image& image);
void unmapImage(Image* image);

} // namespace panel
