// Threads of the platform for checks: several that run one function at once, and a point where they meet.
#pragma once

#include <windows.h>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace checks {

// Runs the body on so many threads, each with its number from 0 on; comes back when all have ended.
void onThreads(unsigned count, const std::function<void(unsigned)>& body);

// Nobody leaves `meet` before all have come to it.
class MeetingPoint {
public:
    MeetingPoint(unsigned threads, unsigned rounds);
    ~MeetingPoint();
    MeetingPoint(const MeetingPoint&) = delete;
    MeetingPoint& operator=(const MeetingPoint&) = delete;
    void meet(unsigned round); // each from 0 on, once

private:
    struct Round {
        std::atomic<unsigned> arrived = 0;
        HANDLE complete = nullptr;
    };
    unsigned members;
    unsigned count;
    std::unique_ptr<Round[]> rounds;
};

} // namespace checks
