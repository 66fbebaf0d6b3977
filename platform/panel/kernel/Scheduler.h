// The scheduler of the simulated panel: lets threads wait, releases them, and moves stepped time.
//
// All functions except deliverWakes need the kernel's lock.
//
// A thread is released in two steps. `release` marks it as running in the tables, so that stepped time cannot pass it
// by. The thread still sleeps on its futex then. `deliverWakes` wakes it when the call that released it has returned.
// The line of a call therefore precedes, in the trace, the lines of the calls that it has caused.
#pragma once

#include "platform/panel/kernel/Image.h"

namespace panel::scheduler {

// Returns the record of a thread.
ThreadRecord& at(Image& image, Slot thread);

// Ends the wait of a thread. `result` becomes the result of its wait.
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
// or WAIT_ABANDONED for a mutex whose last owner ended with it.
std::uint32_t take(Image& image, Slot object, Slot thread);
// Releases the threads that wait for the object while the object stays ready, in the order of their waits.
void serve(Image& image, Slot object);

// Marks a thread as running or as waiting and updates the counts of the stepped clock.
void startsRunning(Image& image, Slot thread);
void stopsRunning(Image& image, Slot thread);
// Moves stepped time to the nearest deadline and releases the threads with that deadline, as long as three conditions
// hold: all threads of programs wait, at least one driver waits, and at least one thread has a deadline.
// Does nothing in flowing mode.
void step(Image& image);
// Releases every thread whose deadline has passed.
void releaseDue(Image& image);

// Removes a thread from the tables. Its mutexes become abandoned, and the threads that wait for its end are released.
void endThread(Image& image, Slot thread);

} // namespace panel::scheduler
