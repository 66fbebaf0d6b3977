#include "fuzz/FuzzPanel.h"

#include "platform/panel/Driver.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>

namespace fs = std::filesystem;

namespace fuzz {

namespace {

class FuzzPanel {
public:
    FuzzPanel() {
        std::string name = (fs::temp_directory_path() / "fuzz-XXXXXX").string();
        require(mkdtemp(name.data()) != nullptr, "no directory for the panel");
        panel = std::make_unique<panel::Panel>(panel::Panel::create(name, {}));
        panel::BootOptions boot;
        boot.mode = panel::ClockMode::stepped;
        panel->boot(boot);
        driver = std::make_unique<panel::Driver>(*panel, "\\MMCMemory\\Tarvex\\TarvexHelper.exe");
    }

    ~FuzzPanel() {
        driver.reset();
        panel->off();
        fs::remove_all(panel->directory());
    }

    fs::path hostPath(std::string_view panelPath) const {
        return panel->hostPath(panelPath);
    }

private:
    std::unique_ptr<panel::Panel> panel;
    std::unique_ptr<panel::Driver> driver;
};

const FuzzPanel& current() {
    static const FuzzPanel panel;
    return panel;
}

} // namespace

void putFile(std::string_view panelPath, const std::uint8_t* data, std::size_t size) {
    const fs::path path = current().hostPath(panelPath);
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

std::string readFile(std::string_view panelPath) {
    std::ifstream file(current().hostPath(panelPath), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void require(bool condition, const char* text) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", text);
        std::abort();
    }
}

} // namespace fuzz
