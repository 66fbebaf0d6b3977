// Handles of the API as the numbers that the kernel file holds, and back.
#pragma once

#include <windows.h>

#include <cstdint>

namespace panel {

inline constexpr std::uint32_t moduleHandle = 0x10000; // the image base of a program, as good as any

inline constexpr std::uint32_t firstStockObject = 0x500000; // of GetStockObject's numbers

inline std::uint32_t numberOf(const void* handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value > 0xFFFFFFFF ? 0xFFFFFFFF : static_cast<std::uint32_t>(value); // of no handle
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
