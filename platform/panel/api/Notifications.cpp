// Message queues and device notifications.
#include "platform/panel/Gate.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Queues.h"
#include "platform/panel/kernel/Wait.h"

#include <msgqueue.h>
#include <pnp.h>

#include <algorithm>
#include <cstring>

using namespace panel;

namespace {

// Creates an object and returns its handle, or 0 if a table is full. Needs the lock.
std::uint32_t openNew(Gate& gate, ObjectType type, Slot& object) {
    object = objects::make(gate.image(), type);
    const std::uint32_t handle = object ? objects::openHandle(gate.image(), gate.process(), object) : 0;
    if (object && !handle)
        objects::at(gate.image(), object).type = ObjectType::free;
    return handle;
}

// Returns the object of a handle, or 0 if the handle has another type or is not valid.
Slot objectOf(Gate& gate, HANDLE handle, ObjectType type) {
    const Slot object = objects::resolve(gate.image(), gate.process(), numberOf(handle));
    return object && objects::at(gate.image(), object).type == type ? object : 0;
}

BOOL closeObject(Gate& gate, HANDLE handle, ObjectType type) {
    const Lock lock(gate.image());
    if (!objectOf(gate, handle, type))
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    objects::closeHandle(gate.image(), gate.process(), numberOf(handle));
    return gate.done(TRUE);
}

} // namespace

HANDLE CreateMsgQueue(LPCWSTR name, const MSGQUEUEOPTIONS* options) noexcept {
    Gate gate(Function::CreateMsgQueue, name);
    if (options)
        for (const DWORD field : {options->dwSize, options->dwFlags, options->dwMaxMessages, options->cbMaxMessage,
                                  static_cast<DWORD>(options->bReadAccess)})
            gate.shows(field);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    // Only the device manager writes here, and no program opens a queue by name. Other options therefore fail.
    if (name || !options || options->dwSize != sizeof *options || options->dwFlags || !options->cbMaxMessage ||
        !options->bReadAccess)
        return gate.fails(HANDLE{}, ERROR_INVALID_PARAMETER);
    const Lock lock(gate.image());
    Slot object = 0;
    const std::uint32_t handle = openNew(gate, ObjectType::queue, object);
    if (!handle)
        return gate.fails(HANDLE{}, ERROR_NOT_ENOUGH_MEMORY);
    objects::at(gate.image(), object).limit = options->dwMaxMessages;
    objects::at(gate.image(), object).size = options->cbMaxMessage;
    gate.setLastError(ERROR_SUCCESS);
    return gate.done(handleOf(handle));
}

BOOL ReadMsgQueue(HANDLE queue, LPVOID buffer, DWORD bytes, DWORD* bytesRead, DWORD milliseconds,
                  DWORD* flags) noexcept {
    Gate gate(Function::ReadMsgQueue, queue, bytes, milliseconds);
    if (gate.faulted())
        return gate.fault<BOOL>();
    Lock lock(gate.image());
    const Slot object = objectOf(gate, queue, ObjectType::queue);
    if (!object || !buffer || !bytesRead || !flags)
        return gate.fails(FALSE, object ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    const std::uint64_t end = clock::deadline(gate.image(), milliseconds);
    while (!queues::first(gate.image(), object)) { // another reader may have taken the message
        const std::uint64_t now = clock::now(gate.image());
        const auto rest = milliseconds == INFINITE ? INFINITE : static_cast<DWORD>(end > now ? end - now : 0);
        if (waitForObjects(lock, gate.image(), gate.slot(), &object, 1, rest) != WAIT_OBJECT_0)
            return gate.fails(FALSE, ERROR_TIMEOUT);
        if (!objectOf(gate, queue, ObjectType::queue)) // the queue was closed during the wait
            return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    }
    const QueueMessageRecord& message = *queues::first(gate.image(), object);
    const DWORD size = message.size;
    *bytesRead = std::min(size, bytes);
    *flags = 0;
    std::memcpy(buffer, message.bytes, *bytesRead);
    queues::pop(gate.image(), object);
    gate.shows(trace::Bytes{buffer, *bytesRead});
    if (size > bytes) // the rest of the message is lost [ms886793]
        return gate.fails(FALSE, ERROR_INSUFFICIENT_BUFFER);
    return gate.done(TRUE);
}

BOOL CloseMsgQueue(HANDLE queue) noexcept {
    Gate gate(Function::CloseMsgQueue, queue);
    if (gate.faulted())
        return gate.fault<BOOL>();
    return closeObject(gate, queue, ObjectType::queue);
}

HANDLE RequestDeviceNotifications(const GUID* deviceClass, HANDLE queue, BOOL all) noexcept {
    Gate gate(Function::RequestDeviceNotifications, trace::Bytes{deviceClass, deviceClass ? sizeof *deviceClass : 0},
              queue, all);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    const Slot receiver = objectOf(gate, queue, ObjectType::queue);
    if (!receiver)
        return gate.fails(HANDLE{}, ERROR_INVALID_HANDLE);
    Slot object = 0;
    const std::uint32_t handle = openNew(gate, ObjectType::notification, object);
    if (!handle)
        return gate.fails(HANDLE{}, ERROR_NOT_ENOUGH_MEMORY);
    // All devices of the panel have this class. A request for another class gets no notifications.
    const bool blocks = !deviceClass || std::memcmp(deviceClass, &queues::blockDriver, sizeof *deviceClass) == 0;
    objects::at(gate.image(), object).subject = receiver;
    objects::at(gate.image(), object).limit = blocks;
    objects::hold(gate.image(), receiver);
    for (const BlockDeviceRecord& device : gate.image().blockDevices)
        if (all && blocks && device.used)
            queues::announce(gate.image(), receiver, device.name, true);
    return gate.done(handleOf(handle));
}

BOOL StopDeviceNotifications(HANDLE notifications) noexcept {
    Gate gate(Function::StopDeviceNotifications, notifications);
    if (gate.faulted())
        return gate.fault<BOOL>();
    return closeObject(gate, notifications, ObjectType::notification);
}
