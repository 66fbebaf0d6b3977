#include "platform/view/Commands.h"

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
constexpr std::size_t mostText = 16 << 20; // bytes of a command's output that are kept

// Standard output or standard error of a child, in a memory file.
class Capture {
public:
    Capture() : file(memfd_create("output", MFD_CLOEXEC)) {
        if (file < 0)
            throw std::runtime_error("this machine has no room for the output of a command");
    }
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

// Runs in the child after the fork, so it uses system calls only. The child gets no other descriptors, an empty signal
// mask and its own process group: Ctrl-C ends the server, not its commands. SIGTERM ends the child if this thread ends.
[[noreturn]] void become(char* const* arguments, const Capture& output, const Capture& errors) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    dup2(open("/dev/null", O_RDONLY), 0);
    dup2(output.file, 1);
    dup2(errors.file, 2);
    close_range(3, ~0U, 0);
    execv(arguments[0], arguments);
    _exit(127);
}

} // namespace

Commands::Commands(std::filesystem::path program, std::filesystem::path panel)
    : executable(std::move(program)), directory(std::move(panel)) {}

Outcome Commands::run(const std::vector<std::string>& words) const {
    std::vector<std::string> texts{executable, "-C", directory};
    texts.insert(texts.end(), words.begin(), words.end());
    std::vector<char*> arguments;
    for (std::string& text : texts)
        arguments.push_back(text.data());
    arguments.push_back(nullptr);

    const Capture output;
    const Capture errors;
    const pid_t pid = fork();
    if (pid == 0)
        become(arguments.data(), output, errors);
    int status = notRun << 8;
    while (pid > 0 && waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, output.text(), code == notRun ? "cannot run " + executable : errors.text()};
}

} // namespace view
