// Point-to-point message queues, and the device notifications that fill them. All functions want the lock held.
//
// A queue object is signalled while it holds a message.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <pnp.h>

#include <string_view>

namespace panel::queues {

// The class of block devices, the only one that a panel announces.
inline constexpr GUID blockDriver = {0xA4E7EDDA, 0xE575, 0x4252, {0x9D, 0x6B, 0x41, 0x95, 0xD4, 0x8B, 0xB8, 0x65}};

// False if the queue is full, or the message too long for it.
bool push(Image& image, Slot queue, const void* message, std::uint32_t size);
// The oldest message; null if there is none. It stays until `pop`.
const QueueMessageRecord* first(const Image& image, Slot queue);
void pop(Image& image, Slot queue);
void clear(Image& image, Slot queue);

// Tells every queue that asked that a block device has come or gone, by its name ("DSK1:").
void announce(Image& image, std::string_view device, bool attached);
// The same to one queue.
void announce(Image& image, Slot queue, std::string_view device, bool attached);

} // namespace panel::queues
