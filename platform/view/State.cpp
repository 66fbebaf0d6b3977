#include "platform/view/State.h"
#include "platform/panel/Json.h"

#include <sys/stat.h>
#include <thread>

namespace view {

namespace {

using panel::Json;

constexpr std::size_t mostOutcomes = 64; // kept until every page has received them

// Returns a text that changes when a JSON file of the folder is written.
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

std::vector<std::pair<std::string, std::string>> State::wait(std::uint64_t& known, std::chrono::seconds limit) {
    std::unique_lock lock(mutex);
    changed.wait_for(lock, limit, [&] { return version != known; });
    std::vector<std::pair<std::string, std::string>> news;
    for (const auto& [name, topic] : topics)
        if (topic.version > known)
            news.emplace_back(name, topic.json);
    for (const Event& outcome : outcomes)
        if (outcome.version > known)
            news.emplace_back("outcome", outcome.json);
    known = version;
    return news;
}

void State::wake() {
    const std::lock_guard lock(mutex);
    ++version;
    changed.notify_all();
}

void State::addOutcome(std::string json) {
    const std::lock_guard lock(mutex);
    outcomes.push_back({++version, std::move(json)});
    if (outcomes.size() > mostOutcomes)
        outcomes.pop_front();
    changed.notify_all();
}

void State::publish(const std::string& topic, const std::vector<std::string>& words) {
    const Outcome outcome = commands.run(words);
    Json answer{{"error", outcome.text}};
    try {
        if (outcome.code == 0)
            answer = panel::parseJson(outcome.text);
    } catch (const std::exception&) { // a command that was killed: its answer is cut off
    }
    std::string text = panel::jsonText(answer, -1);
    const std::lock_guard lock(mutex);
    if (topics[topic].json == text)
        return;
    topics[topic] = {++version, std::move(text)};
    changed.notify_all();
}

void State::refresh() {
    const auto renewed = [&](const char* topic, std::string stamp) {
        return stamps[topic] != stamp && (stamps[topic] = std::move(stamp), true);
    };
    const std::uint64_t kernel = watch.digest();
    const bool devices = renewed("devices", stampOf(root / "devices"));
    if (renewed("status", std::to_string(kernel)) || devices) {
        publish("status", {"status", "--json"});
        publish("processes", {"ps", "--all", "--json"});
        publish("faults", {"fault", "list", "--json"});
    }
    if (devices)
        publish("devices", {"device", "--json"});
    if (renewed("registry", stampOf(root / "registry") + (kernel ? "on" : "off"))) {
        publish("registry", {"registry", "list", "--json"});
        publish("flash", {"registry", "list", "--flash", "--json"});
    }
}

void State::follow() {
    for (;;)
        try {
            wake(); // a file may have new lines; a click of the buzzer must not wait for the commands
            refresh();
            watch.wait();
        } catch (const std::exception&) { // this machine has no descriptor or thread left: the pages keep the old state
            stamps.clear();
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
}

} // namespace view
