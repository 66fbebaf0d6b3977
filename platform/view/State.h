// The state of a panel for the page, divided into topics. A topic is the JSON output of a panel command. A thread
// renews the topics when the panel changes. Lines has the files that grow line by line. Objects live as long as the
// process.
#pragma once

#include "platform/view/Commands.h"
#include "platform/view/Watch.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace view {

class State {
public:
    State(const Commands& commands, std::filesystem::path panel);

    struct Event {
        std::uint64_t version = 0; // number of the last change, counted over all events
        std::string json; // one line
    };
    // Waits until a topic or a file changes or a command ends after this version, at most `limit`. Returns the names
    // and texts of the events since this version, and renews it. Any thread.
    std::vector<std::pair<std::string, std::string>> wait(std::uint64_t& version, std::chrono::seconds limit);
    // Wakes all waits. Any thread.
    void wake();
    // Adds the event "outcome", of a command that has ended. Any thread.
    void addOutcome(std::string json);

private:
    void follow();
    void refresh();
    void publish(const std::string& topic, const std::vector<std::string>& words);

    const Commands& commands;
    const std::filesystem::path root;
    Watch watch;
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, Event> topics;
    std::deque<Event> outcomes; // the last ones
    std::uint64_t version = 0;
    std::map<std::string, std::string> stamps; // state of the sources of each topic at its last renewal
};

} // namespace view
