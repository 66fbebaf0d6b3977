// Text for people: aligned columns, and a little colour where standard output is a terminal (unless NO_COLOR is set).
#pragma once

#include <string>
#include <vector>

namespace tool {

enum class Tone { plain, strong, faint, good, bad };
std::string toned(const std::string& text, Tone tone);

class Table {
public:
    explicit Table(std::vector<std::string> heading = {}, std::string indent = {});
    void add(std::vector<std::string> row);
    bool empty() const {
        return rows.empty();
    }
    void print() const; // to standard output; nothing if there are no rows

private:
    std::vector<std::string> heading;
    std::string indent;
    std::vector<std::vector<std::string>> rows;
};

} // namespace tool
