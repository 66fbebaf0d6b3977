// Functions that compare values of an open key with expected data.
//
// Each function reads the value with its counterpart in Reading.h and throws the same exceptions for a value that is
// missing or has another type. If the data differ, it throws RegistryException with the message given below. It returns
// normally if they are equal. Any thread may call.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

// Compares size and bytes. Throws "Different binary values".
void compareBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& expected);
// Both throw "Different DWORD values".
void compareDword(HKEY key, const std::wstring& name, std::uint32_t expected);
void compareDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t expected);
// Compares case-sensitively. Throws "Different string values".
void compareString(HKEY key, const std::wstring& name, const std::wstring& expected);
// Compares the text before the expansion of variables. Throws "Different expand string values".
void compareExpandString(HKEY key, const std::wstring& name, const std::wstring& expected);
// Compares number, order and text of the strings. Throws "Different multi string values".
void compareMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& expected);

} // namespace OrvaUtils::Registry
