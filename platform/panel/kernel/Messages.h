// The tables of windows and registered message names, and the message queues of threads.
//
// A thread has two queues: posted messages, which nobody waits for, and sent messages, whose senders wait for a reply.
// All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <string_view>

namespace panel::messages {

struct Message {
    std::uint32_t window = 0; // window number; 0: a message to the thread itself
    std::uint32_t message = 0;
    std::uint64_t wParam = 0;
    std::int64_t lParam = 0;
    std::uint32_t time = 0; // tick count
    Slot sender = 0; // the sending thread; 0: the message was posted
    std::uint64_t token = 0; // identifies a sent message, so that a late reply cannot answer a later message
};

// Creates a window and returns its number, which is also its handle. Returns 0 if the table is full.
std::uint32_t makeWindow(Image& image, Slot thread, std::string_view className, std::uint64_t procedure);
std::uint32_t numberOf(const Image& image, const WindowRecord& window);
// Returns the record of a window, or null if no window has this number, for example because it was destroyed.
WindowRecord* window(Image& image, std::uint32_t number);
// Returns the first window of a class, case-insensitively, or 0.
std::uint32_t findWindow(Image& image, std::string_view className);
// Removes a window and its messages. The senders of its sent messages are released without a result.
void removeWindow(Image& image, std::uint32_t number);
// Removes the windows, the messages and the mouse hook of a thread.
void removeThread(Image& image, Slot thread);

// Returns the number of a message name, 0xC000 or more. Registers a new name. Returns 0 if the table is full or the
// name too long. `byProgram` is false for a `panel` command.
std::uint32_t registerName(Image& image, std::string_view name, bool byProgram);

// Append a message to the posted messages. They return false if the window does not exist or the table of messages is
// full.
bool post(Image& image, const Message& message);
bool postToThread(Image& image, Slot thread, const Message& message);
// Appends a message to the sent messages. The sender then calls `block` with WaitKind::reply. Returns false as `post`
// does.
bool send(Image& image, Slot sender, const Message& message);
// Sends a mouse event to the thread that installed the hook. `window` is 0; wParam and lParam hold the coordinates.
bool sendToThread(Image& image, Slot sender, Slot thread, const Message& message);
// Releases the sender of a message with this result. Does nothing if the sender no longer waits.
void reply(Image& image, const Message& message, std::int64_t result);

// Take the oldest message of a queue. They return false if no message matches. `window` 0 matches all windows; `first`
// and `last` are the range of message numbers, and 0 and 0 match all.
bool takeSent(Image& image, Slot thread, Message& message);
bool takePosted(Image& image, Slot thread, std::uint32_t window, std::uint32_t first, std::uint32_t last,
                Message& message);

} // namespace panel::messages
