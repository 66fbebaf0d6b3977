#include "platform/tool/FileTail.h"

#include <algorithm>
#include <fstream>

namespace tool {

std::vector<std::string> FileTail::newLines(const std::filesystem::path& file, std::uintmax_t most) {
    constexpr std::size_t known = 64;
    std::error_code missing;
    std::ifstream stream;
    if (std::filesystem::is_regular_file(file, missing))
        stream.open(file, std::ios::binary);
    if (!stream.is_open()) // a named pipe is not opened either, since reading it could block
        return {};
    std::string found(beginning.size(), '\0');
    stream.read(found.data(), static_cast<std::streamsize>(found.size()));
    const bool same = static_cast<std::size_t>(stream.gcount()) == found.size() && found == beginning;
    stream.clear();
    const auto size = static_cast<std::uintmax_t>(stream.seekg(0, std::ios::end).tellg());
    if (!same || offset > size) {
        offset = 0;
        beginning.clear();
    }
    const bool skips = size - offset > most;
    std::uintmax_t at = skips ? size - most : offset;
    std::string text(size - at, '\0');
    stream.seekg(static_cast<std::streamoff>(at));
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));

    std::vector<std::string> lines;
    std::size_t start = skips ? text.find('\n') + 1 : 0; // the rest of a line is no line
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    // The first line identifies the content, so that a rewritten file is noticed even if it is longer than before.
    if (offset == 0 && at + start > 0) {
        beginning.resize(std::min<std::uintmax_t>(at + start, known));
        stream.clear();
        stream.seekg(0).read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
    }
    offset = at + start;
    return lines;
}

} // namespace tool
