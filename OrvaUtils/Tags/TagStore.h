#pragma once

#include "OrvaUtils/DynamicLibrary.h"

#include <cstdint>
#include <vector>

namespace OrvaUtils::Tags {

// A connection to the panel's tag store: numbered data of the factory, kept outside of the file system, reached through
// "tagUserAPI.dll". The library is loaded, and the store open, for as long as the object lives.
//
// Failures are TagException, except for a library that cannot be loaded or lacks a function: LoadLibraryException. One
// connection at a time, on one thread: the functions that were looked up are kept for the whole process.
class TagStore {
public:
    TagStore();
    TagStore(const TagStore&) = delete;
    TagStore& operator=(const TagStore&) = delete;
    // Closes the store; throws when that fails, unless an exception is in flight.
    ~TagStore() noexcept(false);

    // Deletes all tags.
    void format();
    // Fills the buffer with as much of the tag as it holds. The tag's size in bytes.
    std::uint32_t getData(std::uint32_t tagId, std::vector<std::uint8_t>& buffer);
    // The same, but a buffer that is too small becomes as large as the tag, and is filled by a second call. Only the
    // last call must succeed: the library may refuse a small buffer, as long as it tells the size.
    std::uint32_t getDataGrowing(std::uint32_t tagId, std::vector<std::uint8_t>& buffer);
    void setData(std::uint32_t tagId, const std::vector<std::uint8_t>& bytes);

private:
    DynamicLibrary library;
};

} // namespace OrvaUtils::Tags
