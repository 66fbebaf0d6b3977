// Handles Ctrl-C while a command waits for the panel.
#pragma once

namespace tool {

// From now on a signal that ends the command (SIGINT, SIGTERM, SIGHUP, SIGPIPE) first removes the driver from the
// panel: stepped time moves while a driver waits, and must not go on for a command that has ended. The exit code is 128
// plus the signal's number. Call it once, before other threads exist.
void endDriverWhenInterrupted();

} // namespace tool
