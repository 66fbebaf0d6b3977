// The files of the page. They are embedded in the program.
#pragma once

#include <string_view>
#include <vector>

namespace view {

struct PageFile {
    std::string_view name; // relative to the page's address; empty: the page itself
    std::string_view type; // MIME type
    std::string_view content;
};

std::vector<PageFile> pageFiles();

} // namespace view
