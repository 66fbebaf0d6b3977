// Where the platform enters the program, with WinMain's four arguments. The stack is aligned as the compiler expects it:
// the platform promises less.
    .section .text.start, "ax", %progbits
    .global start
    .type start, %function
start:
    .fnstart
    .cantunwind
    bic sp, sp, #7
    bl runProgram
    .fnend

// The calling thread's id: a word of the page of kernel data that every process can read. The simulated panel serves the
// read when it faults; one load of r0 through r0 is all that it expects there.
    .section .text.GetCurrentThreadId, "ax", %progbits
    .global GetCurrentThreadId
    .type GetCurrentThreadId, %function
GetCurrentThreadId:
    ldr r0, 1f
    ldr r0, [r0]
    bx lr
1:  .word 0xFFFFC808
