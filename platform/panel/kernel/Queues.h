// Point-to-point message queues and device notifications. A queue object is signalled while it holds a message.
//
// All queues together hold at most maxQueueMessages messages. All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <pnp.h>

#include <string_view>

namespace panel::queues {

// The class of block devices, the only one that a panel announces.
inline constexpr GUID blockDriver = {0xA4E7EDDA, 0xE575, 0x4252, {0x9D, 0x6B, 0x41, 0x95, 0xD4, 0x8B, 0xB8, 0x65}};

// Appends a message of `size` bytes. Returns false if the queue or the panel's table is full, or the message is too
// long.
bool push(Image& image, Slot queue, const void* message, std::uint32_t size);
// Returns the oldest message without removing it, or null if the queue is empty.
const QueueMessageRecord* first(const Image& image, Slot queue);
// Removes the oldest message.
void pop(Image& image, Slot queue);
// Removes all messages.
void clear(Image& image, Slot queue);

// Notifies all registered queues that the block device "DSK1:" was attached or removed.
void announce(Image& image, std::string_view device, bool attached);
// Notifies one queue.
void announce(Image& image, Slot queue, std::string_view device, bool attached);

} // namespace panel::queues
