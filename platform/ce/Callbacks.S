// The entries that the platform calls instead of the program's callbacks (Callbacks.cpp). Each entry aligns the stack to 8
// bytes and calls the function in its slot with the same four arguments. Exceptions cannot pass (.cantunwind). A thread's
// entry also frees the memory of the thread's exceptions.
#define ENTRIES 32

.macro keep_nothing
.endm
.macro release_exceptions
    push {r0, r1}
    bl releaseExceptions
    pop {r0, r1}
.endm

.macro entries kind, afterwards
    .section .text.\kind\()_entries, "ax", %progbits
    .global \kind\()_entries
    .type \kind\()_entries, %function
\kind\()_entries:
    .fnstart
    .cantunwind
    .set number, 0
    .rept ENTRIES
    mov ip, #number
    b align_\kind
    .set number, number + 1
    .endr
align_\kind:
    push {r4, lr}
    mov r4, sp
    bic sp, sp, #7
    ldr lr, slots_\kind
    ldr ip, [lr, ip, lsl #2]
    mov lr, pc
    bx ip
    \afterwards
    mov sp, r4
    pop {r4, lr}
    bx lr
slots_\kind:
    .word \kind\()_functions
    .fnend

    .section .bss.\kind\()_functions, "aw", %nobits
    .balign 4
    .global \kind\()_functions
\kind\()_functions:
    .zero 4 * ENTRIES
    .global \kind\()_functions_end
\kind\()_functions_end:
.endm

    entries procedure, keep_nothing
    entries thread, release_exceptions
