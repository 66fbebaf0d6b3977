// The well-known paths of the panel.
#pragma once

#include <string>

namespace Paths {

inline constexpr wchar_t INSTALLATION_DIRECTORY[] = L"\\MMCMemory\\Tarvex";
inline constexpr wchar_t APPLICATION[] = L"\\MMCMemory\\Tarvex\\Tarvex.exe";
inline constexpr wchar_t HELPER[] = L"\\MMCMemory\\Tarvex\\TarvexHelper.exe";
inline constexpr wchar_t APPLICATION_FILE_NAME[] = L"Tarvex.exe";
inline constexpr wchar_t APPLICATION_NAME[] = L"Tarvex";

// The full path that the running program was started by; what follows its 260th character is lost.
// Empty when the platform does not tell.
std::wstring runningExecutable();

} // namespace Paths
