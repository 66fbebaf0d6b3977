#pragma once

// Configures the log of the process: the two files helper_log0.txt and helper_log1.txt of 102400 bytes in the
// installation directory, and no other output. Creates the directory if it is missing. Call it once, before any other
// thread writes.
void configureLog();
