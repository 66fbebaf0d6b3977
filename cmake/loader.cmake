# Toolchain of the loader, a Linux program for ARM. Wide characters have 16 bits, as in the panel executable that it runs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
# ARMv7 has atomic instructions that also work between emulated and native processes.
set(machine "-marm -march=armv7-a -mfloat-abi=soft -fshort-wchar -Wno-psabi")
set(CMAKE_CXX_FLAGS_INIT "${machine} -Os -D_FILE_OFFSET_BITS=64")
# The loader must not occupy the addresses of the panel executable.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,-Ttext-segment=0x20000000 -Wl,--no-wchar-size-warning")
