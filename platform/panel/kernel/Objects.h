// Kernel objects and the handles to them. All functions want the lock held.
//
// A handle is a number of its process: not 0, -1 or 66, and not soon used again. An object lives as long as a handle or
// a wait holds it.
#pragma once

#include "platform/panel/kernel/Image.h"

#include <string_view>

namespace panel::objects {

ObjectRecord& at(Image& image, Slot object);

Slot make(Image& image, ObjectType type); // held by nobody yet; 0 if the table is full
void hold(Image& image, Slot object);
void drop(Image& image, Slot object);
void setName(ObjectRecord& object, std::string_view name); // also the empty one; without it findNamed finds nothing
Slot findNamed(Image& image, ObjectType type, std::string_view name); // 0: none

// Takes hold of the object. 0 if the process has no entry left.
std::uint32_t openHandle(Image& image, Slot process, Slot object);
bool closeHandle(Image& image, Slot process, std::uint32_t handle);
void closeAllHandles(Image& image, Slot process);
Slot resolve(Image& image, Slot process, std::uint32_t handle); // 0: no such handle
std::uint32_t handleIndex(std::uint32_t handle); // the entry that a valid handle stands for

// A file on the host that a process runs from, or that somebody holds open.
enum class Busy { no, running, open };
Busy busy(const Image& image, std::uint64_t device, std::uint64_t inode);

} // namespace panel::objects
