# Toolchain of the panel executable: ARMv4T, 16-bit wide characters, no operating system.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_ASM_COMPILER arm-none-eabi-gcc)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(machine "-marm -march=armv4t -mfloat-abi=soft -fshort-wchar")
# 32-bit integers are int and unsigned, as on Linux. By default this compiler uses long.
set(types "-U__INT32_TYPE__ -D__INT32_TYPE__=int -U__UINT32_TYPE__ -D__UINT32_TYPE__=unsigned")
set(CMAKE_CXX_FLAGS_INIT "${machine} ${types} -Os -ffunction-sections -fdata-sections")
set(CMAKE_ASM_FLAGS_INIT "${machine}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${machine} -nostartfiles -Wl,--gc-sections -Wl,--no-wchar-size-warning")
