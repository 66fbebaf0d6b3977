#include "platform/tool/Tool.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace tool {

Tool::Tool(CLI::App& app) {
    app.add_option("-C", directory, "The panel's directory; default: the current one")
        ->type_name("DIR")
        ->envname("PANEL");
}

panel::Panel Tool::panel() const {
    if (!directory.empty())
        return panel::Panel(directory);
    if (!std::filesystem::exists("devices/panel.json"))
        throw std::runtime_error("no panel here: name one with -C DIR or in PANEL, or make one with panel create DIR");
    return panel::Panel(std::filesystem::current_path());
}

void complain(const std::string& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "panel: %s\n", text.c_str());
}

} // namespace tool
