// Random lives of a panel, each in a process of its own. Of a life with a finding the shortest prefix of the steps that
// leads to the same finding is kept.
#include "tests/soak/Life.h"
#include "tests/soak/Random.h"
#include "tests/soak/Steps.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr unsigned patience = 180; // real s for a step
constexpr std::time_t longestShortening = 300; // s
constexpr unsigned mostFindings = 10; // end the search
constexpr int impossible = 2; // exit code of a life that cannot begin
constexpr std::uintmax_t leastSpace = 64 << 20; // bytes; with less on the host's disk a finding means nothing

volatile std::sig_atomic_t interrupted = 0;
volatile pid_t living = 0; // the process of the present life

struct Outcome {
    std::string finding; // empty: there is none
    std::uint32_t steps = 0; // taken
    std::size_t faults = 0; // added
    std::size_t hits = 0; // faults that have hit a call
    std::string said; // a line for each step, fault and hit, and the finding
};

int live(std::uint64_t seed, std::uint32_t steps) {
    std::unique_ptr<Life> life;
    try {
        constexpr std::uint32_t ticks[] = {0, 0, 0xFFFE0000, 0x7FFFFFF0};
        constexpr panel::StoragePolicy policies[] = {panel::StoragePolicy::kept, panel::StoragePolicy::closed,
                                                     panel::StoragePolicy::torn};
        Random random(seed);
        const std::uint32_t ticksAtBoot = random.of(ticks);
        life = std::make_unique<Life>(ticksAtBoot, random.of(policies));
        for (std::uint32_t number = 1; number <= steps; ++number) {
            Step step = stepOf(seed, number);
            std::replace(step.text.begin(), step.text.end(), '\n', ' ');
            std::printf("step %u  %s\n", number, step.text.c_str());
            alarm(patience);
            life->take(step.take);
        }
        std::printf("clean boot\n");
        alarm(patience);
        life->take([](Life& each) { each.bootCleanly(); });
        alarm(0);
        life.reset();
        return testing::UnitTest::GetInstance()->Failed();
    } catch (const std::exception& error) {
        const bool begun = life || dynamic_cast<const Finding*>(&error);
        std::printf("FINDING: %s\n", error.what());
        static_cast<void>(life.release()); // a finding leaves its panel behind
        return begun ? 1 : impossible;
    }
}

Outcome outcome(std::uint64_t seed, std::uint32_t steps, const fs::path& folder) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path said = folder / "steps.txt";
    std::fflush(stdout); // or the process writes it once more
    living = fork();
    if (living < 0)
        throw std::runtime_error("no process can be started");
    if (living == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setenv("TMPDIR", folder.c_str(), 1);
        if (!std::freopen(said.c_str(), "w", stdout))
            std::_Exit(impossible);
        setvbuf(stdout, nullptr, _IOLBF, 0);
        const int code = live(seed, steps);
        std::fflush(stdout);
        std::_Exit(code);
    }
    int status = 0;
    while (waitpid(living, &status, 0) < 0)
        ;
    living = 0;
    Outcome result;
    if (interrupted)
        return result;
    result.said = readText(said);
    if (WIFSIGNALED(status))
        result.said += WTERMSIG(status) == SIGALRM ? "FINDING: the step does not come to an end\n"
                                                   : "FINDING: the life has crashed\n";
    else if (status != 0 && result.said.find("FINDING") == std::string::npos)
        result.said += "FINDING: a failure above\n";
    writeText(said, result.said);
    if (status != 0)
        result.finding = result.said.substr(result.said.find("FINDING"));
    for (const std::string& line : linesOf(result.said)) {
        result.steps += line.starts_with("step ");
        result.faults += line.starts_with("  fault ");
        result.hits += line.starts_with("  hit ");
    }
    if (!result.finding.empty() && (WEXITSTATUS(status) == impossible || fs::space(folder).available < leastSpace)) {
        fs::remove_all(folder);
        throw std::runtime_error("no life is possible here: " + result.finding);
    }
    return result;
}

