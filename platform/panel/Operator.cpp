#include "platform/panel/Operator.h"

#include "platform/panel/Call.h"
#include "platform/panel/Devices.h"
#include "platform/panel/kernel/Activity.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Messages.h"
#include "platform/panel/kernel/Processes.h"
#include "platform/panel/kernel/Screen.h"
#include "platform/panel/kernel/Wait.h"

#include <windows.h>

#include <stdexcept>

namespace panel {

namespace {

struct Event {
    UINT message;
    WPARAM buttons; // wParam of the message: the buttons that are down
    const char* name;
};

std::vector<Event> eventsOf(const Touch& touch) {
    constexpr Event left[] = {{WM_LBUTTONDOWN, 1, "press"}, {WM_LBUTTONUP, 0, "release"}};
    constexpr Event right[] = {{WM_RBUTTONDOWN, 2, "right-press"}, {WM_RBUTTONUP, 0, "right-release"}};
    const auto& [press, release] = touch.right ? right : left;
    switch (touch.kind) {
    case Touch::Kind::tap:
        return {press, release};
    case Touch::Kind::press:
        return {press};
    case Touch::Kind::release:
        return {release};
    case Touch::Kind::move:
        break;
    }
    return {{WM_MOUSEMOVE, 0, "move"}};
}

// Calls the hook procedure, if a hook is installed, and waits for its result.
Landing::Kind askHook(Call& call, const Event& event, std::int32_t x, std::int32_t y, std::uint32_t limit) {
    const Slot hooked = call.image.mouseHook.thread;
    if (!hooked)
        return Landing::Kind::landed;
    if (hooked == call.self)
        throw std::runtime_error("the thread that has the mouse hook cannot touch the panel");
    const messages::Message sent{0, event.message, static_cast<std::uint32_t>(x), y, 0, 0, 0};
    if (!messages::sendToThread(call.image, call.self, hooked, sent))
        throw std::runtime_error("there is no room for another message");
    ThreadRecord& me = scheduler::at(call.image, call.self);
    me.waitKind = WaitKind::reply;
    block(call.lock, call.image, call.self, clock::deadline(call.image, limit));
    if (me.replied == 0)
        return Landing::Kind::unanswered;
    return me.replied == 1 && me.reply != 0 ? Landing::Kind::swallowed : Landing::Kind::landed;
}

std::uint32_t windowAt(Image& image, std::int32_t x, std::int32_t y) {
    const WindowRecord* window = screen::windowAt(image, x, y);
    return window ? messages::numberOf(image, *window) : 0;
}

// Posts a mouse event with the coordinates relative to the window.
void post(Image& image, std::uint32_t number, const Event& event, std::int32_t x, std::int32_t y) {
    const WindowRecord* window = messages::window(image, number);
    if (!window)
        return;
    const auto place = static_cast<std::uint32_t>(y - window->y) << 16 | ((x - window->x) & 0xFFFF);
    messages::post(image, {number, event.message, event.buttons, static_cast<std::int32_t>(place), 0, 0, 0});
}

} // namespace

void setUserActive(bool active) {
    Call call;
    if (!activity::set(call.image, active))
        throw std::runtime_error("the panel has no power manager (panel device PowerManager add, and boot)");
}

Landing touch(const Touch& touch) {
    Call call;
    Image& image = call.image;
    const std::int32_t x = touch.x < 0 ? static_cast<std::int32_t>(image.screenWidth / 2) : touch.x;
    const std::int32_t y = touch.y < 0 ? static_cast<std::int32_t>(image.screenHeight / 2) : touch.y;
    if (x >= static_cast<std::int32_t>(image.screenWidth) || y >= static_cast<std::int32_t>(image.screenHeight))
        throw std::runtime_error("the screen has no place " + std::to_string(x) + ',' + std::to_string(y));
    const Devices devices(Runtime::instance().directory());
    std::uint32_t target = 0;
    Landing landing;
    bool first = true;
    for (const Event& event : eventsOf(touch)) {
        const Landing::Kind kind = askHook(call, event, x, y, touch.limit);
        if (kind == Landing::Kind::unanswered)
            return {kind, {}, {}};
        if (first) {
            landing.kind = kind;
            // Looked up after the hook: its procedure may have changed the windows.
            target = windowAt(image, x, y);
            if (const WindowRecord* window = messages::window(image, target)) {
                const Slot owner = scheduler::at(image, window->thread).process;
                landing.window = window->className;
                landing.process = processes::name(image, processes::at(image, owner));
            }
        }
        first = false;
        const bool swallowed = kind == Landing::Kind::swallowed;
        if (!swallowed)
            post(image, target, event, x, y);
        devices.note(LandedTouch{clock::now(image), event.name, x, y, swallowed, landing.window, landing.process});
    }
    activity::set(image, true);
    return landing;
}

} // namespace panel
