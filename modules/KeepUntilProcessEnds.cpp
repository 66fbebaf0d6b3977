#include "modules/KeepUntilProcessEnds.h"

#include <atomic>
#include <new>

void keepUntilProcessEnds(const void* object) noexcept {
    struct Note {
        const void* kept;
        Note* next;
    };
    static std::atomic<Note*> notes = nullptr;
    if (auto* const note = new (std::nothrow) Note{object, notes}) {
        while (!notes.compare_exchange_weak(note->next, note)) {
        }
    }
}
