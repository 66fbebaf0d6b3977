#include "platform/tool/Table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace tool {

namespace {

bool coloured() {
    static const bool answer = isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR");
    return answer;
}

std::size_t width(const std::string& text) { // characters of the UTF-8 text
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

std::string aligned(const std::vector<std::string>& row, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t column = 0; column < row.size(); ++column) {
        line += row[column];
        if (column + 1 < row.size())
            line.append(widths[column] - width(row[column]) + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

} // namespace

std::string toned(const std::string& text, Tone tone) {
    if (tone == Tone::plain || !coloured())
        return text;
    const char* code = tone == Tone::strong ? "1" : tone == Tone::faint ? "2" : tone == Tone::good ? "32" : "31";
    return std::string("\033[") + code + 'm' + text + "\033[0m";
}

Table::Table(std::vector<std::string> titles, std::string before)
    : heading(std::move(titles)), indent(std::move(before)) {}

void Table::add(std::vector<std::string> row) {
    rows.push_back(std::move(row));
}

void Table::print() const {
    if (rows.empty())
        return;
    std::vector<std::size_t> widths;
    const auto measure = [&](const std::vector<std::string>& row) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], width(row[column]));
    };
    measure(heading);
    std::for_each(rows.begin(), rows.end(), measure);
    if (!heading.empty())
        std::printf("%s%s\n", indent.c_str(), toned(aligned(heading, widths), Tone::strong).c_str());
    for (const auto& row : rows)
        std::printf("%s%s\n", indent.c_str(), aligned(row, widths).c_str());
}

} // namespace tool
