// The part of <windows.h> about the registry. Include <windows.h>, which includes it.
//
// All answer an error code, ERROR_SUCCESS among them, and leave the last error alone. Names are case-blind; text in
// values has 16 bits a character on both platforms and is stored as it is given, terminated or not.
#pragma once

struct HKEY__;
using HKEY = HKEY__*;

// NOLINTNEXTLINE: the roots are no constant expressions.
#define PREDEFINED_KEY(number) (reinterpret_cast<HKEY>(static_cast<std::uintptr_t>(number)))
#define HKEY_CLASSES_ROOT PREDEFINED_KEY(0x80000000U)
#define HKEY_CURRENT_USER PREDEFINED_KEY(0x80000001U)
#define HKEY_LOCAL_MACHINE PREDEFINED_KEY(0x80000002U)
#define HKEY_USERS PREDEFINED_KEY(0x80000003U)

inline constexpr DWORD REG_NONE = 0;
inline constexpr DWORD REG_SZ = 1;
inline constexpr DWORD REG_EXPAND_SZ = 2;
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;
inline constexpr DWORD REG_DWORD_BIG_ENDIAN = 5;
inline constexpr DWORD REG_LINK = 6;
inline constexpr DWORD REG_MULTI_SZ = 7;
inline constexpr DWORD REG_CREATED_NEW_KEY = 1; // dispositions
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

extern "C" {

// The access is ignored, 0 will do. ERROR_FILE_NOT_FOUND if there is no such key.
LONG WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, DWORD access, HKEY* opened) noexcept;
// Makes the keys above it too; opens the one that is there. 16 levels below a root at most, names of 255 characters
// [ms891450].
LONG WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR keyClass, DWORD options, DWORD access,
                            SECURITY_ATTRIBUTES* security, HKEY* opened, DWORD* disposition) noexcept;
LONG WINAPI RegCloseKey(HKEY key) noexcept;
// Sizes in bytes. ERROR_MORE_DATA and the size that is needed for a buffer that is too small.
LONG WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) noexcept;
LONG WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) noexcept;
// With all keys below it; not while one of them is open [ms891451].
LONG WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subkey) noexcept;
LONG WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) noexcept;
// Lengths in characters: with the terminating zero on the way in, without it on the way out. ERROR_NO_MORE_ITEMS past
// the last one.
LONG WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, LPWSTR keyClass,
                          DWORD* classLength, FILETIME* written) noexcept;
LONG WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, DWORD* type, BYTE* data,
                          DWORD* size) noexcept;
LONG WINAPI RegFlushKey(HKEY key) noexcept; // without it a change may not survive a power cut [ee490431]

} // extern "C"
