// Windows, registered message names, and the message queues of threads. All functions want the lock held.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <cstdint>
#include <string_view>

namespace panel::messages {

struct Message {
    std::uint32_t window = 0; // number; 0: none
    std::uint32_t message = 0;
    std::uint64_t wParam = 0;
    std::int64_t lParam = 0;
    std::uint32_t time = 0; // ticks
    Slot sender = 0; // 0: posted
    std::uint64_t token = 0; // which of the sender's messages
};

// A window's number: what a window handle holds. 0 if the table is full.
std::uint32_t makeWindow(Image& image, Slot thread, std::string_view className, std::uint64_t procedure);
std::uint32_t numberOf(const Image& image, const WindowRecord& window);
WindowRecord* window(Image& image, std::uint32_t number); // null: there is none
std::uint32_t findWindow(Image& image, std::string_view className); // case-blind; 0: none
// Its posted messages go, the senders of its sent ones are answered nothing.
void removeWindow(Image& image, std::uint32_t number);
void removeThread(Image& image, Slot thread); // its windows, queues and hook

std::uint32_t registerName(Image& image, std::string_view name, bool byProgram); // 0xC000 on; 0 if the table is full

// Appends and returns. False if there is no such window, or no room.
bool post(Image& image, const Message& message);
bool postToThread(Image& image, Slot thread, const Message& message);
// Appends a message that the sender then waits for (block with WaitKind::reply).
bool send(Image& image, Slot sender, const Message& message);
// The same for the mouse hook of a thread; window 0, the place in wParam and lParam.
bool sendToThread(Image& image, Slot sender, Slot thread, const Message& message);
void reply(Image& image, const Message& message, std::int64_t result);

// Takes the oldest; `window` 0 takes any. False if there is none.
bool takeSent(Image& image, Slot thread, Message& message);
bool takePosted(Image& image, Slot thread, std::uint32_t window, std::uint32_t first, std::uint32_t last,
                Message& message);

} // namespace panel::messages
