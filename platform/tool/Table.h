// Output for people: aligned columns and colours. Colours appear only if standard output is a terminal and NO_COLOR is
// not set.
#pragma once

#include <string>
#include <vector>

namespace tool {

enum class Tone { plain, strong, faint, good, bad };
// Returns the text in the colour of the tone.
std::string toned(const std::string& text, Tone tone);

// A table of text. A row may have fewer columns than the heading.
class Table {
public:
    explicit Table(std::vector<std::string> heading = {}, std::string indent = {});
    void add(std::vector<std::string> row);
    bool empty() const {
        return rows.empty();
    }
    void print() const; // prints to standard output; prints nothing if there are no rows

private:
    std::vector<std::string> heading;
    std::string indent;
    std::vector<std::vector<std::string>> rows;
};

} // namespace tool
