#include "platform/view/Commands.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace view {

namespace {

constexpr int notRun = 127;

// Runs in the child after the fork, so it uses system calls only. The child gets no other descriptors, an empty signal
// mask and its own process group: Ctrl-C ends the server, not its commands. SIGTERM ends the child if this thread ends.
[[noreturn]] void become(char* const* arguments, int output) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(open("/dev/null", O_RDONLY), 0);
    dup2(output, 1);
    dup2(output, 2);
    close_range(3, ~0U, 0);
    execv(arguments[0], arguments);
    _exit(notRun);
}

} // namespace

Commands::Commands(const std::filesystem::path& program, const std::filesystem::path& panel)
    : executable(program), directory(panel) {}

Outcome Commands::run(const std::vector<std::string>& words) const {
    std::vector<std::string> texts{executable, "-C", directory};
    texts.insert(texts.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    const int output = memfd_create(
        "output", MFD_CLOEXEC); // a program that the command starts may keep it open: a pipe would then have no end
    if (output < 0)
        throw std::runtime_error("this machine has no room for the output of a command");
    const pid_t pid = fork();
    if (pid == 0)
        become(arguments.data(), output);
    int status = notRun << 8;
    while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    std::string text(static_cast<std::size_t>(lseek(output, 0, SEEK_END)), '\0');
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(0, pread(output, text.data(), text.size(), 0))));
    close(output);
    return {code, code == notRun ? "cannot run " + executable : text};
}

} // namespace view
