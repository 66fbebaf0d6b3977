// Measures the round trip of a message to the helper's window. No module handles this message, so the helper logs
// nothing. For comparison two processes pass a word to and fro on a pair of eventfds.
#include "bench/MeasuredPanel.h"

#include <benchmark/benchmark.h>

#include <csignal>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void messageRoundTrip(benchmark::State& state) {
    MeasuredPanel panel;
    const std::uint32_t window = panel.startHelper();
    for ([[maybe_unused]] auto iteration : state)
        if (panel::sendMessage(window, "0x400", 0, 0) != 0)
            state.SkipWithError("no answer");
}

void messageRoundTripWithEventfds(benchmark::State& state) {
    const int there = eventfd(0, EFD_CLOEXEC);
    const int back = eventfd(0, EFD_CLOEXEC);
    std::uint64_t word = 1;
    const auto hand = [&word](int from, int to) {
        return read(from, &word, sizeof word) == sizeof word && write(to, &word, sizeof word) == sizeof word;
    };
    const pid_t other = fork();
    if (other == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        while (hand(there, back)) {
        }
        _exit(1);
    }
    bool works = other > 0 && write(there, &word, sizeof word) == sizeof word;
    for ([[maybe_unused]] auto iteration : state)
        works = works && hand(back, there);
    if (!works)
        state.SkipWithError("an eventfd fails");
    if (other > 0 && kill(other, SIGKILL) == 0)
        waitpid(other, nullptr, 0);
    close(there);
    close(back);
}

} // namespace

BENCHMARK(messageRoundTrip)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(messageRoundTripWithEventfds)->UseRealTime()->Unit(benchmark::kMicrosecond);
