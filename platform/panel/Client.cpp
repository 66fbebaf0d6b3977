#include "platform/panel/Client.h"

#include "platform/panel/Call.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Messages.h"
#include "platform/panel/kernel/Wait.h"

#include <stdexcept>

namespace panel {

namespace {

// Returns the number of a message that is given as a number or as a name. Registers a new name.
std::uint32_t messageNumber(Image& image, const std::string& name) {
    try {
        std::size_t used = 0;
        const auto number = std::stoull(name, &used, 0);
        if (used == name.size() && number <= 0xFFFF)
            return static_cast<std::uint32_t>(number);
    } catch (const std::logic_error&) { // not a number: `name` is the name of a message
    }
    const std::uint32_t registered = name.empty() ? 0 : messages::registerName(image, name, false);
    if (!registered)
        throw std::runtime_error("not a message name: \"" + name + "\"");
    return registered;
}

} // namespace

std::uint32_t findWindow(const std::string& className) {
    Call call;
    return messages::findWindow(call.image, className);
}

std::vector<std::string> registeredMessages() {
    const Call call;
    std::vector<std::string> names;
    for (std::uint32_t index = 0; index < maxRegisteredMessages; ++index)
        if (call.image.programsMessages[index])
            names.emplace_back(call.image.registeredMessages[index]);
    return names;
}

std::optional<std::int64_t> sendMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam,
                                        std::int64_t lParam, std::uint32_t limit) {
    Call call;
    const messages::Message sent{window, messageNumber(call.image, message), wParam, lParam, 0, 0, 0};
    if (!messages::send(call.image, call.self, sent))
        throw std::runtime_error("there is no such window, or no room for another message");
    ThreadRecord& me = scheduler::at(call.image, call.self);
    me.waitKind = WaitKind::reply;
    block(call.lock, call.image, call.self, clock::deadline(call.image, limit));
    if (me.replied == 1)
        return me.reply;
    return std::nullopt; // time-out, or the window was destroyed
}

void postMessage(std::uint32_t window, const std::string& message, std::uint64_t wParam, std::int64_t lParam) {
    Call call;
    if (!messages::post(call.image, {window, messageNumber(call.image, message), wParam, lParam, 0, 0, 0}))
        throw std::runtime_error("there is no such window, or no room for another message");
}

} // namespace panel
