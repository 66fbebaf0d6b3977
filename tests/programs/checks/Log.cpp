// Several threads write through the log's rotations. The test on the other side reads the files.
#include "tests/programs/checks/Check.h"
#include "tests/programs/checks/Team.h"
#include "tests/support/RotatingLog.h"

void checks::log() {
    Logger log;
    rotating_log::setUp(log, rotating_log::MANY_FILES);
    log.write(L"9/0", LogLevel::Info);
    onThreads(rotating_log::THREADS, [&](unsigned thread) { rotating_log::write(log, thread); });
}

void checks::logOfTwoFiles() {
    Logger log;
    rotating_log::setUp(log, 2);
    onThreads(rotating_log::THREADS, [&](unsigned thread) { rotating_log::write(log, thread, 500); });
}
