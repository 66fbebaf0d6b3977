#include "platform/panel/kernel/Queues.h"

#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Scheduler.h"

#include <cstring>

namespace panel::queues {

namespace {

constexpr std::uint32_t nameOffset = offsetof(DEVDETAIL, szName);

QueueMessageRecord& at(Image& image, Slot message) {
    return image.queueMessages[message - 1];
}

} // namespace

bool push(Image& image, Slot queue, const void* message, std::uint32_t size) {
    ObjectRecord& record = objects::at(image, queue);
    Slot* last = &record.subject;
    std::uint32_t count = 0;
    // Finds the end of the list and counts its messages.
    for (; *last; last = &at(image, *last).next)
        ++count;
    if (size > record.size || (record.limit && count >= record.limit))
        return false;
    for (Slot free = 1; free <= maxQueueMessages; ++free) {
        QueueMessageRecord& made = at(image, free);
        if (made.used)
            continue;
        made.used = 1;
        made.next = 0;
        made.size = size;
        std::memcpy(made.bytes, message, size);
        *last = free;
        record.signalled = 1;
        scheduler::serve(image, queue);
        return true;
    }
    return false;
}

const QueueMessageRecord* first(const Image& image, Slot queue) {
    const Slot message = image.objects[queue - 1].subject;
    return message ? &image.queueMessages[message - 1] : nullptr;
}

void pop(Image& image, Slot queue) {
    ObjectRecord& record = objects::at(image, queue);
    if (!record.subject)
        return;
    QueueMessageRecord& oldest = at(image, record.subject);
    oldest.used = 0;
    record.subject = oldest.next;
    record.signalled = record.subject != 0;
}

void clear(Image& image, Slot queue) {
    while (first(image, queue))
        pop(image, queue);
}

void announce(Image& image, Slot queue, std::string_view device, bool attached) {
    std::uint8_t bytes[sizeof(DEVDETAIL) + 2 * sizeof BlockDeviceRecord::name] = {};
    DEVDETAIL detail{};
    detail.guidDevClass = blockDriver;
    detail.fAttached = attached;
    detail.cbName = static_cast<int>(2 * (device.size() + 1));
    std::memcpy(bytes, &detail, nameOffset);
    for (std::size_t index = 0; index < device.size(); ++index)
        bytes[nameOffset + 2 * index] = static_cast<std::uint8_t>(device[index]); // device names are ASCII
    push(image, queue, bytes, nameOffset + static_cast<std::uint32_t>(detail.cbName));
}

void announce(Image& image, std::string_view device, bool attached) {
    for (const ObjectRecord& object : usedObjects(image))
        if (object.type == ObjectType::notification && object.limit)
            announce(image, object.subject, device, attached);
}

} // namespace panel::queues
