#include "platform/tool/Interruption.h"

#include "platform/panel/Runtime.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tool {

namespace {

int signals[2]; // a pipe from the signal handler, which may call little more than write, to the thread

std::mutex orderly; // protects the next three
int orderlyEnds = 0; // number of OrderlyEnd objects
int received = 0; // the signal that came while there was one
pid_t child = 0; // the process that OrderlyEnd::wait waits for

void note(int signal) {
    const auto number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const auto written = write(signals[1], &number, 1);
}

// Returns whether an OrderlyEnd will end the command.
bool isLeftToOwner(int signal) {
    const std::lock_guard lock(orderly);
    if (orderlyEnds == 0 || received)
        return false;
    received = signal;
    if (child)
        kill(child, SIGTERM);
    return true;
}

// Needs the lock.
void throwIfReceived() {
    if (received)
        throw std::runtime_error("interrupted");
}

[[noreturn]] void end(int signal) {
    panel::Runtime::endProcess(0);
    if (isatty(STDERR_FILENO)) // the other thread may hold the lock of `stderr`
        [[maybe_unused]]
        const auto erased = write(STDERR_FILENO, "\033[K", 3); // a Progress
    _exit(128 + signal);
}

// The thread may take locks and free memory, which a signal handler must not do.
void waitForSignals() {
    for (unsigned char number = 0;;) {
        const ssize_t length = read(signals[0], &number, 1);
        if (length == 1 && !isLeftToOwner(number))
            end(number);
        if (length != 1 && errno != EINTR) // the handler may run in this thread
            return;
    }
}

} // namespace

void endDriverWhenInterrupted() {
    if (pipe2(signals, O_CLOEXEC) != 0)
        return;
    struct sigaction action {};
    action.sa_handler = note;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        sigaction(signal, &action, nullptr);
    std::thread(waitForSignals).detach();
}

OrderlyEnd::OrderlyEnd() {
    const std::lock_guard lock(orderly);
    ++orderlyEnds;
}

OrderlyEnd::~OrderlyEnd() {
    const std::lock_guard lock(orderly);
    if (--orderlyEnds == 0 && received)
        end(received);
}

int OrderlyEnd::wait(pid_t process) {
    {
        const std::lock_guard lock(orderly);
        child = process;
        if (received)
            kill(process, SIGTERM);
    }
    siginfo_t ignored;
    while (waitid(P_PID, static_cast<id_t>(process), &ignored, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const std::lock_guard lock(orderly);
    child = 0; // before the host may use the id again
    int status = -1;
    waitpid(process, &status, 0);
    throwIfReceived();
    return status;
}

void OrderlyEnd::check() {
    const std::lock_guard lock(orderly);
    throwIfReceived();
}

} // namespace tool
