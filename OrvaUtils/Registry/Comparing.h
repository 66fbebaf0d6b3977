// Checks that values of an open key are as expected. Each reads like its counterpart in Reading.h, throws as that does,
// and throws RegistryException with "Different ... values" when the data differ.
#pragma once

#include <windows.h>

#include <cstdint>
#include <initializer_list>
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

// Whether a key has all these values and the first one is this text, by the caller's comparison. It looks for all of
// them before it reads; the reading throws as readString.
bool holdsText(HKEY root, const std::wstring& path, std::initializer_list<const wchar_t*> names,
               const std::wstring& text, bool (*equal)(const std::wstring& first, const std::wstring& second));

} // namespace OrvaUtils::Registry
