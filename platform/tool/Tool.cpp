#include "platform/tool/Tool.h"

#include <cstdio>
#include <filesystem>
#include <stdexcept>

namespace tool {

std::string version() {
    char text[48];
    std::snprintf(text, sizeof text, "panel 1.0, kernel file %08x", panel::imageVersion);
    return text;
}

Tool::Tool(CLI::App& app) {
    app.add_option("-C", directory, "The panel's directory; default: the current one")
        ->type_name("DIR")
        ->envname("PANEL");
}

panel::Panel Tool::panel() const {
    if (directory.empty() && !std::filesystem::exists("devices/panel.json"))
        throw std::runtime_error("this directory is not a panel: name a panel with -C DIR or PANEL, or create a panel "
                                 "with panel create DIR");
    panel::Panel panel(directory.empty() ? std::filesystem::current_path() : std::filesystem::path(directory));
    panel.checkOwner();
    return panel;
}

std::string oneLine(const std::string& text) {
    std::string line;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, character == '\n' ? "\\n" : "\\x%02x", code);
        line += code < ' ' || code == 0x7F ? escaped : std::string(1, character);
    }
    return line;
}

void complain(const std::string& text) {
    std::fflush(stdout);
    std::fprintf(stderr, "panel: %s\n", oneLine(text).c_str());
}

void printJson(const panel::Json& answer) {
    std::puts(panel::jsonText(answer).c_str());
}

void printJsonLine(const panel::Json& answer) {
    std::puts(panel::jsonText(answer, -1).c_str());
}

} // namespace tool
