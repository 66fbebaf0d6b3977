// This process's and this thread's part in a panel.
//
// A program that the panel has started attaches at its first platform call; one that was started otherwise is told so
// and ends. A test or the panel command attaches as a driver: the thread that attaches it is outside of the panel's
// time, and panel time moves only while it waits.
#pragma once

#include "platform/panel/Functions.h"
#include "platform/panel/Watcher.h"
#include "platform/panel/kernel/Lock.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace panel {

struct Found { // one entry of a search
    std::string name;
    std::string hostPath;
    bool top; // in the panel's root
};

struct LocalObject { // what this process keeps beside a handle
    int file = -1; // host descriptor
    std::vector<Found> found;
    std::size_t nextFound = 0;
};

struct ThreadContext {
    Image* image = nullptr; // the panel that the slot belongs to
    Slot slot = 0;
    std::uint32_t id = 0; // of this use of the slot
    std::uint32_t number = 0; // order of creation in the process
    std::uint32_t lastError = 0;
    std::uint32_t calls[functionCount] = {};
    ~ThreadContext();
};

class Runtime {
public:
    static Runtime& instance(); // attaches on first use

    // Joins the booted panel in this directory; throws std::runtime_error when it has no power. `path`: what the
    // process counts as being started from. `owns`: what it starts ends with it.
    static void attachDriver(const std::string& directory, const std::string& path, bool owns);
    static void detachDriver();

    // Ends this process's part at once, before what the host does at exit.
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
    LocalObject& local(std::uint32_t handle);

    // The calling thread; one that the panel does not know is registered.
    ThreadContext& thread();
    // For a thread that CreateThread has registered already.
    void adoptThread(Slot slot);

private:
    Runtime() = default;
    void attachProgram();
    bool begin(Slot slot, std::uint32_t serial); // the record is this process's, and may run

    Image* mapped = nullptr; // never unmapped: threads may still end while the process detaches
    enum class Part { none, program, driver };
    std::atomic<Part> part = Part::none;
    std::string root;
    Slot processSlot = 0;
    std::vector<LocalObject> locals;
    std::unique_ptr<Watcher> watcher;
};

// For faults that count from now on: the calling thread's number, and how often it has called a function.
std::uint32_t callingThreadNumber();
std::uint32_t callsMade(std::string_view function);

// Maps the kernel file of a booted panel; null if there is none, also if it is a copy of another panel's, or of another
// boot of the host. One that is damaged, of another version, or cannot be opened is a std::runtime_error. Unmapped by
// unmapImage. `tables`: looks at them too, which takes the lock.
Image* mapImage(const std::string& path, bool tables = true);
std::uint32_t headSum(const Image& image);
void unmapImage(Image* image);

} // namespace panel
