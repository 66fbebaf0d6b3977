// The registry functions of <windows.h>. Include <windows.h> instead of this file.
//
// Every function returns an error code, which is ERROR_SUCCESS on success. None of them changes the last error.
// Key and value names are case-insensitive. Text in values has 16 bits per character on both platforms. Values are
// stored exactly as given, with or without a terminating zero.
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
inline constexpr DWORD REG_CREATED_NEW_KEY = 1; // dispositions of RegCreateKeyExW
inline constexpr DWORD REG_OPENED_EXISTING_KEY = 2;

extern "C" {

// Opens an existing key. `access` is ignored; pass 0. Returns ERROR_FILE_NOT_FOUND if the key does not exist.
LONG WINAPI RegOpenKeyExW(HKEY key, LPCWSTR subkey, DWORD options, DWORD access, HKEY* opened) noexcept;
// Opens a key, or creates it with all missing keys above it. `disposition` tells the two cases apart.
// A key lies at most 16 levels below a root. A name has at most 255 characters [ms891450].
LONG WINAPI RegCreateKeyExW(HKEY key, LPCWSTR subkey, DWORD reserved, LPWSTR keyClass, DWORD options, DWORD access,
                            SECURITY_ATTRIBUTES* security, HKEY* opened, DWORD* disposition) noexcept;
LONG WINAPI RegCloseKey(HKEY key) noexcept;
// Reads a value. `size` counts bytes: the buffer's size before the call, the value's size after it.
// If the buffer is too small, returns ERROR_MORE_DATA and stores the required size.
LONG WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data, DWORD* size) noexcept;
LONG WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size) noexcept;
// Deletes a key and all keys below it. Fails while one of these keys is open [ms891451].
LONG WINAPI RegDeleteKeyW(HKEY key, LPCWSTR subkey) noexcept;
LONG WINAPI RegDeleteValueW(HKEY key, LPCWSTR name) noexcept;
// List the subkeys and values by index, from 0. Both return ERROR_NO_MORE_ITEMS after the last item.
// `length` counts characters: before the call the buffer's length including the terminating zero, after the call the
// name's length without the zero.
LONG WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, LPWSTR keyClass,
                          DWORD* classLength, FILETIME* written) noexcept;
LONG WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, DWORD* type, BYTE* data,
                          DWORD* size) noexcept;
// Writes changes to flash. A change that was not flushed may be lost in a power cut [ee490431].
LONG WINAPI RegFlushKey(HKEY key) noexcept;

} // extern "C"
