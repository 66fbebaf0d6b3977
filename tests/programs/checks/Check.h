// What the panel executable's own test program is made of: groups of checks, one of which its command line names.
#pragma once

#include <string>

namespace checks {

// Counts a failed check and prints it to where the panel keeps a program's output. Any thread.
void report(bool passed, const char* condition, const char* file, int line);
int failures();

void text();
void exceptions();
void statics();
void heap();
void log();
void logOfTwoFiles();
void window();
void stack();
void writeConstant();
void writeCode();

// Let an exception out of the program, a thread's entry or a window procedure; they do not come back.
void escapeFromMain();
void escapeFromThread();
void escapeFromProcedure();

} // namespace checks

#define CHECK(condition) checks::report((condition), #condition, __FILE__, __LINE__)
