// Random lives of a panel, each in a process of its own. A finding is shortened: the shortest prefix of the steps that
// still fails is searched, and then each step is left out that is not needed.
#include "tests/soak/Life.h"
#include "tests/soak/Random.h"
#include "tests/soak/Steps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <numeric>
#include <sstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr const char* usage =
    "Random lives of a simulated panel with a helper: script/soak [SECONDS] [OPTIONS]\n"
    "SECONDS (default: 60) ends the search; a finding is still shortened. Exit code 1: there are findings.\n"
    "\n"
    "    --seed N        seed of the first life; the next life has the next seed (default: the time)\n"
    "    --lives N       ends after N lives\n"
    "    --steps N       steps of a life (default: 60)\n"
    "    --only 3,7,9    only these steps, to repeat a finding: with --seed N --lives 1\n"
    "    --keep FOLDER   where findings are kept: the steps, the panel with log and trace (default: build/soak)\n"
    "\n"
    "PANEL_HELPER in the environment names the helper: another build's, or the panel executable that script/package\n"
    "builds. Steps of a life depend on its seed alone; how threads take turns does not.\n";

constexpr int patience = 180; // real s for a step
constexpr int longestShortening = 300; // s

using Numbers = std::vector<std::uint32_t>; // of steps, from 1

volatile std::sig_atomic_t interrupted = 0;

struct Options {
    std::time_t seconds = 60;
    std::uint64_t seed = static_cast<std::uint64_t>(std::time(nullptr));
    std::uint64_t lives = ~std::uint64_t{0};
    Numbers steps;
    fs::path keep = "build/soak";
};

struct Outcome {
    bool failed = false;
    std::size_t steps = 0; // taken
    std::string said; // one line a step, and the finding
};

// In a process of its own.
[[noreturn]] void live(std::uint64_t seed, const Numbers& numbers) {
    int code = 1;
    try {
        constexpr std::uint32_t ticks[] = {0, 0, 0xFFFE0000, 0x7FFFFFF0};
        Random random(seed);
        auto* life = new Life(random.of(ticks)); // a finding leaves its panel behind
        for (const std::uint32_t number : numbers) {
            Step step = stepOf(seed, number);
            std::replace(step.text.begin(), step.text.end(), '\n', ' ');
            std::printf("%3u  %s\n", number, step.text.c_str());
            life->take(step.take);
        }
        std::printf("     clean boot\n");
        life->take([](Life& each) { each.bootCleanly(); });
        delete life;
        code = testing::UnitTest::GetInstance()->Failed() ? 1 : 0;
    } catch (const std::exception& error) {
        std::printf("FINDING: %s\n", error.what());
    }
    std::fflush(stdout);
    std::_Exit(code);
}

Outcome outcome(std::uint64_t seed, const Numbers& numbers, const fs::path& folder) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    const fs::path said = folder / "steps.txt";
    const pid_t process = fork();
    if (process < 0)
        throw std::runtime_error("cannot start a process");
    if (process == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        setenv("TMPDIR", folder.c_str(), 1);
        if (!std::freopen(said.c_str(), "w", stdout))
            std::_Exit(2);
        setvbuf(stdout, nullptr, _IOLBF, 0);
        live(seed, numbers);
    }
    int status = 0;
    std::uintmax_t size = 0;
    std::time_t since = std::time(nullptr);
    bool hangs = false;
    while (waitpid(process, &status, WNOHANG) == 0) {
        usleep(2000);
        std::error_code none;
        if (const std::uintmax_t now = fs::file_size(said, none); now != size)
            since = std::time(nullptr), size = now;
        hangs = hangs || std::time(nullptr) - since > patience;
        if (hangs || interrupted)
            kill(process, SIGKILL);
    }
    Outcome result;
    result.failed = !interrupted && (!WIFEXITED(status) || WEXITSTATUS(status) != 0);
    result.said = readText(said);
    for (const std::string& line : linesOf(result.said))
        result.steps += line.size() > 3 && line[3] == ' ' && line[2] != ' ';
    if (result.failed && !WIFEXITED(status))
        result.said += hangs ? "FINDING: the step does not come to an end\n" : "FINDING: the life has crashed\n";
    writeText(said, result.said);
    return result;
}

// Of a life that fails with these steps. Each trial is a life of its own; threads may take other turns in it.
Outcome shortened(std::uint64_t seed, Numbers& numbers, Outcome first, const fs::path& folder) {
    const std::time_t end = std::time(nullptr) + longestShortening;
    const fs::path trial = folder.string() + "-trial";
    const auto stillFails = [&](const Numbers& fewer) {
        if (interrupted || std::time(nullptr) > end)
            return false;
        Outcome found = outcome(seed, fewer, trial);
        if (!found.failed)
            return false;
        numbers = fewer;
        first = found;
        fs::remove_all(folder);
        fs::rename(trial, folder);
        return true;
    };
    numbers.resize(std::min(first.steps, numbers.size()));
    const Numbers all = numbers;
    for (std::size_t passing = 0, failing = all.size(); passing < failing;) {
        const std::size_t middle = (passing + failing) / 2;
        if (stillFails(Numbers(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(middle))))
            failing = middle;
        else
            passing = middle + 1;
    }
    for (std::size_t index = numbers.size(); index-- > 0;) {
        Numbers fewer = numbers;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(index));
        stillFails(fewer);
    }
    fs::remove_all(trial);
    return first;
}

