// Handles Ctrl-C and other signals that end a command.
#pragma once

#include <sys/types.h>

namespace tool {

// From now on a signal that ends the command (SIGINT, SIGTERM, SIGHUP, SIGPIPE) first removes the driver from the
// panel: stepped time moves while a driver waits, and must not go on for a command that has ended. The exit code is 128
// plus the signal's number. Call it once, before other threads exist.
void endDriverWhenInterrupted();

// Lets a command remove what it has made so far: while such an object lives, a signal does not end the command. It ends
// the child process that `wait` waits for; `wait` then throws. The object's destructor ends the command. A second
// signal ends the command at once.
class OrderlyEnd {
public:
    OrderlyEnd();
    ~OrderlyEnd();
    OrderlyEnd(const OrderlyEnd&) = delete;
    OrderlyEnd& operator=(const OrderlyEnd&) = delete;

    // Waits for the end of a child process, and returns its status (waitpid). Throws std::runtime_error if a signal has
    // come. Only one thread may wait at a time.
    static int wait(pid_t process);
    // Throws std::runtime_error if a signal has come. Call it before the step that cannot be undone.
    static void check();
};

} // namespace tool
