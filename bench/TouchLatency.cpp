// Measures the time from a touch to the buzzer's request on an idle panel with a flowing clock. The time starts when
// another process than the helper's makes the touch. It ends when the request's line in devices/requests wakes a second
// thread, which has slept since before the touch. As a lower bound it also measures how long two threads of one process
// take to pass an eventfd. Each measurement is repeated 1,000 times.
//
//     build/native/TouchLatency           PANEL_HELPER=FILE names another helper than that of this build
#include "platform/panel/Client.h"
#include "platform/panel/Driver.h"
#include "platform/panel/Operator.h"
#include "platform/panel/Panel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <future>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int touches = 1000;
constexpr std::uint32_t limit = 60000; // time-out in panel ms
constexpr int patience = 10000; // time-out in real ms
constexpr auto pause = std::chrono::milliseconds(2); // time in which all threads become idle again

constexpr const char* helper = "\\MMCMemory\\Tarvex\\TarvexHelper.exe";
constexpr const char* settings =
    "<TouchBuzzer><Settings><Enabled>1</Enabled><Frequency>3400</Frequency></Settings></TouchBuzzer>";

class Samples {
public:
    void add(benchmark::State& state, Clock::duration latency) {
        const double seconds = std::chrono::duration<double>(latency).count();
        state.SetIterationTime(seconds);
        microseconds.push_back(seconds * 1e6);
    }

    void report(benchmark::State& state) {
        if (microseconds.empty())
            return;
        std::sort(microseconds.begin(), microseconds.end());
        const std::size_t count = microseconds.size();
        state.counters["median_us"] = microseconds[count / 2];
        state.counters["p99_us"] = microseconds[count * 99 / 100];
    }

private:
    std::vector<double> microseconds;
};

// A panel with an installed helper whose touch buzzer is on.
class IdlePanel {
public:
    IdlePanel() : simulated(panel::Panel::create(freshDirectory(), {})) {
        const char* named = std::getenv("PANEL_HELPER");
        const fs::path program = simulated.hostPath(helper);
        fs::create_directories(program.parent_path());
        fs::copy_file(named ? named : PANEL_PROGRAMS "/TarvexHelper", program);
        std::ofstream(program.parent_path() / "TouchBuzzerConfig.xml") << settings;
        simulated.boot({});
        attached = std::make_unique<panel::Driver>(simulated);
        attached->start(helper);
        if (!attached->waitUntil([] { return panel::findWindow("ORVATarvexHelper") != 0; }, limit))
            throw std::runtime_error("the helper does not get to its message loop");
        if (inotify_add_watch(changes, (simulated.directory() / "devices").c_str(), IN_MODIFY) < 0)
            throw std::runtime_error("cannot watch the panel's record");
    }

    ~IdlePanel() {
        close(changes);
        attached.reset();
        simulated.off();
        fs::remove_all(simulated.directory());
    }

    IdlePanel(const IdlePanel&) = delete;
    IdlePanel& operator=(const IdlePanel&) = delete;

    // Returns the time from a touch to its request, after a pause.
    Clock::duration touch() {
        auto arrival = std::async(std::launch::async, [this, before = recorded()] { return growthFrom(before); });
        std::this_thread::sleep_for(pause);
        const auto begin = Clock::now();
        panel::touch({panel::Touch::Kind::press});
        return arrival.get() - begin;
    }

private:
    static fs::path freshDirectory() {
        std::string name = (fs::temp_directory_path() / "panel-XXXXXX").string();
        if (!mkdtemp(name.data()))
            throw std::runtime_error("cannot make a directory " + name);
        return name;
    }

    // Returns the time at which the file has become longer than this.
    Clock::time_point growthFrom(off_t before) const {
        char events[4096];
        for (pollfd ready{changes, POLLIN, 0}; poll(&ready, 1, patience) == 1;) {
            if (read(changes, events, sizeof events) <= 0)
                break;
            if (recorded() > before)
                return Clock::now();
        }
        throw std::runtime_error("a touch without a click");
    }

    off_t recorded() const {
        struct stat status {};
        return stat(record.c_str(), &status) == 0 ? status.st_size : 0;
    }

    panel::Panel simulated;
    std::unique_ptr<panel::Driver> attached;
    const std::string record = simulated.directory() / "devices/requests";
    const int changes = inotify_init1(IN_CLOEXEC);
};

void touchToRequest(benchmark::State& state) {
    try {
        IdlePanel panel;
        Samples samples;
        panel.touch(); // the first touch still loads code
        for ([[maybe_unused]] auto iteration : state) {
            samples.add(state, panel.touch());
        }
        samples.report(state);
    } catch (const std::exception& failure) {
        state.SkipWithError(failure.what());
    }
}

void twoThreadsAndAnEventfd(benchmark::State& state) {
    const int there = eventfd(0, 0);
    const int back = eventfd(0, 0);
    Clock::time_point arrived;
    std::uint64_t number = 0;
    std::thread other([&] {
        for (std::uint64_t word = 0; read(there, &word, sizeof word) == sizeof word && word == 1;) {
            arrived = Clock::now();
            if (write(back, &word, sizeof word) != sizeof word)
                return;
        }
    });
    Samples samples;
    const std::uint64_t one = 1;
    for ([[maybe_unused]] auto iteration : state) {
        std::this_thread::sleep_for(pause);
        const auto begin = Clock::now();
        if (write(there, &one, sizeof one) != sizeof one || read(back, &number, sizeof number) != sizeof number) {
            state.SkipWithError("an eventfd fails");
            break;
        }
        samples.add(state, arrived - begin);
    }
    samples.report(state);
    const std::uint64_t end = 2;
    if (write(there, &end, sizeof end) == sizeof end)
        other.join();
    close(there);
    close(back);
}

} // namespace

BENCHMARK(touchToRequest)->Iterations(touches)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(twoThreadsAndAnEventfd)->Iterations(touches)->UseManualTime()->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
