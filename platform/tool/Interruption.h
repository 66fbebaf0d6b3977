// Ctrl-C while a command waits for the panel.
#pragma once

namespace tool {

// From now on a signal that ends the command takes it out of the panel first: a stepped panel's time moves while a
// command waits, and must not go on to move for one that is gone.
void endDriverWhenInterrupted();

} // namespace tool
