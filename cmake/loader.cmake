# The compiler of the loader, a Linux program for ARM: 16-bit wide characters, as the panel executable that it runs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
# Instructions that are atomic among processes of different machines, too.
set(machine "-marm -march=armv7-a -mfloat-abi=soft -fshort-wchar")
set(CMAKE_CXX_FLAGS_INIT "${machine} -O2 -D_FILE_OFFSET_BITS=64 -Wno-psabi")
# Away from the panel executable's address.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,-Ttext-segment=0x20000000 -Wl,--no-wchar-size-warning")
