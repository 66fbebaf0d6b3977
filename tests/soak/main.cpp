// Random lives of a panel, each in a process of its own. A finding is shortened: first to the shortest prefix of the
// steps that still fails, then by leaving out steps that are not needed.
#include "tests/soak/Life.h"
#include "tests/soak/Random.h"
#include "tests/soak/Steps.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <csignal>
#include <numeric>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr std::time_t patience = 180; // real s for a step
constexpr std::time_t longestShortening = 300; // s

using Numbers = std::vector<std::uint32_t>; // of steps, from 1

volatile std::sig_atomic_t interrupted = 0;

struct Outcome {
    bool failed = false;
    std::size_t steps = 0; // taken
    std::string said; // a line for each step, and the finding
};

int live(std::uint64_t seed, const Numbers& numbers) {
    try {
        constexpr std::uint32_t ticks[] = {0, 0, 0xFFFE0000, 0x7FFFFFF0};
        auto life = std::make_unique<Life>(Random(seed).of(ticks)).release(); // a finding leaves its panel behind
        for (const std::uint32_t number : numbers) {
            Step step = stepOf(seed, number);
            std::replace(step.text.begin(), step.text.end(), '\n', ' ');
            std::printf("%3u  %s\n", number, step.text.c_str());
            life->take(step.take);
        }
        std::printf("     clean boot\n");
        life->take([](Life& each) { each.bootCleanly(); });
        delete life;
        return testing::UnitTest::GetInstance()->Failed();
    } catch (const std::exception& error) {
        std::printf("FINDING: %s\n", error.what());
        return 1;
    }
}

Outcome outcome(std::uint64_t seed, const Numbers& numbers, const fs::path& folder) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path said = folder / "steps.txt";
    std::fflush(stdout); // or the process writes it once more
    const pid_t process = fork();
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setenv("TMPDIR", folder.c_str(), 1);
        if (!std::freopen(said.c_str(), "w", stdout))
            std::_Exit(2);
        setvbuf(stdout, nullptr, _IOLBF, 0);
        const int code = live(seed, numbers);
        std::fflush(stdout);
        std::_Exit(code);
    }
    int status = 0;
    std::uintmax_t size = 0;
    std::time_t since = std::time(nullptr);
    bool hangs = false;
    while (process > 0 && waitpid(process, &status, WNOHANG) == 0) {
        usleep(2000);
        if (const std::uintmax_t now = fs::exists(said) ? fs::file_size(said) : 0; now != size) {
            since = std::time(nullptr);
            size = now;
        }
        hangs = std::time(nullptr) - since > patience;
        if (hangs || interrupted)
            kill(process, SIGKILL);
    }
    Outcome result{!interrupted && status != 0, 0, readText(said)};
    if (result.failed && WIFSIGNALED(status))
        result.said += hangs ? "FINDING: the step does not come to an end\n" : "FINDING: the life has crashed\n";
    writeText(said, result.said);
    const Lines lines = linesOf(result.said);
    const auto isStep = [](const std::string& line) { return std::isdigit(line[line.find_first_not_of(' ')]); };
    result.steps = static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), isStep));
    return result;
}

