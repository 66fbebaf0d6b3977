#include "platform/panel/Runtime.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Scheduler.h"
#include "platform/panel/kernel/Soundness.h"
#include "platform/panel/kernel/Wait.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace panel {

namespace {

// This section marks a program that takes part in the panel's clock (Program.cpp looks for it).
[[gnu::section(".panel_program"), gnu::used]] const char programMarker[] = "panel program";

constexpr const char* remedy = " (panel off ends all programs; then boot it again)";

Runtime* current = nullptr;
thread_local ThreadContext context;

// Registered before the program's own exit handlers and therefore run after them, but before those of a sanitizer.
[[gnu::constructor(101)]] void watchExit() {
    on_exit([](int status, void*) { Runtime::endProcess(static_cast<std::uint32_t>(status)); }, nullptr);
}

} // namespace

std::uint32_t headSum(const Image& image) {
    std::uint32_t number = 2166136261U; // FNV-1a over bytes
    const auto* const bytes = reinterpret_cast<const unsigned char*>(&image);
    for (std::size_t place = offsetof(Image, version); place < offsetof(Image, headSum); ++place)
        number = (number ^ bytes[place]) * 16777619U;
    return number;
}

Image* mapImage(const std::string& path, bool tables) {
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (file < 0 && (errno == ENOENT || errno == ENOTDIR))
        return nullptr;
    if (file < 0) {
        const bool full = errno == EMFILE || errno == ENFILE;
        throw std::runtime_error("cannot open " + path + ": " + std::strerror(errno) +
                                 (full ? " (ulimit -n)" : remedy));
    }
    struct stat status {};
    const bool whole = fstat(file, &status) == 0 && status.st_size == static_cast<off_t>(sizeof(Image));
    void* address = whole ? mmap(nullptr, sizeof(Image), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0) : MAP_FAILED;
    close(file);
    if (address == MAP_FAILED)
        throw std::runtime_error(path + " is damaged, or of another version of the simulation" + remedy);
    auto* image = static_cast<Image*>(address);
    if (image->magic != imageMagic || image->headSum != headSum(*image) || image->version != imageVersion) {
        const bool other = image->magic == imageMagic && image->version != imageVersion;
        unmapImage(image);
        throw std::runtime_error(path + (other ? " is of another version of the simulation" : " is damaged") + remedy);
    }
    if (image->fileDevice != status.st_dev || image->fileInode != status.st_ino || host::bootId() != image->hostBoot) {
        unmapImage(image);
        return nullptr;
    }
    bool sound = true;
    if (tables) {
        const Lock lock(*image);
        sound = !image->on || isSound(*image);
        if (sound && image->on)
            scheduler::recover(*image);
    }
    if (!sound) {
        unmapImage(image);
        throw std::runtime_error(path + " is damaged" + remedy);
    }
    return image;
}

void unmapImage(Image* image) {
    munmap(image, sizeof(Image));
}

ThreadContext::~ThreadContext() {
    if (!slot || number == 1 || processEnded) // endProcess ends the first thread
        return;
    {
        const Lock lock(*image);
        const ThreadRecord& record = scheduler::at(*image, slot);
        // Otherwise the process has ended, and the slot may be in use again.
        if (record.state != ThreadState::free && record.id == id)
            processes::endThread(*image, slot);
        scheduler::step(*image);
    }
    scheduler::deliverWakes(*image);
}

Runtime& Runtime::instance() {
    if (!current) {
        current = new Runtime; // never deleted: other threads may use it during exit
        current->locals.resize(maxHandles);
        current->attachProgram();
    }
    if (processEnded)
        standStill();
    return *current;
}

