// The functions of tagUserAPI.dll, the library of the panel's tag store. A tag is a numbered block of bytes.
//
// The declarations exist for their types only. A panel may lack the library, so programs load it with LoadLibraryW and
// look the functions up with GetProcAddressW, which takes wide names here:
//
//     void* const address = reinterpret_cast<void*>(GetProcAddressW(library, L"TAG_Open"));
//     const auto open = reinterpret_cast<decltype(&TAG_Open)>(address);
//
// The last parameter receives an error code. A call has succeeded if it returns non-zero and the error code is 0.
//
// Assumptions: the parameters of TAG_GetDBsize and TAG_Get_Valid_Ids_Nr, and the meaning of the error codes. No
// documentation of them was found.
#pragma once

#include <windows.h>

extern "C" {

// Stores the total size of all tags in bytes.
BOOL TAG_GetDBsize(DWORD* bytes, DWORD* error) noexcept;
// Opens the store. Every other function fails before this call. Pair each TAG_Open with a TAG_Close.
BOOL TAG_Open(DWORD* error) noexcept;
BOOL TAG_Close(DWORD* error) noexcept;
// Deletes all tags.
BOOL TAG_Format(DWORD* error) noexcept;
// Stores the number of tags.
BOOL TAG_Get_Valid_Ids_Nr(DWORD* count, DWORD* error) noexcept;
// Copies a tag's bytes into the buffer. `size` holds the buffer's size before the call and the tag's size after it.
// If the buffer is too small, the call still succeeds and the buffer holds the beginning of the tag.
BOOL TAG_Get_Data(DWORD id, DWORD* size, void* buffer, DWORD* error) noexcept;
// Creates or replaces a tag.
BOOL TAG_Set_Data(DWORD id, DWORD size, const void* data, DWORD* error) noexcept;
BOOL TAG_Delete(DWORD id, DWORD* error) noexcept;
}
