// Open files.
#include "platform/panel/Gate.h"
#include "platform/panel/Paths.h"
#include "platform/panel/Text.h"
#include "platform/panel/api/DriverFiles.h"
#include "platform/panel/api/FileTimes.h"
#include "platform/panel/api/Numbers.h"
#include "platform/panel/kernel/Objects.h"
#include "platform/panel/kernel/Storage.h"

#include <fcntl.h>
#include <unistd.h>

using namespace panel;

namespace {

// Returns whether all open handles of a file share it for this access, and the new handle for theirs.
bool sharingAllows(const Image& image, const struct stat& status, DWORD access, DWORD share) {
    const auto granted = [](DWORD wanted, DWORD given) {
        return (!(wanted & GENERIC_READ) || (given & FILE_SHARE_READ)) &&
               (!(wanted & GENERIC_WRITE) || (given & FILE_SHARE_WRITE));
    };
    for (const ObjectRecord& other : usedObjects(image))
        if (other.type == ObjectType::file && other.device == status.st_dev && other.inode == status.st_ino &&
            (!granted(access, other.share) || !granted(other.access, share)))
            return false;
    return !(access & GENERIC_WRITE) || objects::busy(image, status.st_dev, status.st_ino) != objects::Busy::running;
}

// Returns the error of CreateFileW, or 0 if the file can be opened.
DWORD refusal(const Image& image, const Place& place, bool isProtected, DWORD access, DWORD share, DWORD disposition) {
    const bool makes = disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING)
        return ERROR_INVALID_PARAMETER;
    if (!place.exists)
        return !makes || !place.canBeMade() ? place.error : isProtected ? ERROR_WRITE_PROTECT : 0;
    if (disposition == CREATE_NEW)
        return ERROR_FILE_EXISTS;
    const bool changes = (access & GENERIC_WRITE) || disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
    if (changes && isProtected && place.isFile())
        return ERROR_WRITE_PROTECT;
    if (!place.isFile() || (changes && place.isReadOnly()))
        return ERROR_ACCESS_DENIED;
    return sharingAllows(image, place.status, access, share) ? 0 : ERROR_SHARING_VIOLATION;
}

int openOnHost(const Place& place, DWORD access, DWORD disposition) {
    int flags = O_CLOEXEC | O_NOCTTY;
    flags |= !(access & GENERIC_WRITE) ? O_RDONLY : access & GENERIC_READ ? O_RDWR : O_WRONLY;
    if (!place.exists)
        flags |= O_CREAT | O_EXCL;
    else if (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING)
        flags |= O_TRUNC;
    return open(place.host.c_str(), flags, 0644);
}

// Returns the host descriptor of a file handle with this access right, or -1. Needs the lock.
int descriptor(Gate& gate, HANDLE file, DWORD access) {
    const Slot slot = objects::resolve(gate.image(), gate.process(), numberOf(file));
    if (!slot || objects::at(gate.image(), slot).type != ObjectType::file ||
        (access && !(objects::at(gate.image(), slot).access & access)))
        return -1;
    return gate.runtime.local(numberOf(file)).file;
}

int lockedDescriptor(Gate& gate, HANDLE file, DWORD access) {
    const Lock lock(gate.image());
    return descriptor(gate, file, access);
}

} // namespace

