// The program that shows a panel in a browser. `panel view` starts it.
#include "platform/view/Server.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <unistd.h>

namespace {

void openInBrowser(const std::string& address) {
    if (!isatty(STDOUT_FILENO) || (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")))
        return;
    std::string program = "xdg-open";
    std::string argument = address;
    char* const words[] = {program.data(), argument.data(), nullptr};
    pid_t pid = 0;
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK); // Ctrl-C is not for it
    posix_spawnp(&pid, words[0], nullptr, &attributes, words, environ); // without one the address must do
    posix_spawnattr_destroy(&attributes);
}

} // namespace

// panel-view DIRECTORY PORT open|stay
int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("panel-view: \"panel view\" starts it (panel view --help)\n", stderr);
        return 2;
    }
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr); // in every thread: they are waited for here
    try {
        const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
        const panel::Panel panel(argv[1]);
        view::Commands commands(self.parent_path() / "panel", panel.directory());
        const view::Server server(commands, panel, std::atoi(argv[2]));
        std::printf("The panel is at %s\nCtrl-C ends this, and leaves the panel as it is.\n", server.address().c_str());
        std::fflush(stdout);
        if (std::string_view(argv[3]) == "open")
            openInBrowser(server.address());
        int signal = 0;
        sigwait(&ends, &signal);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "panel: %s\n", error.what());
        return 1;
    }
    return 0;
}
