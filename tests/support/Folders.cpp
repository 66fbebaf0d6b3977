#include "tests/support/Folders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t bootDate = 1709791509000; // 2024-03-07 06:05:09 UTC

fs::path madeFolder() {
    std::string name = (fs::temp_directory_path() / "panel-XXXXXX").string();
    if (!mkdtemp(name.data()))
        throw std::runtime_error("cannot make a directory " + name);
    return name;
}

} // namespace

FreshFolder::FreshFolder() : path(madeFolder()) {}

FreshFolder::~FreshFolder() {
    fs::remove_all(path);
}

panel::Panel newPanel(const fs::path& directory) {
    panel::PanelOptions options;
    options.date = bootDate;
    return panel::Panel::create(directory, options);
}

fs::path programFile(std::string_view name) {
    return fs::path(PANEL_PROGRAMS) / name;
}

std::string readText(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << "no file " << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void writeText(const fs::path& file, std::string_view content) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::string withoutStamps(const std::string& log) {
    std::string text;
    for (const std::string& line : linesOf(log))
        text += line.substr(line.find(';') + 1) + '\n';
    return text;
}
