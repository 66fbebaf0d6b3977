#include "platform/view/State.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <thread>

namespace view {

namespace {

using Json = nlohmann::ordered_json;

std::string dump(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Changes with every file of the folder that is written.
std::string stampOf(const std::filesystem::path& folder) {
    std::string stamp;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        if (struct stat status{}; entry.path().extension() == ".json" && stat(entry.path().c_str(), &status) == 0)
            stamp += entry.path().filename().string() + std::to_string(status.st_ino) + ' ' +
                     std::to_string(status.st_mtim.tv_sec) + ' ' + std::to_string(status.st_mtim.tv_nsec) + ' ';
    return stamp;
}

} // namespace

State::State(const Commands& panelCommands, std::filesystem::path panel)
    : commands(panelCommands), root(std::move(panel)), watch(root) {
    publish("functions", {"fault", "functions", "--json"});
    std::thread([this] { follow(); }).detach();
}

std::map<std::string, State::Topic> State::wait(std::uint64_t& known, std::chrono::seconds limit) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, limit, [&] { return version != known; });
    known = version;
    return topics;
}

bool State::publish(const std::string& topic, const std::vector<std::string>& words) {
    const Outcome outcome = commands.run(words);
    const Json json = Json::parse(outcome.output, nullptr, false);
    const bool good = outcome.code == 0 && !json.is_discarded();
    std::string text = dump(good ? json : Json{{"error", outcome.errors}});
    const std::lock_guard lock(mutex);
    if (topics[topic].json != text)
        topics[topic] = {++version, std::move(text)};
    return good;
}

void State::refresh() {
    if (!publish("status", {"status", "--json"}))
        return stamps.clear(); // no panel is there
    std::string power;
    {
        const std::lock_guard lock(mutex);
        power = topics["status"].json.find("\"on\":true") != std::string::npos ? "on" : "off";
    }
    if (power == "on") {
        publish("processes", {"ps", "--all", "--json"});
        publish("faults", {"fault", "list", "--json"});
    }
    const auto renewed = [&](const char* folder) {
        std::string stamp = power + stampOf(root / folder);
        return stamps[folder] != stamp && (stamps[folder] = std::move(stamp), true);
    };
    if (renewed("devices"))
        publish("devices", {"device", "--json"});
    if (renewed("registry")) {
        publish("registry", {"registry", "list", "--json"});
        publish("flash", {"registry", "list", "--flash", "--json"});
    }
}

void State::follow() {
    for (bool beyondLines = true;; beyondLines = watch.wait()) {
        if (beyondLines)
            refresh();
        const std::lock_guard lock(mutex);
        ++version;
        changed.notify_all();
    }
}

} // namespace view
