// The entry point. The platform passes WinMain's four arguments. The stack is aligned to 8 bytes, as the compiler expects; the
// platform guarantees 4 bytes only.
    .section .text.start, "ax", %progbits
    .global start
    .type start, %function
start:
    .fnstart
    .cantunwind
    bic sp, sp, #7
    bl runProgram
    .fnend

// Returns the calling thread's id: a word of the kernel's data page, which every process can read. On the simulated panel the
// read faults, and the loader emulates it. The loader expects exactly this load of r0 through r0.
    .section .text.GetCurrentThreadId, "ax", %progbits
    .global GetCurrentThreadId
    .type GetCurrentThreadId, %function
GetCurrentThreadId:
    ldr r0, 1f
    ldr r0, [r0]
    bx lr
1:  .word 0xFFFFC808
