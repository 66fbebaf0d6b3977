// The entry point of `panel-view`, which shows a panel in a browser. `panel view` starts it.
#include "platform/panel/Watcher.h"
#include "platform/view/Server.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

void openInBrowser(const std::string& address) {
    if (!isatty(STDOUT_FILENO) || (!std::getenv("DISPLAY") && !std::getenv("WAYLAND_DISPLAY")))
        return;
    if (fork() == 0) {
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        setpgid(0, 0); // Ctrl-C must not end the browser
        execlp("xdg-open", "xdg-open", address.c_str(), nullptr);
        _exit(127); // no browser: the user opens the printed address
    }
}

} // namespace

// panel-view DIRECTORY PORT open|stay
int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("panel-view: \"panel view\" starts it (panel view --help)\n", stderr);
        return 2;
    }
    panel::Watcher::endWhenTruncated();
    sigset_t ends;
    sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&ends, signal);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr); // blocked in every thread; main waits for these signals
    try {
        const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
        const panel::Panel panel(argv[1]);
        const view::Commands commands(self.parent_path() / "panel", panel.directory());
        const view::Server server(commands, panel, std::atoi(argv[2]));
        std::printf("The panel is at %s\nCtrl-C ends this, and leaves the panel as it is.\n", server.address().c_str());
        std::fflush(stdout);
        if (std::string_view(argv[3]) == "open")
            openInBrowser(server.address());
        int signal = 0;
        sigwait(&ends, &signal);
        _exit(0); // ends the threads at once; running commands are interrupted
    } catch (const std::exception& error) {
        std::fprintf(stderr, "panel: %s\n", error.what());
        return 1;
    }
}
