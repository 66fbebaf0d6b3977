#include "tests/soak/Steps.h"

#include "tests/scenario/UsbPanel.h"
#include "tests/soak/Life.h"
#include "tests/soak/Random.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/SettingsFile.h"

#include <sstream>

using panel::Behaviour;
using panel::FaultAction;

namespace {

using Maker = std::pair<std::uint32_t, std::function<Step(Random&)>>; // with its weight

template<class... Words>
std::string words(const Words&... each) {
    std::ostringstream text;
    ((text << each << ' '), ...);
    return text.str();
}

Maker plain(std::uint32_t weight, const char* text, void (Life::*take)()) {
    return {weight, [=](Random&) { return Step{text, take}; }};
}

Step passes(Random& random) {
    constexpr std::uint32_t times[] = {0, 1, 99, 500, 1000, 5000, 20000, 60000, 300000, 299999, 3600000};
    const std::uint32_t time = random.once(3) ? random.below(700000) : random.of(times);
    return {words("pass", time), [=](Life& life) { life.panel.driver().advance(time); }};
}

Step touches(Random& random) {
    using Kind = panel::Touch::Kind;
    constexpr Kind kinds[] = {Kind::tap, Kind::tap, Kind::press, Kind::release, Kind::move};
    const panel::Touch touch{random.of(kinds), random.once(4), -1, -1, answerLimit};
    return {words("touch", static_cast<int>(touch.kind), touch.right), [=](Life&) { panel::touch(touch); }};
}

Step user(Random& random) {
    const bool active = random.once(3);
    return {active ? "user active" : "user inactive", [=](Life& life) {
                if (life.panel.driver().status().userActive)
                    panel::setUserActive(active);
            }};
}

struct Message {
    std::string name;
    std::uint32_t code;
    std::int64_t argument;
    bool posted;
};

Step messages(Random& random) {
    constexpr const char* names[] = {"ORVATarvexScreenSaverMsg",
                                     "ORVATarvexScreenSaverMsg",
                                     "ORVATarvexScreenSaverMsg",
                                     "ORVATarvexBuzzerMsg",
                                     "ORVATarvexMsg",
                                     "ORVAOtherMsg",
                                     "0x8123"};
    constexpr std::uint32_t codes[] = {0, 1, 2, 2, 2, 3, 4, 5, 5, 5, 6};
    constexpr std::int64_t arguments[] = {-1, 0, 0, 0, 1, 1, 32, 255, 256, 60000, 0x7FFFFFFF};
    std::vector<Message> list(1 + random.below(8));
    std::string text;
    for (Message& each : list) {
        each.name = random.of(names);
        each.code = each.name == "ORVATarvexMsg" ? 2 + random.below(7) : random.of(codes);
        each.argument = random.of(arguments);
        each.posted = random.once(4);
        text += words(each.posted ? "post" : "send", each.name, each.code, each.argument);
    }
    return {text, [=](Life& life) {
                for (const Message& each : list)
                    life.tell(each.name, each.code, each.argument, each.posted);
            }};
}

// Fills the log. Its calls may fail.
Step chatter(Random& random) {
    constexpr const char* functions[] = {"CreateFileW", "SetFilePointer", "WriteFile", "CloseHandle"};
    const std::uint32_t count = 100 + random.below(1100);
    panel::Fault fault;
    fault.program = "TarvexHelper.exe";
    fault.function = random.of(functions);
    fault.call = 1 + random.below(500);
    fault.ever = !random.once(3);
    const bool fails = random.once(2);
    return {words("send", count, "messages", fails ? fault.function : ""), [=](Life& life) {
                if (fails && !life.isIdle())
                    life.add(fault, 0, false);
                for (std::uint32_t sent = 0; sent < count && life.panel.loopRuns(); ++sent)
                    if (sent % 16 != 0) // posted: without a switch of processes for each
                        life.tell("ORVATarvexMsg", 99, 0, true);
                    else if (!life.panel.send("ORVATarvexMsg", 99, 0, answerLimit))
                        break;
            }};
}

// The call is the life's choice.
struct Fault {
    panel::Fault fault;
    std::uint32_t draw;
    std::string text;

