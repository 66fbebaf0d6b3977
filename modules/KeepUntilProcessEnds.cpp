#include "modules/KeepUntilProcessEnds.h"

#include <atomic>
#include <new>

void keepUntilProcessEnds(const void* object) noexcept {
    // A list that is never freed: a leak checker finds the objects through it.
    struct Note {
        const void* kept;
        Note* next;
    };
    static std::atomic<Note*> notes = nullptr;
    // Several threads may add at the same time, so the head of the list is exchanged atomically.
    if (auto* const note = new (std::nothrow) Note{object, notes}) {
        while (!notes.compare_exchange_weak(note->next, note)) {
        }
    }
}
