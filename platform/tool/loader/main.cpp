// The entry point of the loader, which runs a panel executable on a simulated panel: loader FILE. The simulated panel
// starts it under the host's ARM emulator (platform/panel/Program.cpp).
#include "platform/panel/Runtime.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/tool/loader/Callbacks.h"
#include "platform/tool/loader/Image.h"

#include <windows.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <ucontext.h>
#include <unistd.h>

namespace {

// On a panel the current thread's id is a word of the kernel's data page. That page cannot be mapped here, so a signal
// handler emulates the faulting read. The executable reads it in one place only, by loading r0.
constexpr std::uintptr_t threadIdAddress = 0xFFFFC808;
constexpr unsigned instruction = 4; // size in bytes

void serveRead(int signal, siginfo_t* information, void* context) {
    if (reinterpret_cast<std::uintptr_t>(information->si_addr) != threadIdAddress) {
        std::signal(signal, SIG_DFL); // a real fault of the program: it repeats after the return and ends the process
        return;
    }
    mcontext_t& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
    machine.arm_r0 = GetCurrentThreadId();
    machine.arm_pc += instruction;
}

using Entry = void (*)(HINSTANCE, HINSTANCE, LPWSTR, int);

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: loader FILE (the simulated panel starts panel executables with it)\n", stderr);
        return 127;
    }
    struct sigaction action {};
    action.sa_sigaction = serveRead;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, nullptr);
    panel::Runtime& runtime = panel::Runtime::instance();
    const char* commandLine = runtime.processRecord().commandLine;
    const std::size_t capacity = std::strlen(commandLine) + 1;
    const auto text = std::make_unique<wchar_t[]>(capacity);
    panel::toWide(commandLine, text.get(), capacity);
    try {
        const auto entry = loader::onPlatformStack(reinterpret_cast<Entry>(loader::load(argv[1]).entry));
        entry(reinterpret_cast<HINSTANCE>(panel::handleOf(panel::moduleHandle)), nullptr, text.get(), 5);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s cannot be run: %s\n", runtime.processRecord().path, failure.what());
    }
    return 127; // not reached: a program ends by TerminateProcess
}