    explicit Fault(Random& random) {
        constexpr FaultAction actions[] = {FaultAction::fail, FaultAction::fail, FaultAction::fail, FaultAction::cut,
                                           FaultAction::hold};
        fault.program = "TarvexHelper.exe";
        fault.action = random.of(actions);
        fault.ever = fault.action == FaultAction::fail && random.once(4);
        fault.sectors = fault.action == FaultAction::cut ? random.below(3) : 0;
        draw = random.below(1000000);
        const char* names[] = {"", fault.ever ? "fails for ever" : "fails", "cuts", "waits"};
        text = words("a call", names[static_cast<int>(fault.action)], fault.sectors);
    }
};

Step faults(Random& random) {
    const Fault one(random);
    return {one.text, [=](Life& life) { life.add(one.fault, one.draw, false); }};
}

Step starts(Random& random) {
    const bool fromDisk = random.once(3);
    const auto one = random.once(3) ? std::optional(Fault(random)) : std::nullopt;
    return {words("start", fromDisk ? "from a disk" : "in place", one ? one->text : ""), [=](Life& life) {
                if (one && life.isIdle())
                    life.add(one->fault, one->draw, true, fromDisk);
                life.start(fromDisk);
            }};
}

Step boots(Random& random) {
    const bool cut = random.once(2);
    const std::uint32_t sectors = random.below(4);
    const auto one = random.once(2) ? std::optional(Fault(random)) : std::nullopt;
    return {words(cut ? "cut" : "off", sectors, "and on", one ? one->text : ""), [=](Life& life) {
                life.boot(cut, sectors);
                if (one)
                    life.add(one->fault, one->draw, true);
            }};
}

Step plugs(Random& random) {
    const std::string files[] = {document(command("exit 3", true)),
                                 document(command("sleep 700", true) + command("sleep 50 exit 4", false)),
                                 document(command("sleep 15000", false) + command("", true, "\\No.exe")),
                                 document(command("sleep 30000", true)),
                                 document("<Command Type='RunProcess' FilePath='a' Arguments=''/>"),
                                 document("<Command Type='Other' FilePath='' Arguments='' WaitCompletion='1'/>"),
                                 document(command("exit 1", true)).substr(0, 90),
                                 "<Other/>",
                                 "\xEF\xBB\xBF\x01"};
    constexpr std::uint64_t delays[] = {0, 0, 0, 700, 40000, panel::never};
    const std::string file = random.of(files);
    const std::string volume = random.once(4) ? "USB Disk" : "";
    const std::uint64_t delay = random.of(delays);
    const std::uint32_t attributes = random.once(8) ? 0 : panel::mountedPartition;
    return {words("plug", volume, attributes ? "mounted" : "not mounted", delay, file), [=](Life& life) {
                const FreshFolder disk;
                writeText(disk.path / "Tarvex.xml", file);
                life.plug({{{disk.path, volume, attributes}}, delay});
            }};
}

Step unplugs(Random& random) {
    const std::uint32_t which = random.below(4);
    return {words("unplug", which), [=](Life& life) {
                const auto disks = life.panel.panel().disks().list();
                if (!disks.empty())
                    life.panel.panel().disks().unplug(disks[which % disks.size()].device);
            }};
}

// The same again and again, which costs nothing that stays.
Step rounds(Random& random) {
    constexpr std::uint32_t counts[] = {20, 200, 200, 50};
    const std::uint32_t what = random.below(4);
    return {words("rounds", what), [=](Life& life) {
                life.panel.pass(3600000); // until all disks are done
                if (!life.isUndisturbed())
                    return;
                const char* const saver = "ORVATarvexScreenSaverMsg";
                // Each screen saver has a thread, whose stack may touch further pages.
                const auto programs = life.repeat(counts[what], what == 3 ? 24 : 8, [&] {
                    if (what == 0) {
                        const FreshFolder disk;
                        writeText(disk.path / "Tarvex.xml", document(command("exit 3", true)));
                        life.plug({{{disk.path, "Hard Disk9"}}});
                        life.panel.pass(1000);
                        life.unplugAll();
                    } else if (what == 1) {
                        panel::touch({panel::Touch::Kind::tap, false, -1, -1, answerLimit});
                    } else if (what == 2) {
                        life.tell(saver, 1, 0, true);
                        life.tell("ORVATarvexBuzzerMsg", 2, 0, false);
                    } else {
                        for (const std::int64_t on : {0, 1})
                            for (const std::uint32_t code : {2, 5, 4})
                                life.tell(saver, code, on, code != 4);
                    }
                });
                require(what != 0 || programs.value_or(counts[what]) == counts[what], "a disk starts no program");
            }};
}

Step settings(Random& random) {
    constexpr int timeouts[] = {0, 1000, 60000, 300000, -1};
    constexpr int levels[] = {0, 1, 32, 255, 300};
    constexpr int frequencies[] = {-1, 0, 1000, 3400};
    const bool ofSaver = random.once(2);
    const char* file = ofSaver ? saverSettingsPath : buzzerSettingsPath;
    const bool enabled = !random.once(3);
    const int timeout = random.of(timeouts);
    std::string content =
        ofSaver ? saverSettings(enabled, timeout, random.of(levels)) : buzzerSettings(enabled, random.of(frequencies));
    if (random.once(4))
        content.resize(random.below(2) * content.size() / 2); // bad
    const bool again = !random.once(4);
    return {words(file, content, again ? "read again" : ""), [=](Life& life) {
                life.panel.write(file, content);
                if (again)
                    life.tell(ofSaver ? "ORVATarvexScreenSaverMsg" : "ORVATarvexBuzzerMsg", 1, 0, false);
            }};
}

Step configuration(Random& random) {
    const std::string content = settingsFile(2, {"\\MMCMemory", "\\Hard Disk", "\\No"});
    const bool good = random.once(2);
    return {words("config.xml,", good ? "good" : "bad"),
            [=](Life& life) { life.configure(good ? content : content.substr(0, 99), good); }};
}

Step registration(Random& random) {
    constexpr std::pair<const char*, const char*> values[] = {{"HKEY_LOCAL_MACHINE\\init", "Launch61"},
                                                              {"HKEY_LOCAL_MACHINE\\init", "Depend61"},
                                                              {"HKEY_CLASSES_ROOT\\.osr", ""},
                                                              {"HKEY_CLASSES_ROOT\\osrfile\\shell\\open\\command", ""}};
    const auto [key, value] = random.of(values);
    return {words("remove", key, value), [key = key, value = value](Life& life) { life.unregister(key, value); }};
}

Step devices(Random& random) {
    constexpr const char* names[] = {"BKL1", "BZR1", "SHC1", "tags", "PowerManager"};
    constexpr Behaviour behaviours[] = {
        {}, {}, {Behaviour::Kind::refuse, 31}, {Behaviour::Kind::block, 0}, {Behaviour::Kind::delay, 200}};
    const std::string name = random.of(names);
    const bool present = random.once(2);
    const Behaviour behaviour = random.of(behaviours);
    if (random.once(4) || name == "PowerManager")
        return {words(name, present ? "is back" : "is gone"),
                [=](Life& life) { life.panel.panel().devices().setPresent(name, present); }};
    return {words(name, "behaviour", static_cast<int>(behaviour.kind)),
            [=](Life& life) { life.panel.panel().devices().setBehaviour(name, behaviour); }};
}

Step counts(Random& random) {
    const std::uint32_t writes = random.below(1000000);
    return {words("counter", writes), [=](Life& life) { life.panel.panel().devices().setValues("SHC1", {writes}); }};
}

} // namespace

Step stepOf(std::uint64_t seed, std::uint32_t number) {
    const Maker makers[] = {{14, passes},
                            {12, touches},
                            {8, user},
                            {24, messages},
                            {2, chatter},
                            {3, rounds},
                            {18, starts},
                            {12, faults},
                            {6, boots},
                            {8, plugs},
                            {6, unplugs},
                            {10, settings},
                            {8, devices},
                            {5, counts},
                            {1, configuration},
                            {2, registration},
                            plain(1, "rest for a day", &Life::rest),
                            plain(4, "end", &Life::end),
                            plain(1, "kill", &Life::kill),
                            plain(7, "calm", &Life::calm),
                            plain(2, "clean boot", &Life::bootCleanly)};
    Random random(seed * 1000003 + number);
    for (;;)
        if (const auto& [weight, make] = random.of(makers); random.below(24) < weight)
            return make(random);
}
