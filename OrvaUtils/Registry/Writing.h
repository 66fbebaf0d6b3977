// Writes values into an open key by their types, each with one call of the platform. The empty name is that of the
// default value. A failure throws RegistryException with "Failed to set REG_BINARY value" and the like.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

void writeBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& bytes);
// The four bytes as the number has them in memory, for both types.
void writeDword(HKEY key, const std::wstring& name, std::uint32_t number);
void writeDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t number);
// With one terminating zero.
void writeString(HKEY key, const std::wstring& name, const std::wstring& text);
void writeExpandString(HKEY key, const std::wstring& name, const std::wstring& text);
// Each with its terminating zero, and one more behind them. An empty text ends the list for who reads it.
void writeMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& texts);

} // namespace OrvaUtils::Registry
