#include "tests/soak/Steps.h"

#include "tests/scenario/UsbPanel.h"
#include "tests/soak/Life.h"
#include "tests/soak/Random.h"
#include "tests/support/ModuleSettings.h"
#include "tests/support/SettingsFile.h"

using panel::Behaviour;

namespace {

std::string numbered(const std::string& word, std::int64_t number) {
    return word + ' ' + std::to_string(number);
}

Step passes(Random& random) {
    constexpr std::uint64_t times[] = {0, 1, 99, 500, 1000, 5000, 20000, 60000, 300000, 299999, 3600000};
    const std::uint64_t time = random.once(3) ? random.below(700000) : random.of(times);
    return {numbered("pass", static_cast<std::int64_t>(time)), [=](Life& life) { life.pass(time); }};
}

Step rests(Random&) {
    return {"rest for a day", [](Life& life) { life.rest(); }};
}

Step touches(Random& random) {
    using Kind = panel::Touch::Kind;
    constexpr std::pair<Kind, const char*> kinds[] = {{Kind::tap, "tap"},
                                                      {Kind::tap, "tap"},
                                                      {Kind::press, "press"},
                                                      {Kind::release, "release"},
                                                      {Kind::move, "move"}};
    const auto [kind, name] = random.of(kinds);
    const bool right = random.once(4);
    return {(right ? "right " : "") + std::string(name), [=, what = kind](Life& life) { life.touch(what, right); }};
}

Step user(Random& random) {
    const bool active = random.once(3);
    return {active ? "user active" : "user inactive", [=](Life& life) { life.setUserActive(active); }};
}

Step messages(Random& random) {
    constexpr const char* names[] = {"ORVATarvexScreenSaverMsg",
                                     "ORVATarvexScreenSaverMsg",
                                     "ORVATarvexScreenSaverMsg",
                                     "ORVATarvexBuzzerMsg",
                                     "ORVATarvexMsg",
                                     "ORVAOtherMsg",
                                     "0x8123"};
    constexpr std::int64_t arguments[] = {-1, 0, 0, 1, 1, 32, 255, 256, 60000, 0x7FFFFFFF};
    const std::string name = random.of(names);
    const bool ends = name == "ORVATarvexMsg";
    const std::uint32_t code = (ends ? 2 : 0) + random.below(7);
    const std::int64_t argument = random.of(arguments);
    const bool posted = random.once(4);
    return {(posted ? "post " : "send ") + name + numbered("", code) + numbered("", argument),
            [=](Life& life) { life.tell(name, code, argument, posted); }};
}

Step chatter(Random& random) {
    const std::uint32_t count = 100 + random.below(900);
    return {numbered("chatter", count), [=](Life& life) { life.chatter(count); }};
}

Step starts(Random& random) {
    const bool fromDisk = random.once(3);
    return {fromDisk ? "start from a disk" : "start in place", [=](Life& life) { life.start(fromDisk); }};
}

Step ends(Random&) {
    return {"end", [](Life& life) { life.end(); }};
}

Step kills(Random&) {
    return {"kill", [](Life& life) { life.kill(); }};
}

constexpr panel::FaultAction fails = panel::FaultAction::fail;

// Of a function that the helper calls. No call that is repeated at once fails for ever, as it would never come to rest.
panel::Fault fault(Random& random, std::string& text) {
    enum class How { IMPORTED, BY_NAME, SIMULATED };
    constexpr std::pair<const char*, How> functions[] = {
#define COREDLL(name, how, failure, lastError) {#name, How::how},
#define COREDLL_SURE(name, how)
#include <coredll.inc>
    };
    constexpr panel::FaultAction actions[] = {fails, fails, fails, panel::FaultAction::cut, panel::FaultAction::hold};
    const char* name = nullptr;
    do {
        const auto [function, how] = random.of(functions);
        const bool called = how == How::IMPORTED || std::string_view(function).starts_with("FindFirstP") ||
                            std::string_view(function) == "FindNextPartition" ||
                            std::string_view(function) == "OpenStore";
        name = called ? function : nullptr;
    } while (!name);
    panel::Fault fault{name, "TarvexHelper.exe"};
    const bool repeats = fault.function.starts_with("WaitFor") || fault.function == "ReadMsgQueue";
    fault.call = 1 + random.below(random.once(2) ? 4 : 40);
    fault.action = random.of(actions);
    fault.ever = fault.action == fails && !repeats && random.once(4);
    fault.sectors = fault.action == panel::FaultAction::cut ? random.below(3) : 0;
    if (fault.function == "CreateMsgQueue")
        fault.answer = -1; // with null the thread of the disks never comes to rest
    text = numbered(fault.function, fault.call) + (fault.ever ? " for ever" : "");
    if (fault.action == panel::FaultAction::cut)
        text += numbered(" cuts", fault.sectors);
    else if (fault.action == panel::FaultAction::hold)
        text += " waits";
    return fault;
}

Step faults(Random& random) {
    std::string text;
    const panel::Fault one = fault(random, text);
    return {"fault " + text, [=](Life& life) { life.add(one); }};
}

Step boots(Random& random) {
    const PowerLoss loss = random.once(2) ? PowerLoss::off : PowerLoss::cut;
    const std::uint32_t sectors = random.below(4);
    std::string text = loss == PowerLoss::off ? "off and on" : numbered("cut", sectors) + " and on";
    std::optional<panel::Fault> one;
    if (random.once(2)) {
        std::string what;
        one = fault(random, what);
        text += " with fault " + what;
    }
    return {text, [=](Life& life) { life.boot(loss, sectors, one); }};
}

Step plugs(Random& random) {
    const std::string good[] = {document(command("exit 3", true)),
                                document(command("sleep 700", true) + command("sleep 50 exit 4", false)),
                                document(command("sleep 15000", false) + command("", true, "\\No.exe")),
                                document(command("sleep 30000", true)), document("")};
    const std::string bad[] = {"-",
                               "",
                               "\xEF\xBB\xBF\x01",
                               document(command("exit 1", true)).substr(0, 90),
                               document("<Command Type='Other' FilePath='' Arguments='' WaitCompletion='1'/>"),
                               document("<Command Type='RunProcess' FilePath='a' Arguments=''/>"),
                               document("<Other/>"),
                               "<Other/>"};
    constexpr std::uint64_t delays[] = {0, 0, 0, 700, 40000, panel::never};
    const bool isGood = !random.once(3);
    const std::string file = isGood ? random.of(good) : random.of(bad);
    const std::string volume = random.once(4) ? "USB Disk" : "";
    const std::uint64_t delay = random.of(delays);
    const bool mounted = !random.once(8);
    return {"plug " + volume + (mounted ? "" : " not mounted") +
                numbered(", ready after", static_cast<std::int64_t>(delay)) + ", with " + file,
            [=](Life& life) { life.plug(file, volume, delay, mounted); }};
}

Step unplugs(Random& random) {
    const std::uint32_t which = random.below(4);
    return {numbered("unplug", which), [=](Life& life) { life.unplug(which); }};
}

Step settings(Random& random) {
    const bool saver = random.once(2);
    constexpr int timeouts[] = {0, 1000, 60000, 300000, -1};
    constexpr int levels[] = {0, 1, 32, 255, 300};
    constexpr int frequencies[] = {-1, 0, 1000, 3400};
    const std::string wrong[] = {"-", "", "<ScreenSaver><Settings><Enabled>1</Enabled></Settings></ScreenSaver>",
                                 "<TouchBuzzer><Settings>"};
    const bool good = !random.once(4);
    const char* file = saver ? saverSettingsPath : buzzerSettingsPath;
    const bool enabled = !random.once(3);
    const std::string content = !good   ? random.of(wrong)
                                : saver ? saverSettings(enabled, random.of(timeouts), random.of(levels))
                                        : buzzerSettings(enabled, random.of(frequencies));
    const bool reload = !random.once(4);
    return {std::string(file) + " := " + content + (reload ? ", read again" : ""), [=](Life& life) {
                life.set(file, content, good);
                if (reload)
                    life.tell(saver ? "ORVATarvexScreenSaverMsg" : "ORVATarvexBuzzerMsg", 1, 0, false);
            }};
}

Step configuration(Random& random) {
    const std::string contents[] = {settingsFile(2, {"\\MMCMemory", "\\Hard Disk", "\\No"}), settingsFile(2), "",
                                    "<OrvaTarvex><Settings>"};
    const std::uint32_t which = random.below(4);
    return {"config.xml := " + contents[which],
            [content = contents[which], good = which == 0](Life& life) { life.setConfiguration(content, good); }};
}

Step devices(Random& random) {
    constexpr const char* names[] = {"BKL1", "BZR1", "SHC1", "tags", "PowerManager"};
    const char* name = random.of(names);
    if (random.once(4) || std::string_view(name) == "PowerManager") {
        const bool present = random.once(2);
        return {(present ? "device back: " : "device gone: ") + std::string(name),
                [=](Life& life) { life.setPresent(name, present); }};
    }
    constexpr std::pair<Behaviour, const char*> behaviours[] = {{{}, "answers"},
                                                                {{}, "answers"},
                                                                {{Behaviour::Kind::refuse, 31}, "refuses"},
                                                                {{Behaviour::Kind::block, 0}, "blocks"},
                                                                {{Behaviour::Kind::delay, 200}, "delays"}};
    const auto [behaviour, text] = random.of(behaviours);
    return {std::string(name) + ' ' + text, [=, how = behaviour](Life& life) { life.setDevice(name, how); }};
}

Step counts(Random& random) {
    const std::uint32_t writes = random.below(1000000);
    return {numbered("counter", writes), [=](Life& life) { life.count(writes); }};
}

Step calms(Random&) {
    return {"calm", [](Life& life) { life.calm(); }};
}

Step storage(Random& random) {
    const auto policy = static_cast<panel::StoragePolicy>(random.below(3));
    return {numbered("storage", static_cast<int>(policy)), [=](Life& life) { life.setStorage(policy); }};
}

Step bootsCleanly(Random&) {
    return {"clean boot", [](Life& life) { life.bootCleanly(); }};
}

} // namespace

Step stepOf(std::uint64_t seed, std::uint32_t number) {
    constexpr std::pair<unsigned, Step (*)(Random&)> makers[] = {
        {14, passes}, {1, rests},  {12, touches}, {8, user},  {18, messages}, {2, chatter},     {8, starts},
        {4, ends},    {1, kills},  {6, boots},    {8, plugs}, {6, unplugs},   {10, settings},   {1, configuration},
        {8, devices}, {5, counts}, {8, faults},   {7, calms}, {1, storage},   {2, bootsCleanly}};
    unsigned sum = 0;
    for (const auto& [weight, make] : makers)
        sum += weight;
    Random random(seed * 1000003 + number);
    unsigned chosen = random.below(sum);
    for (const auto& [weight, make] : makers) {
        if (chosen < weight)
            return make(random);
        chosen -= weight;
    }
    return passes(random); // not reached
}
