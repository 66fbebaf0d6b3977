#include "platform/tool/Interruption.h"

#include "platform/panel/Runtime.h"

#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace tool {

namespace {

int signals[2]; // a pipe from the signal handler, which may call little more than write, to the thread

void note(int signal) {
    const auto number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const auto written = write(signals[1], &number, 1);
}

void waitForSignal() {
    unsigned char number = 0;
    if (read(signals[0], &number, 1) != 1)
        return;
    // Takes the lock and frees memory, which a signal handler must not do.
    panel::Runtime::endProcess(0);
    _exit(128 + number);
}

} // namespace

void endDriverWhenInterrupted() {
    if (pipe2(signals, O_CLOEXEC) != 0)
        return;
    struct sigaction action {};
    action.sa_handler = note;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
        sigaction(signal, &action, nullptr);
    std::thread(waitForSignal).detach();
}

} // namespace tool
