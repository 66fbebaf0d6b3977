#include "platform/panel/kernel/Messages.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Scheduler.h"

namespace panel::messages {

namespace {

constexpr std::uint32_t windowShift = 8; // a window number is the serial above the slot
constexpr std::uint32_t firstRegistered = 0xC000;

MessageRecord& at(Image& image, Slot message) {
    return image.messages[message - 1];
}

Slot makeMessage(Image& image) {
    if (const Slot free = image.freeMessage) {
        image.freeMessage = at(image, free).next;
        return free;
    }
    return image.messagesUsed < maxMessages ? ++image.messagesUsed : 0;
}

void freeMessage(Image& image, Slot message) {
    at(image, message).next = image.freeMessage;
    image.freeMessage = message;
}

void wakeReceiver(Image& image, Slot thread) {
    const ThreadRecord& record = scheduler::at(image, thread);
    if (record.state == ThreadState::waiting && record.waitKind == WaitKind::message)
        scheduler::release(image, thread, 0);
}

bool append(Image& image, Slot thread, Slot& first, Slot& last, const Message& message) {
    const Slot slot = makeMessage(image);
    if (!slot)
        return false;
    at(image, slot) = {0,
                       message.window,
                       message.sender,
                       message.message,
                       clock::ticks(image),
                       message.token,
                       message.wParam,
                       message.lParam};
    if (last)
        at(image, last).next = slot;
    else
        first = slot;
    last = slot;
    wakeReceiver(image, thread);
    return true;
}

// Removes the first matching message from a list.
template<class Wanted>
bool takeFirst(Image& image, Slot& first, Slot& last, Wanted wanted, Message& message) {
    Slot previous = 0;
    for (Slot slot = first; slot; previous = slot, slot = at(image, slot).next) {
        const MessageRecord& record = at(image, slot);
        if (!wanted(record))
            continue;
        message = {record.window, record.message, record.wParam, record.lParam,
                   record.time,   record.sender,  record.token};
        (previous ? at(image, previous).next : first) = record.next;
        if (last == slot)
            last = previous;
        freeMessage(image, slot);
        return true;
    }
    return false;
}

// Releases a sender without a result.
void answerNothing(Image& image, Slot sender, std::uint64_t token) {
    ThreadRecord& record = scheduler::at(image, sender);
    if (record.state != ThreadState::waiting || record.waitKind != WaitKind::reply || record.replyToken != token)
        return;
    record.replied = 2;
    scheduler::release(image, sender, 0);
}

// Removes the messages of a window from the thread's queues. 0 removes all messages.
void discard(Image& image, Slot thread, std::uint32_t window) {
    ThreadRecord& owner = scheduler::at(image, thread);
    const auto wanted = [window](const MessageRecord& record) { return window == 0 || record.window == window; };
    Message message;
    while (takeFirst(image, owner.postedFirst, owner.postedLast, wanted, message)) {
    }
    while (takeFirst(image, owner.sentFirst, owner.sentLast, wanted, message))
        answerNothing(image, message.sender, message.token);
}

} // namespace

std::uint32_t makeWindow(Image& image, Slot thread, std::string_view className, std::uint64_t procedure) {
    for (std::uint32_t index = 0; index < maxWindows; ++index) {
        WindowRecord& record = image.windows[index];
        if (record.used)
            continue;
        const std::uint32_t serial = record.serial % 0xFFFF + 1;
        record = {};
        record.used = 1;
        record.serial = serial;
        record.thread = thread;
        record.procedure = procedure;
        copyText(record.className, className);
        return numberOf(image, record);
    }
    return 0;
}

std::uint32_t numberOf(const Image& image, const WindowRecord& window) {
    return window.serial << windowShift | static_cast<std::uint32_t>(&window - image.windows + 1);
}

WindowRecord* window(Image& image, std::uint32_t number) {
    const std::uint32_t slot = number & ((1U << windowShift) - 1);
    if (slot == 0 || slot > maxWindows)
        return nullptr;
    WindowRecord& record = image.windows[slot - 1];
    return record.used && record.serial == number >> windowShift ? &record : nullptr;
}

std::uint32_t findWindow(Image& image, std::string_view className) {
    for (const WindowRecord& record : image.windows)
        if (record.used && equalCaseBlind(record.className, className))
            return numberOf(image, record);
    return 0;
}

void removeWindow(Image& image, std::uint32_t number) {
    WindowRecord* record = window(image, number);
    if (!record)
        return;
    record->used = 0;
    discard(image, record->thread, number);
}

void removeThread(Image& image, Slot thread) {
    for (WindowRecord& record : image.windows)
        if (record.used && record.thread == thread)
            record.used = 0;
    if (image.mouseHook.thread == thread)
        image.mouseHook.thread = 0;
    discard(image, thread, 0);
    for (Slot sender = 1; sender <= image.threadsUsed; ++sender) // senders whose message the thread was handling
        if (scheduler::at(image, sender).replyFrom == thread)
            answerNothing(image, sender, scheduler::at(image, sender).replyToken);
}

std::uint32_t registerName(Image& image, std::string_view name, bool byProgram) {
    for (std::uint32_t index = 0; index < maxRegisteredMessages; ++index) {
        auto& known = image.registeredMessages[index];
        if (name.size() >= sizeof known)
            return 0;
        if (known[0] == 0)
            copyText(known, name);
        if (!equalCaseBlind(known, name))
            continue;
        if (byProgram)
            image.programsMessages[index] = 1;
        return firstRegistered + index;
    }
    return 0;
}

bool postToThread(Image& image, Slot thread, const Message& message) {
    ThreadRecord& record = scheduler::at(image, thread);
    return append(image, thread, record.postedFirst, record.postedLast, message);
}

bool post(Image& image, const Message& message) {
    const WindowRecord* target = window(image, message.window);
    return target && postToThread(image, target->thread, message);
}

bool send(Image& image, Slot sender, const Message& message) {
    const WindowRecord* target = window(image, message.window);
    return target && sendToThread(image, sender, target->thread, message);
}

bool sendToThread(Image& image, Slot sender, Slot thread, const Message& message) {
    // The number of the wait is unique, so it also serves as the token.
    Message sent = message;
    sent.sender = sender;
    sent.token = ++image.waitOrder;
    ThreadRecord& receiver = scheduler::at(image, thread);
    if (!append(image, thread, receiver.sentFirst, receiver.sentLast, sent))
        return false;
    ThreadRecord& record = scheduler::at(image, sender);
    record.replyToken = sent.token;
    record.replyFrom = thread;
    record.replied = 0;
    return true;
}

void reply(Image& image, const Message& message, std::int64_t result) {
    ThreadRecord& record = scheduler::at(image, message.sender);
    if (record.state != ThreadState::waiting || record.waitKind != WaitKind::reply ||
        record.replyToken != message.token)
        return; // the sender has given up or ended
    record.reply = result;
    record.replied = 1;
    scheduler::release(image, message.sender, 0);
}

bool takeSent(Image& image, Slot thread, Message& message) {
    ThreadRecord& record = scheduler::at(image, thread);
    return takeFirst(
        image, record.sentFirst, record.sentLast, [](const MessageRecord&) { return true; }, message);
}

bool takePosted(Image& image, Slot thread, std::uint32_t window, std::uint32_t first, std::uint32_t last,
                Message& message) {
    ThreadRecord& record = scheduler::at(image, thread);
    const bool anyMessage = first == 0 && last == 0;
    const auto wanted = [&](const MessageRecord& candidate) {
        return (window == 0 || candidate.window == window) &&
               (anyMessage || (candidate.message >= first && candidate.message <= last));
    };
    return takeFirst(image, record.postedFirst, record.postedLast, wanted, message);
}

} // namespace panel::messages
