#include "platform/panel/kernel/Objects.h"

#include "platform/panel/Text.h"
#include "platform/panel/kernel/Queues.h"
#include "platform/panel/kernel/Storage.h"

#include <algorithm>

namespace panel::objects {

namespace {

// A handle consists of a serial, 9 bits of index and two zero bits. It is never 0, because serials start at 1, and
// never 66 or -1, because it is divisible by 4.
constexpr std::uint32_t indexShift = 2;
constexpr std::uint32_t serialShift = 11;
static_assert(maxHandles == 1U << (serialShift - indexShift));

} // namespace

ObjectRecord& at(Image& image, Slot object) {
    return image.objects[object - 1];
}

Slot make(Image& image, ObjectType type) {
    std::uint32_t index = 0;
    while (index < image.objectsUsed && image.objects[index].type != ObjectType::free)
        ++index;
    if (index == maxObjects)
        return 0;
    image.objects[index] = {};
    image.objects[index].type = type;
    image.objectsUsed = std::max(image.objectsUsed, index + 1);
    return index + 1;
}

void hold(Image& image, Slot object) {
    ++at(image, object).holders;
}

void drop(Image& image, Slot object) {
    ObjectRecord& record = at(image, object);
    if (--record.holders > 0)
        return;
    if (record.type == ObjectType::process && record.subject)
        image.processes[record.subject - 1].object = 0;
    if (record.type == ObjectType::file)
        storage::commit(image, object);
    if (record.type == ObjectType::queue)
        queues::clear(image, object);
    if (record.type == ObjectType::notification)
        drop(image, record.subject);
    if (record.type == ObjectType::thread && record.subject)
        image.threads[record.subject - 1].object = 0;
    record.type = ObjectType::free;
}

void setName(ObjectRecord& object, std::string_view name) {
    object.named = 1;
    copyText(object.name, name);
}

Slot findNamed(Image& image, ObjectType type, std::string_view name) {
    for (std::uint32_t index = 0; index < image.objectsUsed; ++index)
        if (image.objects[index].type == type && image.objects[index].named && image.objects[index].name == name)
            return index + 1;
    return 0;
}

std::uint32_t openHandle(Image& image, Slot process, Slot object) {
    ProcessRecord& owner = image.processes[process - 1];
    for (std::uint32_t tried = 0; tried < maxHandles; ++tried) {
        const std::uint32_t index = (owner.nextHandle + tried) % maxHandles;
        HandleRecord& entry = owner.handles[index];
        if (entry.object)
            continue;
        owner.nextHandle = index + 1;
        entry.object = object;
        entry.serial = entry.serial % 0xFFFFF + 1;
        hold(image, object);
        return entry.serial << serialShift | index << indexShift;
    }
    return 0;
}

Slot resolve(Image& image, Slot process, std::uint32_t handle) {
    const HandleRecord& entry = image.processes[process - 1].handles[handleIndex(handle)];
    const bool whole = (handle & 3) == 0 && entry.serial == handle >> serialShift;
    return whole ? entry.object : 0;
}

bool closeHandle(Image& image, Slot process, std::uint32_t handle) {
    const Slot object = resolve(image, process, handle);
    if (!object)
        return false;
    image.processes[process - 1].handles[handleIndex(handle)].object = 0;
    drop(image, object);
    return true;
}

void closeAllHandles(Image& image, Slot process) {
    for (HandleRecord& entry : image.processes[process - 1].handles)
        if (const Slot object = entry.object) {
            entry.object = 0;
            drop(image, object);
        }
}

std::uint32_t handleIndex(std::uint32_t handle) {
    return handle >> indexShift & (maxHandles - 1);
}

Busy busy(const Image& image, std::uint64_t device, std::uint64_t inode) {
    for (const ProcessRecord& process : usedProcesses(image))
        if (process.state != ProcessState::free && !process.driver && process.device == device &&
            process.inode == inode)
            return Busy::running;
    for (const ObjectRecord& object : usedObjects(image))
        if (object.type == ObjectType::file && object.device == device && object.inode == inode)
            return Busy::open;
    return Busy::no;
}

} // namespace panel::objects
