#include "platform/tool/Commands.h"

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace tool {

namespace {

struct ViewOptions {
    std::uint32_t port = 0;
    bool stay = false;
};

// Replaces this process by `panel-view`, which lies beside this program.
void view(const panel::Panel& panel, const ViewOptions& options) {
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe").parent_path() / "panel-view";
    const std::string port = std::to_string(options.port);
    execl(program.c_str(), "panel-view", panel.directory().c_str(), port.c_str(), options.stay ? "stay" : "open",
          nullptr);
    throw std::runtime_error("cannot run " + program.string() + ", which shows the panel (ninja panel-view builds it)");
}

} // namespace

void addViewCommand(CLI::App& app, Tool& tool) {
    auto* command = app.add_subcommand("view", "Show the panel in a browser, until Ctrl-C");
    auto options = std::make_shared<ViewOptions>();
    command->add_option("--port", options->port, "Port on this machine; default: a free port")
        ->type_name("N")
        ->check(CLI::Range(0, 65535));
    command->add_flag("--no-open", options->stay, "Only print the address; do not open a browser");
    command->callback([options, &tool] { view(tool.panel(), *options); });
}

} // namespace tool
