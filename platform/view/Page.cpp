#include "platform/view/Page.h"

#include <algorithm>
#include <iterator>

// VIEW_PAGE is the folder with the files.
#define EMBED(name, file)                                                                                              \
    asm(".section .rodata\n" #name ":\n.incbin \"" VIEW_PAGE "/" file "\"\n" #name "End:\n.previous");                 \
    extern "C" const char name[];                                                                                      \
    extern "C" const char name##End[]

EMBED(viewIndex, "index.html");
EMBED(viewStyle, "style.css");
EMBED(viewScript, "page.js");
EMBED(viewTimeline, "timeline.js");

namespace view {

const PageFile* pageFile(std::string_view name) {
    static const PageFile files[] = {
        {"", "text/html; charset=utf-8", {viewIndex, viewIndexEnd}},
        {"style.css", "text/css; charset=utf-8", {viewStyle, viewStyleEnd}},
        {"page.js", "text/javascript; charset=utf-8", {viewScript, viewScriptEnd}},
        {"timeline.js", "text/javascript; charset=utf-8", {viewTimeline, viewTimelineEnd}},
    };
    const auto* found =
        std::find_if(std::begin(files), std::end(files), [&](const PageFile& file) { return file.name == name; });
    return found == std::end(files) ? nullptr : found;
}

} // namespace view
