// The well-known paths of the panel.
#pragma once

#include <string>

namespace Paths {

// The application, the helper, their settings files and the log files lie here.
inline constexpr wchar_t INSTALLATION_DIRECTORY[] = L"\\MMCMemory\\Tarvex";
inline constexpr wchar_t APPLICATION[] = L"\\MMCMemory\\Tarvex\\Tarvex.exe";
inline constexpr wchar_t HELPER[] = L"\\MMCMemory\\Tarvex\\TarvexHelper.exe";
inline constexpr wchar_t APPLICATION_FILE_NAME[] = L"Tarvex.exe";
inline constexpr wchar_t APPLICATION_NAME[] = L"Tarvex";

// Returns the full path of the running executable, or an empty text if GetModuleFileNameW fails. A path longer than 260
// characters is cut. Any thread may call.
std::wstring runningExecutable();

} // namespace Paths
