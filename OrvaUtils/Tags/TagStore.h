#pragma once

#include "OrvaUtils/DynamicLibrary.h"

#include <cstdint>
#include <vector>

namespace OrvaUtils::Tags {

// An open connection to the panel's tag store: numbered data items of the factory, kept outside of the file system.
//
// The constructor loads "tagUserAPI.dll", looks up its functions and opens the store; the destructor closes the store
// and unloads the library. An operation throws TagException if its call of the library fails. A call of the library has
// succeeded only if its result is not zero and its error code is zero.
//
// Open one connection at a time, on one thread: the table of functions belongs to the whole process.
class TagStore {
public:
    // Throws LoadLibraryException if the library cannot be loaded or lacks a function, and TagException "TAG_Open".
    TagStore();
    TagStore(const TagStore&) = delete;
    TagStore& operator=(const TagStore&) = delete;
    // Throws TagException "TAG_Close" if the store cannot be closed, unless an exception is in flight.
    ~TagStore() noexcept(false);

    // Deletes all tags. Throws TagException "TAG_Format".
    void format();
    // Copies a tag into the buffer, as much as the buffer holds. Returns the size of the whole tag in bytes. Throws
    // TagException "TAG_Get_Data".
    std::uint32_t getData(std::uint32_t tagId, std::vector<std::uint8_t>& buffer);
    // Copies the whole tag. If the buffer is too small, resizes the buffer to the size of the tag and reads again. Only
    // the last call of the library must succeed: the first call may fail, if it reports the size. Returns the size in
    // bytes. Throws TagException "TAG_Get_Data".
    std::uint32_t getDataGrowing(std::uint32_t tagId, std::vector<std::uint8_t>& buffer);
    // Writes a tag with exactly these bytes. Throws TagException "TAG_Set_Data".
    void setData(std::uint32_t tagId, const std::vector<std::uint8_t>& bytes);

private:
    DynamicLibrary library;
};

} // namespace OrvaUtils::Tags
