#include "tests/scenario/Sweep.h"

#include "platform/panel/Functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <set>
#include <sstream>

namespace {

constexpr std::size_t sample = 9; // one call in so many

// What the trace knows of handles.
class Names {
public:
    // Puts names in the place of handles, and learns the name of what the call has given.
    void apply(Call& call) {
        if (call.function.starts_with("Reg"))
            takeOffOpenedKey(call);
        call.commits = call.function == "CloseHandle" && writing.erase(keyOf(call, call.arguments)) > 0;
        replaceHandles(call);
        if (call.function == "CreateFileW" && call.arguments.find(", 0x40000000, ") != std::string::npos)
            writing.insert(keyOf(call, call.result));
        if (call.function == "CreateFileW" || call.function == "FindFirstFileW")
            learn(call.result, call.arguments.substr(0, call.arguments.find(',')), call);
        else if (call.function == "OpenEventW")
            learn(call.result, call.arguments.substr(call.arguments.find('"')), call);
        else if (call.function == "CreateEventW")
            learn(call.result, "event", call);
    }

private:
    void learn(const std::string& handle, const std::string& name, const Call& call) {
        const unsigned count = ++counts[std::to_string(call.process) + name];
        names[keyOf(call, handle)] = name + (count > 1 ? '#' + std::to_string(count) : "");
    }

    // `HKEY_LOCAL_MACHINE, "init", 0, 0x0, 0x800` -> `HKEY_LOCAL_MACHINE, "init"` is what 0x800 stands for, and no
    // argument of its own
    void takeOffOpenedKey(Call& call) {
        const auto handle = call.arguments.rfind(", 0x");
        if (handle == std::string::npos || call.result != "0" || !call.function.ends_with("KeyExW"))
            return; // not opened
        const std::string name = call.arguments.substr(handle + 2);
        call.arguments.resize(handle);
        names[keyOf(call, name)] = call.arguments.substr(0, call.arguments.rfind('"') + 1);
    }

    void replaceHandles(Call& call) const {
        const std::string& arguments = call.arguments;
        std::string replaced;
        for (std::size_t begin = 0; begin <= arguments.size();) {
            const std::size_t end = std::min(arguments.find(", ", begin), arguments.size());
            const std::string argument = arguments.substr(begin, end - begin);
            const auto named = names.find(keyOf(call, argument));
            replaced += (begin ? ", " : "") + (named == names.end() ? argument : named->second);
            begin = end + 2;
        }
        call.arguments = replaced;
    }

    static std::string keyOf(const Call& call, const std::string& handle) {
        return std::to_string(call.process) + ' ' + handle;
    }

    std::map<std::string, std::string> names; // by process and handle
    std::map<std::string, unsigned> counts;
    std::set<std::string> writing; // by process and handle
};

bool isAlike(const Call& call, const Call& other) {
    return call.function == other.function && call.process == other.process && call.arguments == other.arguments;
}

Where place(Story story, const Call& call) {
    if (story == Story::fromDisk)
        return call.process == 1 ? installer : installed;
    return story == Story::inPlace ? inPlace : alive;
}

bool isMeant(const KnownLoss& loss, const Call& call) {
    const bool writes = call.function == "WriteFile" || call.commits;
    return (loss.function == call.function || (loss.function == written && writes)) &&
           call.arguments.starts_with(loss.arguments) && (loss.occurrence == 0 || call.occurrence == loss.occurrence);
}

// The first row that is meant; null: there is none.
const KnownLoss* rowFor(std::span<const KnownLoss> losses, Story story, const Call& call) {
    for (const KnownLoss& loss : losses)
        if ((loss.where & place(story, call)) != 0 && isMeant(loss, call))
            return &loss;
    return nullptr;
}

} // namespace

void PrintTo(Story story, std::ostream* stream) {
    constexpr const char* names[] = {"fromDisk", "inPlace", "life"};
    *stream << names[static_cast<std::size_t>(story)];
}

