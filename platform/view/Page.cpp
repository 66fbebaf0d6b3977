#include "platform/view/Page.h"

// VIEW_PAGE is the folder with the files.
#define EMBED(name, file)                                                                                              \
    asm(".section .rodata\n" #name ":\n.incbin \"" VIEW_PAGE "/" file "\"\n" #name "End:\n.previous")

EMBED(viewIndex, "index.html");
EMBED(viewStyle, "style.css");
EMBED(viewScript, "page.js");
EMBED(viewTimeline, "timeline.js");

extern "C" {
extern const char viewIndex[], viewIndexEnd[], viewStyle[], viewStyleEnd[];
extern const char viewScript[], viewScriptEnd[], viewTimeline[], viewTimelineEnd[];
}

namespace view {

std::vector<PageFile> pageFiles() {
    return {
        {"", "text/html; charset=utf-8", {viewIndex, viewIndexEnd}},
        {"style.css", "text/css; charset=utf-8", {viewStyle, viewStyleEnd}},
        {"page.js", "text/javascript; charset=utf-8", {viewScript, viewScriptEnd}},
        {"timeline.js", "text/javascript; charset=utf-8", {viewTimeline, viewTimelineEnd}},
    };
}

} // namespace view