void Runtime::attachProgram() {
    const char* directory = std::getenv("PANEL");
    const char* place = std::getenv("PANEL_PROCESS"); // CreateProcessW sets it to "slot:serial"
    unsigned slot = 0;
    unsigned serial = 0;
    if (!directory || !place || std::sscanf(place, "%u:%u", &slot, &serial) != 2) {
        std::fputs("This program runs on a simulated panel: start it with \"panel start\".\n", stderr);
        _exit(127);
    }
    root = directory;
    try {
        mapped = mapImage(root + "/run/kernel", false);
        if (!mapped || slot < 1 || slot > maxProcesses || !begin(slot, serial))
            throw std::runtime_error("The panel has been switched off.");
        processSlot = slot;
        part = Part::program;
        Lock::endsWithPower = true;
        adoptThread(processRecord().mainThread);
        watcher = std::make_unique<Watcher>(*mapped, root, false);
    } catch (const std::runtime_error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        _exit(127);
    }
}

bool Runtime::begin(Slot slot, std::uint32_t serial) {
    const Lock lock(*mapped);
    processes::noticeDead(*mapped); // the owner may have died, and this process must end with it
    const ProcessRecord& process = processes::at(*mapped, slot);
    if (!mapped->on || process.state == ProcessState::free || process.serial != serial || process.hostPid != getpid())
        return false;
    if (process.state == ProcessState::created) // the starter was killed before it could let this process run
        processes::letRun(*mapped, slot);
    return true;
}

void Runtime::attachDriver(const std::string& directory, const std::string& path, bool owns) {
    detachDriver();
    Image* image = mapImage(directory + "/run/kernel");
    Slot process = 0;
    bool on = false;
    if (image) {
        const Lock lock(*image);
        on = image->on;
        processes::noticeDead(*image);
        process = on ? processes::makeDriver(*image, {path, "", 0, 0, true}, getpid(), owns) : 0;
    }
    if (image)
        scheduler::deliverWakes(*image);
    if (!process) {
        if (image)
            unmapImage(image);
        throw std::runtime_error(
            (on ? "the panel has no room for another process: " : "the panel is off (panel boot switches it on): ") +
            directory);
    }
    if (!current) {
        current = new Runtime;
        current->locals.resize(maxHandles);
    }
    current->mapped = image;
    current->part = Part::driver;
    current->root = directory;
    current->processSlot = process;
    current->adoptThread(current->processRecord().mainThread);
    current->watcher = std::make_unique<Watcher>(*image, directory, true);
    Watcher::announce(directory);
}

void Runtime::detachDriver() {
    if (!current || current->part != Part::driver)
        return;
    current->watcher.reset();
    {
        const Lock lock(*current->mapped);
        context.slot = 0;
        processes::end(*current->mapped, current->processSlot, 0);
        scheduler::step(*current->mapped);
    }
    scheduler::deliverWakes(*current->mapped);
    current->part = Part::none;
}

void Runtime::endProcess(std::uint32_t exitCode) {
    if (!current || current->part == Part::none)
        return;
    std::fflush(nullptr); // the host would flush the streams later, after the panel has closed their files
    endsProcess = true;
    if (processEnded.exchange(true))
        return;
    Image& image = *current->mapped;
    {
        const Lock lock(image);
        ProcessRecord& process = current->processRecord();
        image.lingering[image.nextLingering++ % maxLingering] = {process.hostPid, 0, process.hostStart};
        processes::end(image, current->processSlot, exitCode);
        scheduler::step(image);
    }
    scheduler::deliverWakes(image);
}

LocalObject& Runtime::local(std::uint32_t handle) {
    return locals[handle >> 2 & (maxHandles - 1)];
}

void Runtime::adoptThread(Slot slot) {
    context.image = mapped;
    context.slot = slot;
    context.id = scheduler::at(*mapped, slot).id;
    context.number = scheduler::at(*mapped, slot).number;
}

std::uint32_t callingThreadNumber() {
    return Runtime::instance().thread().number;
}

std::uint32_t callsMade(std::string_view function) {
    const auto known = functionNamed(function);
    return known ? Runtime::instance().thread().calls[static_cast<std::size_t>(*known)] : 0;
}

ThreadContext& Runtime::thread() {
    if (!context.slot) {
        Slot slot = 0;
        {
            const Lock lock(*mapped);
            slot = processes::makeThread(*mapped, processSlot);
        }
        if (!slot) {
            std::fputs("The panel has no room for another thread.\n", stderr);
            std::abort();
        }
        adoptThread(slot);
    }
    return context;
}

} // namespace panel
