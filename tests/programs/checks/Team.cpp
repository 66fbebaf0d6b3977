#include "tests/programs/checks/Team.h"

#include "tests/programs/checks/Check.h"

namespace checks {

namespace {

struct Member {
    const std::function<void(unsigned)>* body;
    unsigned number;
    HANDLE thread;
};

DWORD WINAPI runMember(LPVOID argument) {
    const auto* member = static_cast<const Member*>(argument);
    try {
        (*member->body)(member->number);
    } catch (...) {
        CHECK(!"an exception came to a thread's entry");
    }
    return 0;
}

} // namespace

void onThreads(unsigned count, const std::function<void(unsigned)>& body) {
    std::vector<Member> members(count);
    for (unsigned number = 0; number < count; ++number) {
        members[number] = {&body, number, nullptr};
        members[number].thread = CreateThread(nullptr, 0, runMember, &members[number], 0, nullptr);
        CHECK(members[number].thread != nullptr);
    }
    for (const Member& member : members) {
        CHECK(WaitForSingleObject(member.thread, INFINITE) == WAIT_OBJECT_0);
        CloseHandle(member.thread);
    }
}

MeetingPoint::MeetingPoint(unsigned threads, unsigned numberOfRounds)
    : members(threads), count(numberOfRounds), rounds(new Round[numberOfRounds]) {
    for (unsigned round = 0; round < count; ++round)
        rounds[round].complete = CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

MeetingPoint::~MeetingPoint() {
    for (unsigned round = 0; round < count; ++round)
        CloseHandle(rounds[round].complete);
}

void MeetingPoint::meet(unsigned round) {
    if (++rounds[round].arrived == members)
        EventModify(rounds[round].complete, EVENT_SET);
    else
        WaitForSingleObject(rounds[round].complete, INFINITE);
}

} // namespace checks
