// Reads values of an open key by their types.
//
// Each throws RegistryException: "Cannot query the given registry value" for one that is missing or cannot be read,
// "Unexpected value type" for one of another type than the function's. The empty name is that of the default value.
#pragma once

#include "OrvaUtils/Registry/Value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

std::vector<std::uint8_t> readBinary(HKEY key, const std::wstring& name);
// The first four bytes as they stand, for both types; bytes that the value lacks count as zero.
std::uint32_t readDword(HKEY key, const std::wstring& name);
std::uint32_t readDwordBigEndian(HKEY key, const std::wstring& name);
// Up to the first zero character, or to the end of a text without one.
std::wstring readString(HKEY key, const std::wstring& name);
std::wstring readString(HKEY root, const std::wstring& subkey, const std::wstring& name); // opens the key, as openKey
std::wstring readExpandString(HKEY key, const std::wstring& name); // not expanded
// Up to the first empty text, or to the end of the data.
std::vector<std::wstring> readMultiString(HKEY key, const std::wstring& name);
// Of any type that has a class.
std::unique_ptr<Value> readValue(HKEY key, const std::wstring& name);

// A value from its raw data, read as above; `data` may be null if the size is 0. Throws RegistryException with "Invalid
// datatype given" for a type that has no class.
std::unique_ptr<Value> makeValue(const std::wstring& name, const std::uint8_t* data, std::size_t size, DWORD type);

} // namespace OrvaUtils::Registry
