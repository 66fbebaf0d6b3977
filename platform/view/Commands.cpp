#include "platform/view/Commands.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

namespace view {

namespace {

constexpr std::size_t mostText = 16 << 20; // bytes that are kept of what a command prints

// Standard output or standard error of a child: memory with a descriptor.
class Capture {
public:
    Capture() : file(memfd_create("output", MFD_CLOEXEC)) {}
    ~Capture() {
        close(file);
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    std::string text() const {
        const off_t size = lseek(file, 0, SEEK_END);
        std::string content(size < 0 ? 0 : std::min(static_cast<std::size_t>(size), mostText), '\0');
        const ssize_t got = pread(file, content.data(), content.size(), 0);
        content.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
        return content;
    }

    const int file;
};

// Neither this process's descriptors nor its signal mask nor its process group: Ctrl-C here ends no program there.
int spawn(pid_t& pid, std::vector<char*>& arguments, const Capture& output, const Capture& errors) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    sigset_t none;
    sigset_t ignored;
    sigemptyset(&none);
    sigemptyset(&ignored);
    sigaddset(&ignored, SIGPIPE);
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", 0, 0);
    posix_spawn_file_actions_adddup2(&actions, output.file, 1);
    posix_spawn_file_actions_adddup2(&actions, errors.file, 2);
    posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &ignored);
    const int error = posix_spawn(&pid, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

} // namespace

Commands::Commands(std::filesystem::path program, std::filesystem::path panel)
    : executable(std::move(program)), directory(std::move(panel)) {}

Outcome Commands::run(const std::vector<std::string>& words) {
    std::vector<std::string> texts{executable, "-C", directory};
    texts.insert(texts.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    const Capture output;
    const Capture errors;
    pid_t pid = 0;
    {
        const std::lock_guard lock(mutex);
        const int error = stopped ? ECANCELED : spawn(pid, arguments, output, errors);
        if (error)
            return {127, {}, "cannot run " + executable + ": " + std::strerror(error)};
        running.insert(pid);
    }
    siginfo_t ended{};
    while (waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const std::lock_guard lock(
        mutex); // before the process is reaped: `stop` must not signal another one of this number
    running.erase(pid);
    int status = 0;
    waitpid(pid, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), output.text(), errors.text()};
}

void Commands::stop() {
    const std::lock_guard lock(mutex);
    stopped = true;
    for (const pid_t pid : running)
        kill(pid, SIGTERM);
}

} // namespace view