void PrintTo(const Call& call, std::ostream* stream) {
    *stream << '{' << call.process << ", \"" << call.function << "\", R\"(" << call.arguments << ")\", "
            << call.occurrence << "} t" << call.thread << " call " << call.number;
}

bool canFail(const Call& call) {
    const auto function = panel::functionNamed(call.function);
    return function && panel::facts(*function).canFail;
}

Recording recorded(Story story, bool (*isWanted)(const Call& call)) {
    SweptPanel panel(story);
    panel.driver().setTracing(true);
    std::size_t logged = panel.logText().size();
    std::size_t committed = logged;
    EXPECT_TRUE(panel.live());
    EXPECT_EQ(panel.errors(), std::vector<std::string>{});
    std::vector<Call> calls;
    Names names;
    for (const TracedCall& traced : panel.calls()) {
        Call call{traced};
        names.apply(call);
        call.logged = logged;
        call.committed = committed;
        if (call.arguments.find("\\helper_log") != std::string::npos) {
            if (call.function == "WriteFile")
                logged += std::stoul(call.arguments.substr(call.arguments.rfind(' ')));
            else if (call.commits)
                committed = logged;
        }
        calls.push_back(call);
    }
    std::erase_if(calls, [&](const Call& call) { return !isWanted(call); });
    std::stable_sort(calls.begin(), calls.end(), [](const Call& first, const Call& second) {
        return std::pair(first.process, first.thread) < std::pair(second.process, second.thread);
    });
    for (auto call = calls.begin(); call != calls.end(); ++call)
        for (auto former = calls.begin(); former != call; ++former)
            if (isAlike(*former, *call))
                call->occurrence = former->occurrence + 1;
    const std::string log = panel.logText();
    return {calls, panel.endState(), log};
}

std::vector<Call> dealt(const std::vector<Call>& calls, const char* sweep, std::size_t shard, std::size_t shards) {
    const char* wish = std::getenv("PANEL_SWEEP");
    const char* ofBuild = std::getenv("PANEL_SWEEP_OF_BUILD");
    const std::string whole = wish ? wish : ofBuild ? ofBuild : "";
    const std::size_t step = whole == "all" || whole.find(sweep) != std::string::npos ? 1 : sample;
    std::vector<Call> hand;
    for (std::size_t index = shard * step; index < calls.size(); index += shards * step)
        hand.push_back(calls[index]);
    return hand;
}

std::string knownLoss(std::span<const KnownLoss> losses, Story story, const Call& call) {
    const KnownLoss* loss = rowFor(losses, story, call);
    return loss ? std::string(loss->loss) : "";
}

void expectEachLossToBeOfACall(std::span<const KnownLoss> losses, Story story, const std::vector<Call>& calls) {
    for (const KnownLoss& loss : losses) {
        unsigned met = 0;
        unsigned present = 0;
        for (const Call& call : calls) {
            present |= place(story, call);
            if (rowFor(losses, story, call) == &loss)
                met |= place(story, call);
        }
        EXPECT_EQ(loss.where & present & ~met, 0U) << loss.function << '(' << loss.arguments;
    }
}

std::string differences(const Tree& expected, const Tree& found) {
    std::ostringstream text;
    for (const auto& [name, content] : expected)
        if (!found.contains(name))
            text << '-' << name << ' ';
        else if (found.at(name) != content)
            text << '~' << name << ' ';
    for (const auto& [name, content] : found)
        if (!expected.contains(name))
            text << '+' << name << ' ';
    std::string result = text.str();
    if (!result.empty())
        result.pop_back();
    return result;
}

std::string beyond(const std::string& others, const std::string& found) {
    std::string rest;
    for (std::size_t begin = 0, end = 0; begin < found.size(); begin = end + 1) {
        end = begin;
        do // names contain blanks
            end = std::min(found.find(' ', end + 1), found.size());
        while (end < found.size() && std::string("-~+").find(found[end + 1]) == std::string::npos);
        const std::string one = found.substr(begin, end - begin) + ' ';
        if ((' ' + others + ' ').find(' ' + one) == std::string::npos)
            rest += one;
    }
    return rest;
}
