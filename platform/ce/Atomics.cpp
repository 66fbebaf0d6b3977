// The atomic operations that the compiler calls, since ARMv4T has no instructions for them. The compiler itself emits
// single loads and stores. The platform has one processor, so only compiler barriers are needed.
#include "platform/ce/Coredll.h"

#include <ext/atomicity.h>

namespace {

// Replaces a value by `change(value)` and returns the former value.
template<class Change>
LONG modify(volatile void* target, Change change) noexcept {
    auto* word = const_cast<LONG*>(static_cast<volatile LONG*>(target));
    for (;;) {
        const LONG before = *static_cast<volatile LONG*>(target);
        if (runtime_InterlockedCompareExchange(word, change(before), before) == before)
            return before;
    }
}

LONG sum(LONG first, LONG second) noexcept {
    return static_cast<LONG>(static_cast<DWORD>(first) + static_cast<DWORD>(second)); // unsigned, so that it wraps
}

} // namespace

// The names are set by asm labels: the compiler knows these functions and rejects a declaration of its own names.
LONG fetchAdd(volatile void* target, LONG value, int) noexcept asm("__atomic_fetch_add_4");
LONG fetchSub(volatile void* target, LONG value, int) noexcept asm("__atomic_fetch_sub_4");
LONG exchange(volatile void* target, LONG value, int) noexcept asm("__atomic_exchange_4");
bool compareExchange(volatile void* target, void* expected, LONG value, int, int) noexcept
    asm("__atomic_compare_exchange_4");
void synchronise() noexcept asm("__sync_synchronize");

LONG fetchAdd(volatile void* target, LONG value, int) noexcept {
    return modify(target, [value](LONG before) { return sum(before, value); });
}

LONG fetchSub(volatile void* target, LONG value, int) noexcept {
    return modify(target, [value](LONG before) { return sum(before, -value); });
}

LONG exchange(volatile void* target, LONG value, int) noexcept {
    return modify(target, [value](LONG) { return value; });
}

bool compareExchange(volatile void* target, void* expected, LONG value, int, int) noexcept {
    auto* word = const_cast<LONG*>(static_cast<volatile LONG*>(target));
    auto* wanted = static_cast<LONG*>(expected);
    const LONG before = runtime_InterlockedCompareExchange(word, value, *wanted);
    const bool same = before == *wanted;
    *wanted = before;
    return same;
}

void synchronise() noexcept {}

// The reference counts of shared pointers (include/bits/gthr.h).
namespace __gnu_cxx {

_Atomic_word __exchange_and_add(volatile _Atomic_word* target, int value) noexcept {
    return fetchAdd(target, value, 0);
}

void __atomic_add(volatile _Atomic_word* target, int value) noexcept {
    fetchAdd(target, value, 0);
}

} // namespace __gnu_cxx
