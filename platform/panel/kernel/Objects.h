// Kernel objects and their handles.
//
// A handle belongs to its process. It is never 0, -1 or 66, and its number is not reused soon. An object has a count of
// holders: handles and waits. The object is freed when the last holder drops it. All functions need the kernel's lock.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string_view>

namespace panel::objects {

ObjectRecord& at(Image& image, Slot object);

// Creates an object without holders. Returns 0 if the table is full.
Slot make(Image& image, ObjectType type);
// Increments and decrements the count of holders.
void hold(Image& image, Slot object);
void drop(Image& image, Slot object);
// Gives an event or mutex a name, which may be empty. findNamed finds named objects only.
void setName(ObjectRecord& object, std::string_view name);
// Returns the object of this type and name, or 0.
Slot findNamed(Image& image, ObjectType type, std::string_view name);

// Opens a handle, which holds the object. Returns 0 if the process has no free entry.
std::uint32_t openHandle(Image& image, Slot process, Slot object);
// Closes a handle and drops the object. Returns false if the handle is not valid.
bool closeHandle(Image& image, Slot process, std::uint32_t handle);
void closeAllHandles(Image& image, Slot process);
// Returns the object of a handle, or 0 if the handle is not valid.
Slot resolve(Image& image, Slot process, std::uint32_t handle);
// Returns the index of a valid handle in ProcessRecord::handles.
std::uint32_t handleIndex(std::uint32_t handle);

// Returns whether a process runs from this host file or a handle holds it open.
enum class Busy { no, running, open };
Busy busy(const Image& image, std::uint64_t device, std::uint64_t inode);

} // namespace panel::objects
