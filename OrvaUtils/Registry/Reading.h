// Functions that read a value of an open key, one function for each type.
//
// They throw RegistryException: "Cannot query the given registry value" if the value is missing or cannot be read, and
// "Unexpected value type" if the value has another type than the function expects. An empty name means the default
// value of the key. Any thread may call.
#pragma once

#include "OrvaUtils/Registry/Value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

// Reads the bytes of a REG_BINARY value.
std::vector<std::uint8_t> readBinary(HKEY key, const std::wstring& name);
// Reads a REG_DWORD value: its first four bytes in the order of memory. Missing bytes count as zero.
std::uint32_t readDword(HKEY key, const std::wstring& name);
// Reads a REG_DWORD_BIG_ENDIAN value in the same way: the bytes are deliberately not reordered.
std::uint32_t readDwordBigEndian(HKEY key, const std::wstring& name);
// Reads a REG_SZ value up to its first zero character, or completely if it has no zero character.
std::wstring readString(HKEY key, const std::wstring& name);
// Opens the subkey, reads the value and closes the subkey. Also throws the exception of `openKey`.
std::wstring readString(HKEY root, const std::wstring& subkey, const std::wstring& name);
// Reads a REG_EXPAND_SZ value like a REG_SZ value. Names of variables are not expanded.
std::wstring readExpandString(HKEY key, const std::wstring& name);
// Reads the strings of a REG_MULTI_SZ value. The list ends at the first empty string or at the end of the data.
std::vector<std::wstring> readMultiString(HKEY key, const std::wstring& name);
// Reads a value of any type that has a class in Values.h. Throws "Invalid datatype given" for other types.
std::unique_ptr<Value> readValue(HKEY key, const std::wstring& name);

// Builds a value object from raw registry data, by the same rules. `data` may be null if `size` (in bytes) is 0. Throws
// RegistryException "Invalid datatype given" for a type that has no class.
std::unique_ptr<Value> makeValue(const std::wstring& name, const std::uint8_t* data, std::size_t size, DWORD type);

} // namespace OrvaUtils::Registry
