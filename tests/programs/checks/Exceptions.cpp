// Exceptions of several threads at once: each has its own, through rethrowing, nesting and moving to another thread.
#include "OrvaUtils/Exception.h"
#include "tests/programs/checks/Check.h"
#include "tests/programs/checks/Team.h"

#include <atomic>
#include <exception>
#include <malloc.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr unsigned threads = 4;

class Failure : public OrvaUtils::Exception {
public:
    Failure(unsigned owner, unsigned turn) : thread(owner), round(turn) {}
    unsigned thread;
    unsigned round;
};

struct Unwinding {
    explicit Unwinding(int& target) : seen(target) {}
    ~Unwinding() {
        seen = std::uncaught_exceptions();
        try {
            throw std::runtime_error("inner"); // while the outer one is on its way
        } catch (const std::exception& inner) {
            CHECK(std::string(inner.what()) == "inner");
        }
    }
    int& seen;
};

[[gnu::noinline]] void deep(unsigned depth, unsigned thread, unsigned round) {
    const std::wstring local(depth, L'x'); // something to destroy in each frame
    if (depth == 0)
        throw Failure(thread, round);
    deep(depth - 1, thread, round);
}

void throwAndCatch(unsigned thread, unsigned round) {
    int uncaught = -1;
    std::exception_ptr kept;
    try {
        const Unwinding guard(uncaught);
        deep(5, thread, round);
    } catch (const OrvaUtils::Exception&) {
        try {
            throw;
        } catch (const Failure& failure) {
            CHECK(failure.thread == thread && failure.round == round);
            kept = std::current_exception();
        }
    }
    CHECK(uncaught == 1);
    CHECK(std::uncaught_exceptions() == 0);
    CHECK(std::current_exception() == nullptr);
    try {
        std::rethrow_exception(kept);
    } catch (const Failure& failure) {
        CHECK(failure.thread == thread && failure.round == round);
    }
}

void atFullSpeed() {
    checks::MeetingPoint start(threads, 1);
    checks::onThreads(threads, [&](unsigned thread) {
        start.meet(0);
        for (unsigned round = 0; round < 1000; ++round)
            throwAndCatch(thread, round);
    });
}

// All threads are in their handlers at the same time, and leave them in another order than they came in.
void heldAtOnce() {
    constexpr unsigned rounds = 50;
    checks::MeetingPoint inside(threads, rounds);
    checks::MeetingPoint nested(threads, rounds);
    checks::onThreads(threads, [&](unsigned thread) {
        for (unsigned round = 0; round < rounds; ++round) {
            try {
                deep(2, thread, round);
            } catch (const Failure& failure) {
                inside.meet(round);
                try {
                    deep(2, thread + 100, round);
                } catch (const Failure& second) {
                    nested.meet(round);
                    CHECK(second.thread == thread + 100 && second.round == round);
                }
                CHECK(failure.thread == thread && failure.round == round);
                try {
                    throw;
                } catch (const Failure& again) {
                    CHECK(&again == &failure);
                }
            }
        }
    });
}

// Thrown on one thread, thrown again on another. One thread at a time holds an exception: what counts its holders is
// not made for more (docs/target.md).
void handedOver() {
    constexpr unsigned rounds = 50;
    std::exception_ptr kept[threads];
    checks::MeetingPoint thrown(threads, rounds);
    checks::MeetingPoint taken(threads, rounds);
    checks::onThreads(threads, [&](unsigned thread) {
        for (unsigned round = 0; round < rounds; ++round) {
            try {
                deep(3, thread, round);
            } catch (...) {
                kept[thread] = std::current_exception();
            }
            thrown.meet(round);
            const unsigned other = (thread + 1) % threads;
            try {
                std::rethrow_exception(std::exchange(kept[other], nullptr));
            } catch (const Failure& failure) {
                CHECK(failure.thread == other && failure.round == round);
            }
            taken.meet(round);
        }
    });
}

[[gnu::noinline]] void throwStandard(unsigned kind) {
    if (kind == 0)
        throw std::out_of_range("range");
    if (kind == 1)
        throw std::bad_alloc();
    if (kind == 2)
        throw 5;
    std::string("abc").at(10); // of the ready-made library
}

// What the handlers of a thread's entry tell apart.
void byType() {
    for (unsigned kind = 0; kind < 4; ++kind) {
        unsigned caught = 99;
        try {
            throwStandard(kind);
        } catch (const std::bad_alloc&) {
            caught = 1;
        } catch (const std::exception&) {
            caught = 0;
        } catch (...) {
            caught = 2;
        }
        CHECK(caught == (kind == 3 ? 0 : kind));
    }
}

// What shared pointers count their owners with, and atomics.
void counts() {
    constexpr unsigned turns = 20000;
    std::atomic<unsigned> sum = 0;
    std::atomic<unsigned> swaps = 0;
    const auto shared = std::make_shared<int>(5);
    checks::MeetingPoint start(threads, 1);
    checks::onThreads(threads, [&](unsigned) {
        start.meet(0);
        for (unsigned turn = 0; turn < turns; ++turn) {
            const std::shared_ptr<int> copy = shared;
            sum += 3;
            for (unsigned before = swaps; !swaps.compare_exchange_weak(before, before + 1);)
                ;
        }
    });
    CHECK(shared.use_count() == 1);
    CHECK(sum == 3 * turns * threads);
    CHECK(swaps == turns * threads);
}

// A thread leaves nothing behind: the helper makes threads for years.
void nothingStays() {
    const auto once = [] { checks::onThreads(threads, [](unsigned) { byType(); }); };
    once();
    const auto before = mallinfo().uordblks;
    for (unsigned turn = 0; turn < 10; ++turn)
        once();
    CHECK(mallinfo().uordblks == before);
}

DWORD WINAPI throwing(LPVOID) {
    throw Failure(0, 0);
}

} // namespace

void checks::exceptions() {
    onThreads(threads, [](unsigned) { byType(); });
    atFullSpeed();
    heldAtOnce();
    handedOver();
    counts();
    nothingStays();
}

void checks::escapeFromMain() {
    throw Failure(0, 0);
}

void checks::escapeFromThread() {
    const HANDLE thread = CreateThread(nullptr, 0, throwing, nullptr, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
}
