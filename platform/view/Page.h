// The files of the page, which are part of the program.
#pragma once

#include <string_view>

namespace view {

struct PageFile {
    std::string_view name; // below the page's address; empty: the page itself
    std::string_view type;
    std::string_view content;
};

const PageFile* pageFile(std::string_view name); // null: there is none

} // namespace view
