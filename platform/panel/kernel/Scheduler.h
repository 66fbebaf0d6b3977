// The scheduler of the simulated panel: it ends the waits of threads and advances the stepped clock (docs/panel.md,
// "Time").
//
// The caller of each function must hold the kernel's lock (Lock.h). The only exception is deliverWakes.
//
// A waiting thread is woken in two steps. `release` marks the thread as running in the tables, so that stepped time
// does not advance any more, but the thread still sleeps on its futex. `deliverWakes` wakes the thread's futex. The
// gate calls it at the end of the platform call, after the call's line was written to the trace. A call that wakes a
// thread therefore comes before the calls of that thread in the trace.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel::scheduler {

// Returns the record of a thread.
ThreadRecord& at(Image& image, Slot thread);

// Ends the wait of a thread. `result` becomes the result of the wait.
void release(Image& image, Slot thread, std::uint32_t result);
// Wakes the threads that the calling thread has released since its last call of this function. Call it without the
// lock.
void deliverWakes(Image& image);

// Repairs the state after a process was killed inside a call: recounts Image::running and Image::waitingDrivers, and
// wakes the threads that the killed process had released but not woken.
void recover(Image& image);

// Returns whether a wait of this thread for the object would end now.
bool ready(Image& image, Slot object, Slot thread);
// Completes a wait for a ready object: resets an auto-reset event, or makes the thread the owner of a mutex. Returns 0,
// or WAIT_ABANDONED for a mutex whose last owner ended without releasing it.
std::uint32_t take(Image& image, Slot object, Slot thread);
// Releases the threads that wait for the object, one after the other, until the object is not ready any more. The
// thread that began to wait first comes first.
void serve(Image& image, Slot object);

// Mark a thread as running or as waiting, and update Image::running and Image::waitingDrivers.
void startsRunning(Image& image, Slot thread);
void stopsRunning(Image& image, Slot thread);
// Advances the stepped clock to the nearest deadline and releases the threads with that deadline. Does so only if all
// threads of programs wait, at least one driver (a test or a `panel` command) waits, and at least one thread has a
// deadline. Repeats this until a program runs or the driver does not wait any more. Does nothing in flowing mode, in
// which panel time follows the host's clock.
void step(Image& image);
// Releases every thread whose deadline has passed.
void releaseDue(Image& image);

// Removes a thread from the tables. Its mutexes become abandoned, and the threads that wait for its end are released.
void endThread(Image& image, Slot thread);

} // namespace panel::scheduler