// Of a life that fails with so few steps. Each trial is a life of its own; its threads may take other turns.
Outcome shortened(std::uint64_t seed, Outcome failure, const fs::path& folder) {
    const std::time_t latest = std::time(nullptr) + longestShortening;
    const fs::path trial = folder.string() + "-trial";
    const auto kindOf = [](const Outcome& each) {
        return each.finding.substr(0, each.finding.find_first_of("0123456789"));
    };
    for (std::uint32_t passing = 0; passing < failure.steps && !interrupted && std::time(nullptr) < latest;) {
        const std::uint32_t middle = (passing + failure.steps) / 2;
        Outcome found = outcome(seed, middle, trial);
        if (found.finding.empty() || kindOf(found) != kindOf(failure)) {
            passing = middle + 1;
            continue;
        }
        failure = found;
        failure.steps = std::min(found.steps, middle);
        fs::remove_all(folder);
        fs::rename(trial, folder);
    }
    fs::remove_all(trial);
    return failure;
}

int search(int count, char** words) {
    std::time_t seconds = 60;
    auto seed = static_cast<std::uint64_t>(std::time(nullptr));
    std::uint64_t lives = 1000000000;
    std::uint32_t length = 60;
    fs::path keep = "build/soak";
    CLI::App app("Lives a panel's random lives with the helper, and checks after each step what must hold.\n"
                 "PANEL_HELPER in the environment names another helper, such as build/ce/TarvexHelper.exe.\n"
                 "The exit code is 1 if there are findings, and 2 if no life is possible.");
    app.add_option("SECONDS", seconds, "ends the search; a finding is still shortened")
        ->capture_default_str()
        ->check(CLI::Range(1, 1000000000));
    app.add_option("--seed", seed, "of the first life; the next life has the next number (default: the time)");
    app.add_option("--lives", lives, "ends the search")->check(CLI::Range(1, 1000000000));
    app.add_option("--steps", length, "of a life")->capture_default_str();
    app.add_option("--keep", keep, "folder for findings: steps, and the panel with log and trace")
        ->capture_default_str();
    try {
        app.parse(count, words);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) ? impossible : 0;
    }

    for (const int signal : {SIGINT, SIGTERM})
        std::signal(signal, [](int) {
            interrupted = 1;
            if (living > 0)
                kill(living, SIGKILL);
        });
    setenv("PANEL_PATIENCE", "0", 1);
    setenv("MALLOC_ARENA_MAX", "1", 1); // or the pages in use depend on which thread allocates first
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); // huge pages would count what nobody has used
    const fs::path folder = fs::absolute(keep) / ("life-" + std::to_string(getpid()));
    const std::time_t begin = std::time(nullptr);
    std::time_t told = begin;
    Outcome sum;
    unsigned findings = 0;
    std::uint64_t lived = 0;
    const auto tell = [&] {
        told = std::time(nullptr);
        std::cout << lived << " lives, " << sum.steps << " steps, " << sum.hits << " of " << sum.faults
                  << " faults hit, " << told - begin << " s, " << findings << " findings" << std::endl;
    };
    for (; lived < lives && findings < mostFindings && std::time(nullptr) - begin < seconds; ++seed) {
        Outcome found = outcome(seed, length, folder);
        if (interrupted)
            break;
        ++lived;
        sum.steps += found.steps;
        sum.faults += found.faults;
        sum.hits += found.hits;
        if (!found.finding.empty()) {
            ++findings;
            std::cout << "seed " << seed << " fails after " << found.steps << " steps\n"
                      << found.finding << "is shortened\n";
            found = shortened(seed, found, folder);
            const fs::path kept = fs::absolute(keep) / std::to_string(seed);
            fs::remove_all(kept);
            fs::rename(folder, kept);
            std::cout << found.said << "again: script/soak --lives 1 --seed " << seed << " --steps " << found.steps
                      << "\nthe panel: " << kept.string() << '\n';
        }
        if (!found.finding.empty() || std::time(nullptr) - told >= 10)
            tell();
    }
    tell();
    fs::remove_all(folder);
    return findings || interrupted ? 1 : 0;
}

} // namespace

int main(int count, char** words) {
    try {
        return search(count, words);
    } catch (const std::exception& error) {
        std::cerr << "soak: " << error.what() << '\n';
        return impossible;
    }
}
