// Measures the time from a touch to the buzzer's request on an idle panel. The time starts when another process than
// the helper's makes the touch. It ends when the request's line in devices/requests wakes a second thread, which has
// slept since before the touch. As a lower bound one thread wakes another with an eventfd.
#include "bench/MeasuredPanel.h"
#include "platform/panel/Operator.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <future>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int touches = 250;
constexpr int patience = 10000; // ms
constexpr auto pause = std::chrono::milliseconds(2); // until all are idle again

// Measures the time from an action to its arrival, which `arrival` notices on another thread.
template<class Arrival, class Action>
void measureLatency(benchmark::State& state, Arrival arrival, Action action) {
    std::vector<double> microseconds;
    for ([[maybe_unused]] auto iteration : state) {
        auto arrived = std::async(std::launch::async, arrival);
        std::this_thread::sleep_for(pause);
        const auto begin = Clock::now();
        action();
        const std::chrono::duration<double> latency = arrived.get() - begin;
        state.SetIterationTime(latency.count());
        microseconds.push_back(latency.count() * 1e6);
    }
    std::sort(microseconds.begin(), microseconds.end());
    state.counters["median_us"] = microseconds[microseconds.size() / 2];
    state.counters["p99_us"] = microseconds[microseconds.size() * 99 / 100];
}

void touchToRequest(benchmark::State& state) {
    MeasuredPanel panel;
    panel.writeFile("\\MMCMemory\\Tarvex\\TouchBuzzerConfig.xml",
                    "<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>3400</Frequency></Settings></TouchBuzzer>");
    panel.startHelper();
    const auto touch = [] { panel::touch({panel::Touch::Kind::press}); };
    touch(); // the first one still loads code
    // Waits for the request of the touch and for the request of the eMMC statistics.
    panel.waitUntil([&panel] { return panel.devices().requests().size() == 2; });
    const int record = inotify_init1(IN_CLOEXEC);
    if (inotify_add_watch(record, (panel.directory() / "devices/requests").c_str(), IN_MODIFY) < 0)
        throw std::runtime_error("cannot watch the panel's record");
    const auto clicked = [record] {
        pollfd ready{record, POLLIN, 0};
        char events[4096];
        if (poll(&ready, 1, patience) != 1 || read(record, events, sizeof events) <= 0)
            throw std::runtime_error("a touch without a click");
        return Clock::now();
    };
    measureLatency(state, clicked, touch);
    close(record);
}

void threadToThreadWithEventfd(benchmark::State& state) {
    const int event = eventfd(0, EFD_CLOEXEC);
    const std::uint64_t word = 1;
    const auto woken = [event] {
        std::uint64_t number = 0;
        if (read(event, &number, sizeof number) != sizeof number)
            throw std::runtime_error("an eventfd fails");
        return Clock::now();
    };
    measureLatency(state, woken, [&] { benchmark::DoNotOptimize(write(event, &word, sizeof word)); });
    close(event);
}

} // namespace

BENCHMARK(touchToRequest)->Iterations(touches)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(threadToThreadWithEventfd)->Iterations(touches)->UseManualTime()->Unit(benchmark::kMicrosecond);
