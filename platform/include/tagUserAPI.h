// The functions of tagUserAPI.dll, the library of the panel's tag store: for their types. Programs load the library and
// look them up (LoadLibraryW, GetProcAddressW with wide names); a panel may lack it.
//
//     void* const address = reinterpret_cast<void*>(GetProcAddressW(library, L"TAG_Open"));
//     const auto open = reinterpret_cast<decltype(&TAG_Open)>(address);
//
// A call has succeeded if it answers non-zero and the error code, its last argument, is 0. Nothing is known of the
// parameters of TAG_GetDBsize and TAG_Get_Valid_Ids_Nr, nor of what the codes mean: those are assumptions.
#pragma once

#include <windows.h>

extern "C" {

BOOL TAG_GetDBsize(DWORD* bytes, DWORD* error) noexcept; // of all tags
BOOL TAG_Open(DWORD* error) noexcept; // before any other call
BOOL TAG_Close(DWORD* error) noexcept;
BOOL TAG_Format(DWORD* error) noexcept; // all tags go
BOOL TAG_Get_Valid_Ids_Nr(DWORD* count, DWORD* error) noexcept;
// `size`: the buffer's size before, the tag's size afterwards. If that is more, the call has succeeded and the buffer
// holds what fits.
BOOL TAG_Get_Data(DWORD id, DWORD* size, void* buffer, DWORD* error) noexcept;
BOOL TAG_Set_Data(DWORD id, DWORD size, const void* data, DWORD* error) noexcept;
BOOL TAG_Delete(DWORD id, DWORD* error) noexcept;
}
