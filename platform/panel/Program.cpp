#include "platform/panel/Program.h"

#include "platform/panel/PortableExecutable.h"
#include "platform/panel/Watcher.h"
#include "platform/panel/kernel/Host.h"
#include "platform/panel/kernel/Processes.h"

#include <windows.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace panel {

namespace {

constexpr int programDescriptor = 3; // descriptor of the program's file in the new process
constexpr const char* programPath = "/proc/self/fd/3";

template<class Record>
bool readAt(int file, std::uint64_t offset, Record& record) {
    return pread(file, &record, sizeof record, static_cast<off_t>(offset)) == static_cast<ssize_t>(sizeof record);
}

// Returns whether the program has the section that Runtime.cpp puts into every program of the panel.
bool hasMarker(int file) {
    Elf64_Ehdr header;
    Elf64_Shdr names;
    if (!readAt(file, 0, header) || header.e_ident[EI_CLASS] != ELFCLASS64 ||
        !readAt(file, header.e_shoff + std::uint64_t{header.e_shentsize} * header.e_shstrndx, names))
        return false;
    for (unsigned index = 0; index < header.e_shnum; ++index) {
        Elf64_Shdr section;
        char name[16] = {};
        if (readAt(file, header.e_shoff + std::uint64_t{header.e_shentsize} * index, section) &&
            readAt(file, names.sh_offset + section.sh_name, name) && std::strcmp(name, ".panel_program") == 0)
            return true;
    }
    return false;
}

// Checks the parts of the file that a panel checks before it creates a process: machine, subsystem and complete
// sections. The loader checks the rest.
bool isPanelExecutable(int file) {
    std::uint32_t header = 0;
    std::uint32_t signature = 0;
    std::uint16_t machine = 0;
    std::uint16_t subsystem = 0;
    std::uint16_t optionalSize = 0;
    std::uint16_t sections = 0;
    struct stat status {};
    if (!readAt(file, pe::signaturePlace, header) || !readAt(file, header, signature) ||
        !readAt(file, std::uint64_t{header} + pe::machine, machine) ||
        !readAt(file, std::uint64_t{header} + pe::subsystem, subsystem) ||
        !readAt(file, std::uint64_t{header} + pe::optionalSize, optionalSize) ||
        !readAt(file, std::uint64_t{header} + pe::sectionCount, sections) || fstat(file, &status) != 0)
        return false;
    if (signature != pe::signature || machine != pe::arm || subsystem != pe::panelSubsystem)
        return false;
    for (unsigned index = 0; index < sections; ++index) {
        pe::Section section;
        const std::uint64_t place = std::uint64_t{header} + pe::optionalHeader + optionalSize + index * sizeof section;
        if (!readAt(file, place, section) ||
            std::uint64_t{section.place} + section.fileSize > static_cast<std::uint64_t>(status.st_size))
            return false;
    }
    return true;
}

// All data for the new process. It is prepared before the fork: the calling process may have many threads, so after the
// fork only system calls are safe.
struct Launch {
    std::string interpreter; // host program that runs the file; empty: the file is run itself
    int file; // descriptor of the file, which may be renamed before the program begins
    std::string output;
    std::vector<std::string> texts;
    std::vector<char*> arguments;
    std::vector<char*> environment;
    std::atomic<std::uint32_t>* released;
    ProcessRecord* record;
    pid_t starter;
    bool closesFile; // the program does not need the descriptor once it runs
    bool watch; // keep this process as the parent of a program that does not take part in the panel's clock
    const std::string& root; // the panel's directory
    std::uint64_t kernelDevice;
    std::uint64_t kernelInode;
    pid_t owner; // host process with whose end the program ends; 0: no owner
};

// Waits until the starter lets the process begin, or has died.
void waitForRelease(const Launch& launch) {
    // The time-out notices a dead starter, which can no longer wake this process.
    timespec moment{0, 100000000};
    while (launch.released->load(std::memory_order_acquire) == 0 && getppid() == launch.starter)
        syscall(SYS_futex, launch.released, FUTEX_WAIT, 0, &moment, nullptr, 0);
}

void execute(const Launch& launch) {
    const char* const program = launch.interpreter.empty() ? programPath : launch.interpreter.c_str();
    execve(program, launch.arguments.data(), launch.environment.data());
    _exit(127);
}

// Runs in the parent of a program that does not take part in the panel's clock, and does for it what it cannot do
// itself. It records the exit code when the program ends. It kills the program's whole process group, including itself,
// when the panel or the owner is gone.
[[noreturn]] void watchOver(pid_t program, const Launch& launch) {
    const KernelAlarm alarm(launch.root.c_str(), launch.kernelDevice, launch.kernelInode);
    pollfd entries[] = {{host::openProcess(program), POLLIN, 0},
                        {launch.owner ? host::openProcess(launch.owner) : -1, POLLIN, 0},
                        {alarm.descriptor(), POLLIN, 0}};
    while (!entries[0].revents) {
        if (alarm.look() != KernelAlarm::State::fine || entries[1].revents || (launch.owner && entries[1].fd < 0))
            kill(0, SIGKILL);
        poll(entries, std::size(entries), alarm.patience());
    }
    int status = 0;
    waitpid(program, &status, 0);
    const auto code = static_cast<std::uint32_t>(WIFEXITED(status) ? WEXITSTATUS(status) : processes::killedExitCode);
    launch.record->exitCode.store(code, std::memory_order_relaxed);
    launch.record->exitKnown.store(1, std::memory_order_release);
    _exit(0);
}

[[noreturn]] void becomeProgram(const Launch& launch) {
    setsid(); // a group of its own, so that it can be killed with its children
    const int output = open(launch.output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    const int input = open("/dev/null", O_RDONLY);
    dup2(input, 0);
    dup2(output, 1);
    dup2(output, 2);
    dup2(launch.file, programDescriptor);
    fcntl(programDescriptor, F_SETFD, launch.closesFile ? FD_CLOEXEC : 0);
    syscall(SYS_close_range, programDescriptor + 1, ~0U, 0);
    waitForRelease(launch);
    if (launch.watch) {
        const pid_t program = fork();
        if (program == 0)
            prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (program > 0)
            watchOver(program, launch);
    }
    execute(launch);
    _exit(127);
}

// The loader runs a panel executable; the host's emulator runs the loader.
constexpr const char* emulator = "/usr/bin/qemu-arm-static";

const char* loaderPath() {
    const char* named = std::getenv("PANEL_LOADER");
    return named ? named : PANEL_LOADER;
}

// Splits a command line at blanks, with quotes around words that contain blanks.
void addWords(std::vector<std::string>& words, const std::string& text) {
    std::size_t at = 0;
    while ((at = text.find_first_not_of(' ', at)) != std::string::npos) {
        const bool quoted = text[at] == '"';
        at += quoted;
        const std::size_t end = std::min(text.find(quoted ? '"' : ' ', at), text.size());
        words.push_back(text.substr(at, end - at));
        at = std::min(end + 1, text.size());
    }
}

Launch prepare(Image& image, const std::string& root, ProgramKind kind, int file, Slot slot) {
    ProcessRecord& record = processes::at(image, slot);
    const bool interpreted = kind == ProgramKind::panelExecutable;
    Launch launch{interpreted ? emulator : "",
                  file,
                  root + "/run/output/" + processes::name(image, record),
                  {},
                  {},
                  {},
                  &record.released,
                  &record,
                  getpid(),
                  kind == ProgramKind::native,
                  !record.aware,
                  root,
                  image.fileDevice,
                  image.fileInode,
                  record.owner ? processes::at(image, record.owner).hostPid : 0};
    if (interpreted) {
        launch.texts = {emulator, loaderPath(), programPath};
    } else {
        launch.texts.emplace_back(record.path);
        addWords(launch.texts, record.commandLine);
    }
    const std::size_t arguments = launch.texts.size();
    for (char** variable = environ; *variable; ++variable)
        if (std::strncmp(*variable, "PANEL=", 6) != 0 && std::strncmp(*variable, "PANEL_PROCESS=", 14) != 0)
            launch.texts.emplace_back(*variable);
    launch.texts.push_back("PANEL=" + root);
    launch.texts.push_back("PANEL_PROCESS=" + std::to_string(slot) + ':' + std::to_string(record.serial));
    for (std::size_t index = 0; index < launch.texts.size(); ++index)
        (index < arguments ? launch.arguments : launch.environment).push_back(launch.texts[index].data());
    launch.arguments.push_back(nullptr);
    launch.environment.push_back(nullptr);
    return launch;
}

} // namespace

ProgramKind kindOf(const std::string& hostPath) {
    const int file = open(hostPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return ProgramKind::none;
    char start[4] = {};
    const bool some = read(file, start, sizeof start) >= 2;
    ProgramKind kind = ProgramKind::none;
    if (some && std::memcmp(start, ELFMAG, SELFMAG) == 0)
        kind = hasMarker(file) ? ProgramKind::native : ProgramKind::foreign;
    else if (some && start[0] == 'M' && start[1] == 'Z' && isPanelExecutable(file))
        kind = ProgramKind::panelExecutable;
    else if (some && start[0] == '#' && start[1] == '!')
        kind = ProgramKind::foreign;
    close(file);
    return kind;
}

namespace {

bool canRun(const char* program) {
    struct stat status {};
    return stat(program, &status) == 0 && S_ISREG(status.st_mode) && access(program, X_OK) == 0;
}

} // namespace

std::string whyNot(ProgramKind kind) {
    if (kind == ProgramKind::none)
        return "it is not a program (a program of the simulation, a panel executable, or a script that begins with #!)";
    if (kind == ProgramKind::panelExecutable && !canRun(loaderPath()))
        return std::string("it is a panel executable, and its loader is missing or not executable: ") + loaderPath() +
               " (cmake --preset loader && ninja -C build/loader builds it)";
    if (kind == ProgramKind::panelExecutable && !canRun(emulator))
        return std::string("it is a panel executable, and its emulator is missing or not executable: ") + emulator +
               " (script/setup installs it)";
    return {};
}

Started startProgram(Image& image, const std::string& root, const std::string& path, const std::string& commandLine,
                     Slot starter) {
    if (!image.on)
        return {0, ERROR_NOT_READY};
    const std::string full = path.starts_with('\\') ? path : '\\' + path;
    const Place place = locate(image, root, full);
    if (!place.isFile())
        return {0, place.error ? place.error : ERROR_ACCESS_DENIED};
    if (full.size() >= sizeof ProcessRecord::path || commandLine.size() >= sizeof ProcessRecord::commandLine)
        return {0, ERROR_FILENAME_EXCED_RANGE};
    const ProgramKind kind = kindOf(place.host);
    if (!whyNot(kind).empty())
        return {0, ERROR_BAD_EXE_FORMAT};
    if (!(place.status.st_mode & S_IXUSR)) // a panel has no attribute for executable files
        chmod(place.host.c_str(), place.status.st_mode | S_IXUSR | S_IXGRP | S_IXOTH);
    const Slot slot = processes::make(
        image, {full, commandLine, place.status.st_dev, place.status.st_ino, kind != ProgramKind::foreign}, starter);
    if (!slot)
        return {0, ERROR_NO_PROC_SLOTS};
    const int file = open(place.host.c_str(), O_RDONLY | O_CLOEXEC);
    const Launch launch = prepare(image, root, kind, file, slot);
    const pid_t pid = file < 0 ? -1 : fork();
    if (pid == 0)
        becomeProgram(launch);
    close(file);
    ProcessRecord& record = processes::at(image, slot);
    if (pid < 0) {
        processes::end(image, slot, 0);
        return {0, ERROR_NOT_ENOUGH_MEMORY};
    }
    // The pid comes last: a record without it counts as unfinished (processes::noticeDead).
    record.hostStart = host::startTime(pid);
    record.hostPid = pid;
    Watcher::announce(root);
    return {slot, 0};
}

} // namespace panel
