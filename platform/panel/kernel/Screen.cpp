#include "platform/panel/kernel/Screen.h"

#include <algorithm>

namespace panel::screen {

namespace {

constexpr std::uint32_t topmost = 0x8; // WS_EX_TOPMOST

bool contains(const WindowRecord& window, std::int32_t x, std::int32_t y) {
    return x >= window.x && x - window.x < window.width && y >= window.y && y - window.y < window.height;
}

} // namespace

bool show(Image& image, WindowRecord& window, bool visible) {
    const bool before = window.visible != 0;
    window.visible = visible;
    if (visible)
        window.order = ++image.shows;
    return before;
}

std::vector<const WindowRecord*> visibleWindows(const Image& image) {
    std::vector<const WindowRecord*> result;
    for (const WindowRecord& window : image.windows)
        if (window.used && window.visible)
            result.push_back(&window);
    std::sort(result.begin(), result.end(), [](const WindowRecord* first, const WindowRecord* second) {
        const bool firstTopmost = first->extendedStyle & topmost;
        const bool secondTopmost = second->extendedStyle & topmost;
        return firstTopmost != secondTopmost ? firstTopmost : first->order > second->order;
    });
    return result;
}

const WindowRecord* windowAt(const Image& image, std::int32_t x, std::int32_t y) {
    for (const WindowRecord* window : visibleWindows(image))
        if (contains(*window, x, y))
            return window;
    return nullptr;
}

const WindowRecord* cover(const Image& image) {
    const auto right = static_cast<std::int32_t>(image.screenWidth) - 1;
    const auto bottom = static_cast<std::int32_t>(image.screenHeight) - 1;
    // A window that contains two opposite corners covers the screen.
    for (const WindowRecord* window : visibleWindows(image))
        if (contains(*window, 0, 0) && contains(*window, right, bottom))
            return window;
    return nullptr;
}

} // namespace panel::screen
