// Functions that write a value into an open key, one function for each type.
//
// Each function makes one call of RegSetValueExW and replaces an existing value of any type. If the call fails, the
// function throws RegistryException: "Failed to set REG_BINARY value", with the type of the function. The two number
// types are called REG_DWORD_LE and REG_DWORD_BE there. An empty name means the default value of the key. Any thread
// may call.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

// Writes REG_BINARY.
void writeBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& bytes);
// Writes REG_DWORD: the four bytes of the number in the order of memory.
void writeDword(HKEY key, const std::wstring& name, std::uint32_t number);
// Writes REG_DWORD_BIG_ENDIAN with the same four bytes: they are deliberately not reordered.
void writeDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t number);
// Writes REG_SZ: the text and one terminating zero.
void writeString(HKEY key, const std::wstring& name, const std::wstring& text);
// Writes REG_EXPAND_SZ: the text and one terminating zero.
void writeExpandString(HKEY key, const std::wstring& name, const std::wstring& text);
// Writes REG_MULTI_SZ: each text with its terminating zero, then one more zero. An empty text in the list ends the list
// for a reader.
void writeMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& texts);

} // namespace OrvaUtils::Registry
