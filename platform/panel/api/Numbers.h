// Converts between the API's handles, which are pointers, and the 32-bit numbers in the kernel file.
#pragma once

#include <windows.h>

#include <cstdint>

namespace panel {

inline constexpr std::uint32_t moduleHandle = 0x10000; // handle of the program's module; a program's usual image base

inline constexpr std::uint32_t firstStockObject = 0x500000; // handle of stock object 0; the others follow

// Returns a handle's number. A pointer that cannot be a handle gives 0xFFFFFFFF, which is no handle's number either.
inline std::uint32_t numberOf(const void* handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value > 0xFFFFFFFF ? 0xFFFFFFFF : static_cast<std::uint32_t>(value);
}
inline HANDLE handleOf(std::uint32_t number) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(number));
}
inline std::uint32_t numberOf(HWND window) {
    return numberOf(static_cast<const void*>(window));
}
inline HWND windowOf(std::uint32_t number) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
}

} // namespace panel
