// The header of the PE file. The linked image is the file itself: an offset in the file is an offset in memory, so both
// alignments are one page. image.ld defines the sizes and addresses.
#define IMAGE_BASE 0x10000
#define PAGE 0x1000

    .section .header, "a"

    .ascii "MZ"
    .zero 0x3A
    .word 0x40 // offset of the PE signature

    .ascii "PE\0\0"
    .hword 0x01C0 // ARM
    .hword 3 // sections
    .word 0 // no time stamp: the same sources make the same file
    .word 0, 0 // no symbols
    .hword 0xE0 // optional header
    .hword 0x010F // fixed address, executable, no line numbers, no symbols, 32 bits

    .hword 0x010B // PE32
    .byte 1, 0
    .word code_size
    .word initialised_size
    .word bss_size
    .word start - IMAGE_BASE
    .word code_start - IMAGE_BASE
    .word constants_start - IMAGE_BASE
    .word IMAGE_BASE
    .word PAGE // in memory
    .word PAGE // in the file
    .hword 5, 0 // of the system
    .hword 1, 0 // of the program
    .hword 5, 0 // of the subsystem
    .word 0
    .word image_size
    .word PAGE // this header
    .word 0 // no checksum
    .hword 9 // the panel's graphical subsystem
    .hword 0
    .word 0x10000, 0x1000 // main thread's stack: reserved, committed
    .word 0x100000, 0x1000 // the platform's own heap: reserved, committed
    .word 0
    .word 16 // directories
    .word 0, 0
    .word import_directory - IMAGE_BASE, import_directory_size
    .rept 10
    .word 0, 0
    .endr
    .word address_table - IMAGE_BASE, address_table_size
    .rept 3
    .word 0, 0
    .endr

.macro section name, start, memory, file, flags
1:  .ascii "\name"
    .zero 8 - (. - 1b)
    .word \memory
    .word \start - IMAGE_BASE
    .word \file
    .word \start - IMAGE_BASE
    .word 0, 0
    .hword 0, 0
    .word \flags
.endm

    section .text, code_start, code_size, code_size, 0x60000020
    section .rdata, constants_start, constants_size, constants_size, 0x40000040
    section .data, data_start, data_size, data_file_size, 0xC0000040
