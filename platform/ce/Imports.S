// The import table, made from coredll.inc. It has two blocks for coredll.dll: the imports of the helper and those of its C run
// time. Each function has a thunk. The run time's thunks are called runtime_NAME and use their own slots.
#define IMAGE_BASE 0x10000
#define BY_IMPORTED(name, kind) kind name
#define BY_BY_NAME(name, kind)
#define BY_SIMULATED(name, kind)
#define COREDLL_SURE(name, how) COREDLL(name, how, 0, 0)

    .section .import.directory, "a"
    .global import_directory
import_directory:
    .word program_lookup - IMAGE_BASE, 0, 0, library - IMAGE_BASE, program_slots - IMAGE_BASE
    .word runtime_lookup - IMAGE_BASE, 0, 0, library - IMAGE_BASE, runtime_slots - IMAGE_BASE
    .zero 20
    .global import_directory_size
    .set import_directory_size, . - import_directory
library:
    .asciz "COREDLL.dll"

// Hints and names. Both blocks share a name.
.macro entry name
    .balign 2
    .ifndef name_\name
name_\name:
    .hword 0
    .asciz "\name"
    .endif
.endm
#define COREDLL(name, how, failure, lastError) BY_##how(name, entry)
#define COREDLL_RUN_TIME(name) entry name
#include <coredll.inc>

.macro reference name
    .word name_\name - IMAGE_BASE
.endm
#define COREDLL_SURE(name, how) COREDLL(name, how, 0, 0)

    .balign 4
program_lookup:
#define COREDLL(name, how, failure, lastError) BY_##how(name, reference)
#include <coredll.inc>
    .word 0
runtime_lookup:
#define COREDLL_SURE(name, how)
#define COREDLL(name, how, failure, lastError)
#define COREDLL_RUN_TIME(name) reference name
#include <coredll.inc>
    .word 0

// The slots into which the platform's loader writes the addresses.
.macro slot prefix, name
slot_\prefix\name:
    .word name_\name - IMAGE_BASE
.endm
.macro program_slot name
    slot , \name
.endm
.macro runtime_slot name
    slot runtime_, \name
.endm
#define COREDLL_SURE(name, how) COREDLL(name, how, 0, 0)

    .section .import.addresses, "aw"
    .global address_table
address_table:
program_slots:
#define COREDLL(name, how, failure, lastError) BY_##how(name, program_slot)
#include <coredll.inc>
    .word 0
runtime_slots:
#define COREDLL_SURE(name, how)
#define COREDLL(name, how, failure, lastError)
#define COREDLL_RUN_TIME(name) runtime_slot name
#include <coredll.inc>
    .word 0
    .global address_table_size
    .set address_table_size, . - address_table

// Each thunk has its own section, so that the linker drops unused thunks. check.py reports these.
.macro thunk name
    .section .text.import.\name, "ax", %progbits
    .global \name
    .type \name, %function
\name:
    ldr ip, 1f
    ldr pc, [ip]
1:  .word slot_\name
.endm
.macro runtime_thunk name
    thunk runtime_\name
.endm
#define COREDLL_SURE(name, how) COREDLL(name, how, 0, 0)
#define COREDLL(name, how, failure, lastError) BY_##how(name, thunk)
#define COREDLL_RUN_TIME(name) runtime_thunk name
#include <coredll.inc>
