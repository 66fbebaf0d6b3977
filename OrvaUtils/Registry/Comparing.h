// Checks that values of an open key are as expected. Each reads like its counterpart in Reading.h, throws as that does,
// and throws RegistryException with "Different ... values" when the data differ.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace OrvaUtils::Registry {

void compareBinary(HKEY key, const std::wstring& name, const std::vector<std::uint8_t>& expected);
void compareDword(HKEY key, const std::wstring& name, std::uint32_t expected);
void compareDwordBigEndian(HKEY key, const std::wstring& name, std::uint32_t expected);
// Case matters.
void compareString(HKEY key, const std::wstring& name, const std::wstring& expected);
void compareExpandString(HKEY key, const std::wstring& name, const std::wstring& expected); // unexpanded texts
void compareMultiString(HKEY key, const std::wstring& name, const std::vector<std::wstring>& expected);

} // namespace OrvaUtils::Registry