HANDLE CreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES*, DWORD disposition, DWORD flags,
                   HANDLE) noexcept {
    Gate gate(Function::CreateFileW, path, trace::Hex{access}, share, disposition, trace::Hex{flags});
    if (gate.faulted())
        return gate.fault<HANDLE>();
    const std::string name = toUtf8(path);
    Image& image = gate.image();
    Lock lock(image);
    if (name.ends_with(':')) {
        const DeviceFacts* driver = Devices::driverAt(name);
        return driver ? openDriver(gate, lock, *driver) : gate.fails(INVALID_HANDLE_VALUE, ERROR_FILE_NOT_FOUND);
    }
    const Place place = locate(image, gate.runtime.directory(), name);
    if (const DWORD error = refusal(image, place, isProtected(image, name), access, share, disposition))
        return gate.fails(INVALID_HANDLE_VALUE, error);
    const Slot object = objects::make(image, ObjectType::file);
    const std::uint32_t handle = object ? objects::openHandle(image, gate.process(), object) : 0;
    if (!place.exists)
        nameMade(image, place);
    const int file = handle ? openOnHost(place, access, disposition) : -1;
    struct stat status {};
    if (file < 0 || fstat(file, &status) != 0) {
        if (handle)
            objects::closeHandle(image, gate.process(), handle);
        else if (object)
            objects::at(image, object).type = ObjectType::free;
        return gate.fails(INVALID_HANDLE_VALUE, handle ? ERROR_ACCESS_DENIED : ERROR_NOT_ENOUGH_MEMORY);
    }
    ObjectRecord& record = objects::at(image, object);
    record.access = access;
    record.share = share;
    record.subject = isOnFlash(name);
    record.device = status.st_dev;
    record.inode = status.st_ino;
    gate.runtime.local(handle).file = file;
    if (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING)
        storage::emptied(image, record);
    if (!place.exists || disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING)
        setWriteTime(image, file);
    const bool existed = place.exists && (disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS);
    gate.setLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return gate.done(handleOf(handle));
}

BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD bytes, DWORD* count, void*) noexcept {
    Gate gate(Function::ReadFile, file, bytes);
    *count = 0;
    if (gate.faulted())
        return gate.fault<BOOL>();
    // Without the lock: a read changes nothing that other processes see.
    const int host = lockedDescriptor(gate, file, GENERIC_READ);
    const ssize_t length = host < 0 ? -1 : read(host, buffer, bytes);
    if (length < 0)
        return gate.fails(FALSE, host < 0 ? ERROR_INVALID_HANDLE : ERROR_GEN_FAILURE);
    *count = static_cast<DWORD>(length);
    gate.shows(*count);
    return gate.done(TRUE);
}

BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD bytes, DWORD* written, void*) noexcept {
    Gate gate(Function::WriteFile, file, bytes);
    *written = 0;
    if (gate.faulted())
        return gate.fault<BOOL>();
    const Lock lock(gate.image());
    const int host = descriptor(gate, file, GENERIC_WRITE);
    if (host < 0)
        return gate.fails(FALSE, ERROR_INVALID_HANDLE);
    const Slot object = objects::resolve(gate.image(), gate.process(), numberOf(file));
    // The volume may have been protected after the file was opened.
    if (objects::at(gate.image(), object).subject && !gate.image().flashWritable)
        return gate.fails(FALSE, ERROR_WRITE_PROTECT);
    if (!storage::beforeWrite(gate.image(), object, host, bytes))
        return gate.fails(FALSE, ERROR_DISK_FULL);
    const ssize_t length = write(host, buffer, bytes);
    *written = length < 0 ? 0 : static_cast<DWORD>(length);
    gate.shows(*written);
    setWriteTime(gate.image(), host);
    if (*written != bytes)
        return gate.fails(FALSE, ERROR_DISK_FULL);
    return gate.done(TRUE);
}

DWORD SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD origin) noexcept {
    Gate gate(Function::SetFilePointer, file, distance, origin);
    if (gate.faulted())
        return gate.fault<DWORD>();
    const int host = lockedDescriptor(gate, file, 0);
    if (host < 0)
        return gate.fails(INVALID_SET_FILE_POINTER, ERROR_INVALID_HANDLE);
    if (origin > FILE_END || (distanceHigh && *distanceHigh != 0))
        return gate.fails(INVALID_SET_FILE_POINTER, ERROR_INVALID_PARAMETER);
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    // With a high part the low part is unsigned.
    const off_t offset = distanceHigh ? off_t{static_cast<DWORD>(distance)} : off_t{distance};
    const auto position = lseek(host, offset, origins[origin]);
    if (position < 0)
        return gate.fails(INVALID_SET_FILE_POINTER, ERROR_INVALID_PARAMETER);
    if (distanceHigh)
        *distanceHigh = static_cast<LONG>(position >> 32);
    gate.setLastError(ERROR_SUCCESS);
    return gate.done(static_cast<DWORD>(position));
}
