#include "platform/tool/loader/Callbacks.h"

#include <cstdio>
#include <cstdlib>
#include <pthread.h>

extern "C" {
void* loader_functions[64];
extern const struct LoaderEntry { unsigned instructions[2]; } loader_entries[];
}

// Entry number N calls loader_functions[N] with the same four arguments. It misaligns the stack to 4 bytes first.
asm(R"(
    .text
    .balign 4
    .global loader_entries
loader_entries:
    .set number, 0
    .rept 64
    mov ip, #number
    b loader_misalign
    .set number, number + 1
    .endr
loader_misalign:
    push {r4, lr}
    mov r4, sp
    bic sp, sp, #7
    sub sp, sp, #4
    ldr lr, 1f
    ldr ip, [lr, ip, lsl #2]
    blx ip
    mov sp, r4
    pop {r4, pc}
1:  .word loader_functions
)");

namespace loader {

void* entryOnPlatformStack(void* function) noexcept {
    static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
    pthread_mutex_lock(&lock);
    unsigned index = 0;
    for (void* const known : loader_functions) {
        if (known == function || !known)
            break;
        ++index;
    }
    if (index == sizeof loader_functions / sizeof *loader_functions) {
        std::fputs("The loader has no room for another function that the platform calls.\n", stderr);
        std::abort();
    }
    loader_functions[index] = function;
    pthread_mutex_unlock(&lock);
    return const_cast<LoaderEntry*>(loader_entries + index);
}

} // namespace loader
