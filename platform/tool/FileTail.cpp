#include "platform/tool/FileTail.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace tool {

std::vector<std::string> FileTail::newLines(const std::filesystem::path& file) {
    constexpr std::size_t known = 64;
    std::error_code missing;
    std::ifstream stream;
    if (std::filesystem::is_regular_file(file, missing))
        stream.open(file, std::ios::binary);
    if (!stream.is_open()) // a named pipe is not opened either, since reading it could block
        return {};
    std::string found(beginning.size(), '\0');
    stream.read(found.data(), static_cast<std::streamsize>(found.size()));
    if (static_cast<std::size_t>(stream.gcount()) != found.size() || found != beginning ||
        offset > std::filesystem::file_size(file)) {
        offset = 0;
        beginning.clear();
    }
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(offset));
    std::ostringstream content;
    content << stream.rdbuf();
    const std::string text = content.str();

    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(text.substr(start, end - start));
    // The first line identifies the content, so that a rewritten file is noticed even if it is longer than before.
    if (offset == 0)
        beginning = text.substr(0, std::min(start, known));
    offset += start;
    return lines;
}

} // namespace tool
