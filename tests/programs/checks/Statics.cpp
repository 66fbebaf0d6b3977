// Statics: made in the order of need, once whatever threads ask, destroyed in reverse at exit.
#include "tests/programs/checks/Statics.h"

#include "tests/programs/checks/Check.h"
#include "tests/programs/checks/Team.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <stdexcept>

namespace {

// At file level, it uses a static of another file whose own constructor may not have run.
struct AtFileLevel {
    AtFileLevel() {
        checks::diary().note("file level made");
    }
    ~AtFileLevel() {
        checks::diary().note("file level gone");
    }
} atFileLevel;

std::atomic<int> made = 0;

struct Shared {
    Shared() : number(++made) {
        for (int turn = 0; turn < 2000000; ++turn) // long enough for the other threads to ask
            work = work + turn;
    }
    int number;
    volatile unsigned work = 0;
};

const Shared& shared() {
    static const Shared instance;
    return instance;
}

// While it is made, another thread uses a static that is ready, and the platform's time passes.
struct Waiting {
    Waiting() {
        checks::onThreads(1, [](unsigned) { CHECK(shared().number == 1); });
        Sleep(50);
        ready = true;
    }
    bool ready = false;
};

const Waiting& waiting() {
    static const Waiting instance;
    return instance;
}

struct Hesitant {
    Hesitant() {
        if (++attempts < 3)
            throw std::runtime_error("not yet");
    }
    static inline int attempts = 0;
};

bool makeHesitant() {
    try {
        static const Hesitant instance;
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

} // namespace

void checks::statics() {
    diary().note("program");
    std::atexit([] { diary().note("at exit"); });
    MeetingPoint start(4, 1);
    onThreads(4, [&](unsigned) {
        start.meet(0);
        CHECK(shared().number == 1);
    });
    CHECK(made == 1);
    const DWORD before = GetTickCount();
    onThreads(3, [](unsigned) { CHECK(waiting().ready); });
    CHECK(GetTickCount() - before >= 50 && GetTickCount() - before <= 52); // who waits looks each millisecond
    CHECK(!makeHesitant());
    CHECK(!makeHesitant());
    CHECK(makeHesitant());
    CHECK(makeHesitant());
    CHECK(Hesitant::attempts == 3);
}
