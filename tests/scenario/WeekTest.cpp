// A week of panel time with one helper: what it has kept, logged and done then, and what it has cost.
#include "platform/panel/Operator.h"
#include "tests/scenario/UsbPanel.h"
#include "tests/support/OwnMemory.h"
#include "tests/support/StatisticsFile.h"

#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>

using panel::Behaviour;

namespace {

constexpr std::uint64_t updateInterval = 300000; // ms
constexpr int updatesADay = 288;
constexpr int days = 7;
constexpr int warmUp = 2; // days, until the heap has met everything
constexpr unsigned firstUnknown = 1000; // command
constexpr std::size_t logLimit = 102400 + 80; // bytes, and one line more
// KB. The objects of started programs stay, natively 264 bytes each, and no other block does: a count of all blocks of
// the heap showed that. The other growth, up to 16 KB, is pages that heap and stacks touch for the first time. The
// smallest block that is lost at each update makes more than 22.
constexpr std::size_t memoryLimit = 20;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memoryIsItsOwn = false; // the sanitizers keep what was freed, and what they know of it
#else
constexpr bool memoryIsItsOwn = true;
#endif

struct Use {
    std::uint32_t threads = 0;
    std::uint32_t handles = 0; // of the panel
    std::ptrdiff_t descriptors = 0; // of the host
    std::size_t memory = 0; // KB that only this process has: its heap and stacks
};

} // namespace

class Week : public UsbConfiguration {
protected:
    Week() {
        prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0); // inherited: huge pages would count what nobody has used
        setenv("MALLOC_ARENA_MAX", "1", 1); // or the pages in use depend on which thread allocates first
    }

    Use use() {
        const panel::ProcessStatus helper = panel.driver().status().processes.at(0);
        const fs::path process = "/proc/" + std::to_string(helper.hostPid);
        const fs::directory_iterator descriptors(process / "fd");
        return {helper.threads, helper.handles, std::distance(begin(descriptors), end(descriptors)),
                ownMemory(helper.hostPid)};
    }

    void tell(const char* message, std::uint64_t code, std::int64_t argument, std::int64_t result) {
        EXPECT_EQ(panel.send(message, code, argument), result) << message << ' ' << code;
    }

    // Commands that change the modules, and bring them back to their settings.
    void tellModules() {
        tell("ORVATarvexScreenSaverMsg", 3, 200000, 0);
        tell("ORVATarvexScreenSaverMsg", 4, 0, 0);
        tell("ORVATarvexScreenSaverMsg", 4, 256, 3);
        tell("ORVATarvexScreenSaverMsg", 2, 0, 0);
        tell("ORVATarvexScreenSaverMsg", 2, 1, 0);
        tell("ORVATarvexScreenSaverMsg", 1, 0, 0);
        tell("ORVATarvexBuzzerMsg", 1, 0, 0);
        tell("ORVATarvexBuzzerMsg", 2, 0, 1);
    }

    // What happens before the update with this number of its day: every hour a touch, a user who leaves, a screen that
    // dims and a touch that wakes it; each day a disk, and commands.
    void live(int update) {
        const int minute = 5 * (update % 12);
        if (minute == 0 || minute == 30) {
            panel::touch({});
            panel.driver().settle();
        } else if (minute == 10) {
            panel::setUserActive(false);
        }
        if (update == 20)
            plug(document(command("sleep 100 exit 3", true) + command("exit 4", false)));
        else if (update == 30)
            unplug("Hard Disk");
        else if (update == 100)
            tellModules();
        for (int each = 0; each < 2; ++each)
            tell("ORVATarvexMsg", ++unknownCommand, 0, 1);
        counter += 1000000;
        panel.panel().devices().setValues("SHC1", {counter});
    }

    // That the log's two files hold every line of the last days, and not more than they may.
    void expectLog() {
        std::uint64_t next = 0;
        for (const std::string& line : panel.log()) {
            unsigned code = 0;
            if (std::sscanf(line.c_str(), "INFO;IPCDispatcher;message received %u", &code) != 1 || code <= firstUnknown)
                continue;
            EXPECT_TRUE(next == 0 || code == next) << line;
            next = code + 1;
        }
        EXPECT_EQ(next, unknownCommand + 1);
        for (const char* file : {"\\MMCMemory\\Tarvex\\helper_log0.txt", "\\MMCMemory\\Tarvex\\helper_log1.txt"})
            EXPECT_LE(panel.read(file).size(), logLimit);
        EXPECT_EQ(panel.errors(), Lines{});
        EXPECT_EQ(panel.lastLines(1), Lines{"INFO;Helper terminated"});
    }

    std::uint64_t unknownCommand = firstUnknown;
    std::uint32_t counter = 0;
};

// The tick count that the panel begins with wraps on the fourth day; it counts as time of the session once.
TEST_F(Week, AddsUpAndCostsNothingForGood) {
    constexpr std::uint32_t ticks = 0xF0000000;
    panel.driver().setTicks(ticks);
    panel.write(statisticsPath, statisticsFile(999, 77, 5000000, 1000));
    startHelper();
    panel.driver().advance(1000);
    Use before;
    for (int day = 0; day < days; ++day) {
        if (day == warmUp)
            before = use();
        for (int update = 0; update < updatesADay; ++update) {
            live(update);
            if (day == 3 && (update == 90 || update == 120))
                panel.panel().devices().setBehaviour(
                    "SHC1", {update == 90 ? Behaviour::Kind::refuse : Behaviour::Kind::answer, 31});
            panel.driver().advance(updateInterval);
        }
        panel.driver().settle();
    }
    const Use after = use();
    constexpr std::uint32_t programs = 2 * days;
    EXPECT_EQ(after.threads, before.threads);
    EXPECT_EQ(after.handles, before.handles + 2 * 2 * (days - warmUp)) << "two for each program that was started";
    EXPECT_EQ(after.descriptors, before.descriptors);
    if (memoryIsItsOwn) {
        EXPECT_LE(after.memory, before.memory + memoryLimit);
    }
    EXPECT_EQ(panel.terminate(), 0U);
    const std::uint32_t seconds = ticks / 1000 + days * updatesADay * (updateInterval / 1000);
    EXPECT_EQ(panel.read(statisticsPath), statisticsFile(counter, seconds, 5000000 + counter, 1000 + seconds));
    const panel::Devices devices = panel.panel().devices();
    EXPECT_EQ(devices.requests("SHC1").size(), 1U + days * updatesADay);
    EXPECT_EQ(devices.requests("BZR1").size(), 2U * 24 * days);
    EXPECT_EQ(ended().size(), programs);
    expectLog();
}