std::string list(const Numbers& numbers) {
    std::string text;
    for (const std::uint32_t number : numbers)
        text += (text.empty() ? "" : ",") + std::to_string(number);
    return text.empty() ? "0" : text;
}

// Throws an exception for a text that is not a number.
std::uint64_t numberOf(const std::string& text) {
    std::size_t end = 0;
    const std::uint64_t number = text.empty() || text[0] < '0' || text[0] > '9' ? 0 : std::stoull(text, &end);
    if (end == 0 || end != text.size())
        throw std::runtime_error('"' + text + "\" is not a number");
    return number;
}

Options optionsOf(const std::vector<std::string>& words) {
    Options options;
    options.steps.resize(60);
    std::iota(options.steps.begin(), options.steps.end(), 1U);
    for (std::size_t index = 0; index < words.size(); ++index) {
        const std::string& word = words[index];
        if (!word.starts_with("--")) {
            options.seconds = static_cast<std::time_t>(numberOf(word));
            continue;
        }
        if (std::string("--seed --lives --steps --only --keep").find(word) == std::string::npos)
            throw std::runtime_error("unknown option " + word);
        if (++index == words.size())
            throw std::runtime_error(word + " needs a value");
        const std::string& value = words[index];
        if (word == "--seed") {
            options.seed = numberOf(value);
        } else if (word == "--lives") {
            options.lives = numberOf(value);
        } else if (word == "--keep") {
            options.keep = value;
        } else if (word == "--steps") {
            options.steps.resize(numberOf(value));
            std::iota(options.steps.begin(), options.steps.end(), 1U);
        } else {
            options.steps.clear();
            std::istringstream numbers(value);
            for (std::string number; std::getline(numbers, number, ',');)
                options.steps.push_back(static_cast<std::uint32_t>(numberOf(number)));
        }
    }
    return options;
}

int search(const Options& options) {
    const fs::path folder = fs::absolute(options.keep) / ("life-" + std::to_string(getpid()));
    const std::time_t begin = std::time(nullptr);
    std::uint64_t lives = 0;
    std::uint64_t steps = 0;
    unsigned findings = 0;
    const auto tell = [&] {
        std::printf("%llu lives, %llu steps, %lld s, %u findings\n", static_cast<unsigned long long>(lives),
                    static_cast<unsigned long long>(steps), static_cast<long long>(std::time(nullptr) - begin),
                    findings);
        std::fflush(stdout);
    };
    for (std::time_t told = begin;
         lives < options.lives && !interrupted && std::time(nullptr) - begin < options.seconds;) {
        const std::uint64_t seed = options.seed + lives;
        Outcome found = outcome(seed, options.steps, folder);
        if (interrupted)
            break;
        ++lives;
        steps += found.steps;
        if (found.failed) {
            ++findings;
            Numbers numbers = options.steps;
            std::printf("seed %llu fails after %zu steps:\n%s", static_cast<unsigned long long>(seed), found.steps,
                        found.said.substr(found.said.find("FINDING")).c_str());
            std::fflush(stdout);
            found = shortened(seed, numbers, found, folder);
            const fs::path kept = options.keep / std::to_string(seed);
            fs::remove_all(kept);
            fs::rename(folder, kept);
            std::printf("these steps still fail, and their panel is in %s:\n%s    script/soak --seed %llu --lives 1 "
                        "--only %s\n",
                        kept.c_str(), found.said.c_str(), static_cast<unsigned long long>(seed), list(numbers).c_str());
        }
        if (std::time(nullptr) - told >= 10 || found.failed) {
            told = std::time(nullptr);
            tell();
        }
    }
    tell();
    fs::remove_all(folder);
    return findings ? 1 : 0;
}

} // namespace

int main(int count, char** words) {
    try {
        const std::vector<std::string> given(words + 1, words + count);
        for (const std::string& word : given)
            if (word == "-h" || word == "--help") {
                std::printf("%s", usage);
                return 0;
            }
        std::signal(SIGINT, [](int) { interrupted = 1; });
        std::signal(SIGTERM, [](int) { interrupted = 1; });
        setenv("PANEL_PATIENCE", "0", 0);
        setenv("MALLOC_ARENA_MAX", "1", 1); // or the memory in use depends on which thread allocates first
        prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); // or it includes huge pages that nobody has used
        return search(optionsOf(given));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "soak: %s (--help lists the options)\n", error.what());
        return 2;
    }
}
