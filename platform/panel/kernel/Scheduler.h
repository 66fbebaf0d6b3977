// Who runs, who waits, and how waiting threads go on. All functions but deliverWakes want the lock held.
//
// Releasing a thread marks it as running at once, so that stepped time cannot pass it by. It is woken later, when the
// call that released it is done (deliverWakes): thus a call's line stands in the trace before what it caused.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel::scheduler {

ThreadRecord& at(Image& image, Slot thread);

// Ends the wait of a thread: it goes on with this result.
void release(Image& image, Slot thread, std::uint32_t result);
// Wakes what this thread has released.
void deliverWakes(Image& image);

// After a process has died: it may have stopped between a thread's state and the counts that follow from it, or before
// it woke whom it had released.
void recover(Image& image);

// Whether the object ends a wait of this thread now; `take` then takes what waiting takes (an auto-reset event's
// signal, a mutex) and answers 0, or WAIT_ABANDONED.
bool ready(Image& image, Slot object, Slot thread);
std::uint32_t take(Image& image, Slot object, Slot thread);
// Lets the threads that wait for the object have it, first come, first served.
void serve(Image& image, Slot object);

// The counts of the stepped clock.
void startsRunning(Image& image, Slot thread);
void stopsRunning(Image& image, Slot thread);
// Stepped mode: while all threads wait, one of them is a driver, and a deadline exists: time jumps to the nearest
// deadline and releases the threads that waited for it.
void step(Image& image);
// Ends the waits whose deadline has come.
void releaseDue(Image& image);

// Takes a thread out of the tables: what it owned is abandoned, who waits for its end is released.
void endThread(Image& image, Slot thread);

} // namespace panel::scheduler