// Of a life that fails with these steps. Each trial is a life of its own; its threads may take other turns.
Outcome shortened(std::uint64_t seed, Numbers& numbers, Outcome failure, const fs::path& folder) {
    const std::time_t latest = std::time(nullptr) + longestShortening;
    const fs::path trial = folder.string() + "-trial";
    const auto stillFails = [&](const Numbers& fewer) {
        Outcome found;
        if (!interrupted && std::time(nullptr) < latest)
            found = outcome(seed, fewer, trial);
        if (!found.failed)
            return false;
        numbers = fewer;
        failure = found;
        fs::remove_all(folder);
        fs::rename(trial, folder);
        return true;
    };
    numbers.resize(std::min(failure.steps, numbers.size()));
    const Numbers all = numbers;
    for (std::size_t passing = 0, failing = all.size(); passing < failing;) {
        const std::size_t middle = (passing + failing) / 2;
        (stillFails({all.begin(), all.begin() + static_cast<std::ptrdiff_t>(middle)}) ? failing : passing) = middle;
        passing += failing != middle;
    }
    for (std::size_t size = numbers.size() / 2; size > 0; size /= 2)
        for (std::size_t begin = numbers.size(); begin > 0;) {
            begin -= std::min(size, begin);
            const auto first = numbers.begin() + static_cast<std::ptrdiff_t>(begin);
            Numbers fewer(numbers.begin(), first);
            fewer.insert(fewer.end(), first + static_cast<std::ptrdiff_t>(std::min(size, numbers.size() - begin)),
                         numbers.end());
            stillFails(fewer);
        }
    fs::remove_all(trial);
    return failure;
}

} // namespace

int main(int count, char** words) {
    std::time_t seconds = 60;
    auto seed = static_cast<std::uint64_t>(std::time(nullptr));
    std::uint64_t lives = 1000000000;
    std::uint32_t length = 60;
    Numbers only;
    fs::path keep = "build/soak";
    CLI::App app("Lives a panel's random lives with the helper, and checks after each step what must hold.\n"
                 "PANEL_HELPER in the environment names another helper, such as build/ce/TarvexHelper.exe.\n"
                 "The exit code is 1 if there are findings.");
    app.add_option("SECONDS", seconds, "ends the search; a finding is still shortened")->capture_default_str();
    app.add_option("--seed", seed, "of the first life; the next life has the next number (default: the time)");
    app.add_option("--lives", lives, "ends the search");
    app.add_option("--steps", length, "of a life")->capture_default_str();
    app.add_option("--only", only, "the numbers of steps: the others are left out")->delimiter(',');
    app.add_option("--keep", keep, "folder for findings: steps, and the panel with log and trace")
        ->capture_default_str();
    CLI11_PARSE(app, count, words);

    Numbers numbers(length);
    std::iota(numbers.begin(), numbers.end(), 1U);
    if (!only.empty())
        numbers = only;
    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, [](int) { interrupted = 1; });
    setenv("PANEL_PATIENCE", "0", 1);
    setenv("MALLOC_ARENA_MAX", "1", 1); // or the pages in use depend on which thread allocates first
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); // huge pages would count what nobody has used
    const fs::path folder = fs::absolute(keep) / ("life-" + std::to_string(getpid()));
    const std::time_t begin = std::time(nullptr);
    std::time_t told = begin;
    std::size_t steps = 0;
    unsigned findings = 0;
    std::uint64_t lived = 0;
    const auto tell = [&] {
        told = std::time(nullptr);
        std::cout << lived << " lives, " << steps << " steps, " << told - begin << " s, " << findings << " findings"
                  << std::endl;
    };
    for (; lived < lives && std::time(nullptr) - begin < seconds; ++seed) {
        Outcome found = outcome(seed, numbers, folder);
        if (interrupted)
            break;
        ++lived;
        steps += found.steps;
        if (found.failed) {
            ++findings;
            std::cout << "seed " << seed << " fails after " << found.steps << " steps\n"
                      << found.said.substr(std::min(found.said.find("FINDING"), found.said.size())) << "is shortened\n";
            Numbers few = numbers;
            found = shortened(seed, few, found, folder);
            const fs::path kept = fs::absolute(keep) / std::to_string(seed);
            fs::remove_all(kept);
            fs::rename(folder, kept);
            std::cout << found.said << "again: script/soak --lives 1 --seed " << seed << " --only ";
            for (const std::uint32_t number : few)
                std::cout << (number == few.front() ? "" : ",") << number;
            std::cout << "\nthe panel: " << kept.string() << '\n';
        }
        if (found.failed || std::time(nullptr) - told >= 10)
            tell();
    }
    tell();
    fs::remove_all(folder);
    return findings || interrupted ? 1 : 0;
}
