// The storage manager: stores of block devices and their partitions. All functions that would change a store fail.
#include "platform/panel/Gate.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Clock.h"
#include "platform/panel/kernel/Objects.h"

#include <storemgr.h>

#include <algorithm>
#include <cstddef>

using namespace panel;

namespace {

constexpr std::uint64_t sectors = 1 << 21; // 1 GB, whatever the size of the files
constexpr BYTE fat32 = 0x0B;

// Returns the block device of a store or search handle. Returns null if the handle is not valid or the device was
// unplugged, even if a new disk uses the same record. Needs the lock.
const BlockDeviceRecord* deviceOf(Gate& gate, HANDLE handle, ObjectType type) {
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(handle));
    if (!slot || objects::at(gate.image(), slot).type != type)
        return nullptr;
    const ObjectRecord& object = objects::at(gate.image(), slot);
    const BlockDeviceRecord& device = gate.image().blockDevices[object.subject - 1];
    return device.used && device.serial == object.serial ? &device : nullptr;
}

template<std::size_t N>
void put(std::uint16_t (&field)[N], std::string_view text) { // 16 bits per character on both platforms
    wchar_t wide[N];
    const std::size_t length = toWide(text, wide, N);
    std::copy(wide, wide + length, field);
}

void describe(const BlockDeviceRecord& device, std::uint32_t index, PARTINFO& info) {
    const PartitionRecord& partition = device.partitions[index];
    info = {};
    info.cbSize = sizeof info;
    put(info.szPartitionName, "PART0" + std::to_string(index));
    put(info.szFileSys, "FATFS");
    if (partition.attributes & PARTITION_ATTRIBUTE_MOUNTED)
        put(info.szVolumeName, '\\' + std::string(partition.volume));
    info.snNumSectors = sectors;
    info.dwAttributes = partition.attributes;
    info.bPartType = fat32;
}

// Opens the device's store, or a search for its partitions.
HANDLE open(Gate& gate, const BlockDeviceRecord& device, ObjectType type) {
    Image& image = gate.image();
    const Slot object = objects::make(image, type);
    const std::uint32_t handle = object ? objects::openHandle(image, gate.process(), object) : 0;
    if (!handle) {
        if (object)
            objects::at(image, object).type = ObjectType::free;
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_NOT_ENOUGH_MEMORY);
    }
    objects::at(image, object).subject = static_cast<Slot>(&device - image.blockDevices) + 1;
    objects::at(image, object).serial = device.serial;
    objects::at(image, object).next = 1;
    return gate.done(handleOf(handle));
}

} // namespace

HANDLE OpenStore(LPCWSTR device) noexcept {
    Gate gate(Function::OpenStore, device);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    const std::string name = toUtf8(device);
    for (const BlockDeviceRecord& record : gate.image().blockDevices) {
        if (!record.used || !equalCaseBlind(record.name, name))
            continue;
        if (clock::now(gate.image()) < record.readyAt)
            return gate.fails(INVALID_HANDLE_VALUE, ERROR_NOT_READY);
        return open(gate, record, ObjectType::store);
    }
    return gate.fails(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
}

HANDLE FindFirstPartition(HANDLE store, PARTINFO* info) noexcept {
    Gate gate(Function::FindFirstPartition, store, info ? info->cbSize : 0);
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const Lock lock(gate.image());
    const BlockDeviceRecord* device = deviceOf(gate, store, ObjectType::store);
    if (!device)
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_INVALID_HANDLE);
    if (!info || info->cbSize != sizeof *info)
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_INVALID_PARAMETER);
    if (device->partitionCount == 0)
        return gate.fails(INVALID_HANDLE_VALUE, ERROR_NO_MORE_FILES);
    const HANDLE search = open(gate, *device, ObjectType::partitions);
    if (search != INVALID_HANDLE_VALUE)
        describe(*device, 0, *info);
    return search;
}

BOOL FindNextPartition(HANDLE search, PARTINFO* info) noexcept {
    Gate gate(Function::FindNextPartition, search, info ? info->cbSize : 0);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const BlockDeviceRecord* device = deviceOf(gate, search, ObjectType::partitions);
    if (!device || !info || info->cbSize != sizeof *info)
        return gate.fails(FALSE, device ? ERROR_INVALID_PARAMETER : ERROR_INVALID_HANDLE);
    ObjectRecord& object = objects::at(gate.image(), objects::resolve(gate.image(), gate.process(), numberOf(search)));
    if (object.next >= device->partitionCount)
        return gate.fails(FALSE, ERROR_NO_MORE_FILES);
    describe(*device, object.next++, *info);
    return gate.done(TRUE);
}

BOOL FindClosePartition(HANDLE search) noexcept {
    Gate gate(Function::FindClosePartition, search);
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(search));
    if (!slot || objects::at(gate.image(), slot).type != ObjectType::partitions)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    objects::closeHandle(gate.image(), gate.process(), numberOf(search));
    return gate.done(TRUE);
}

// The helper looks these functions up by name, but never calls them.
#define REFUSED(type, failure, name, ...)                                                                              \
    type name(__VA_ARGS__) noexcept {                                                                                  \
        Gate gate(Function::name);                                                                                     \
        return gate.fails(failure, ERROR_NOT_SUPPORTED);                                                               \
    }

REFUSED(BOOL, FALSE, DismountStore, HANDLE)
REFUSED(BOOL, FALSE, FormatStore, HANDLE)
REFUSED(HANDLE, INVALID_HANDLE_VALUE, FindFirstStore, STOREINFO*)
REFUSED(BOOL, FALSE, FindNextStore, HANDLE, STOREINFO*)
REFUSED(BOOL, FALSE, FindCloseStore, HANDLE)
REFUSED(BOOL, FALSE, GetStoreInfo, HANDLE, STOREINFO*)
REFUSED(BOOL, FALSE, CreatePartition, HANDLE, LPCWSTR, std::uint64_t)
REFUSED(BOOL, FALSE, CreatePartitionEx, HANDLE, LPCWSTR, DWORD, std::uint64_t)
REFUSED(BOOL, FALSE, DeletePartition, HANDLE, LPCWSTR)
REFUSED(HANDLE, INVALID_HANDLE_VALUE, OpenPartition, HANDLE, LPCWSTR)
REFUSED(BOOL, FALSE, MountPartition, HANDLE)
REFUSED(BOOL, FALSE, DismountPartition, HANDLE)
REFUSED(BOOL, FALSE, RenamePartition, HANDLE, LPCWSTR)
REFUSED(BOOL, FALSE, SetPartitionAttributes, HANDLE, DWORD)
REFUSED(BOOL, FALSE, GetPartitionInfo, HANDLE, PARTINFO*)
REFUSED(BOOL, FALSE, FormatPartition, HANDLE)
REFUSED(BOOL, FALSE, FormatPartitionEx, HANDLE, BYTE, BOOL)
