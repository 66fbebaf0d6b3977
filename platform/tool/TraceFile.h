// The call trace of a panel at one moment: the lines of run/trace, and the calls that have not returned. The lines stay
// in the file, so a trace of any size needs little memory.
#pragma once

#include "platform/panel/Panel.h"

#include <cstdint>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace tool {

class TraceFile {
public:
    // Throws std::runtime_error if nothing is traced yet.
    explicit TraceFile(const panel::Panel& panel);

    // Passes each line with its place, in the order of the file. The calls that have not returned come last. May be
    // called again.
    void read(const std::function<void(const std::string& line, std::uint64_t place)>& receive);
    // Returns the line at a place that `read` has passed.
    std::string lineAt(std::uint64_t place);

    // Panel time in ms when the object was made; 0 if the panel is off.
    std::uint64_t now() const {
        return time;
    }
    // An upper limit of the places.
    std::uint64_t end() const {
        return size + unreturned.size();
    }
    // The last line of the file, once `read` has returned; empty: there is none.
    const std::string& lastLine() const {
        return last;
    }

private:
    std::uint64_t time = 0;
    std::vector<std::string> unreturned; // calls that have not returned; their places begin behind the file
    std::ifstream sequential;
    std::ifstream random;
    std::uint64_t size = 0; // of the file, in bytes; lines that are added later do not count
    std::string last;
};

} // namespace tool
