// What the platform is given instead of the program's own functions (Callbacks.cpp): each entry calls the function in
// its slot with the same four arguments, on a stack that is aligned to 8 bytes. An exception does not pass.
#define ENTRIES 32

    .section .text.callbacks, "ax", %progbits
    .global callback_entries
    .type callback_entries, %function
callback_entries:
    .fnstart
    .cantunwind
    .set number, 0
    .rept ENTRIES
    mov ip, #number
    b align
    .set number, number + 1
    .endr
align:
    push {r4, lr}
    mov r4, sp
    bic sp, sp, #7
    ldr lr, 1f
    ldr ip, [lr, ip, lsl #2]
    mov lr, pc
    bx ip
    mov sp, r4
    pop {r4, lr}
    bx lr
1:  .word callback_functions
    .fnend

    .section .bss.callbacks, "aw", %nobits
    .balign 4
    .global callback_functions
callback_functions:
    .zero 4 * ENTRIES
    .global callback_functions_end
callback_functions_end:
