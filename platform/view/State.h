// The state of a panel for the page, divided into topics. A topic is the JSON output of a panel command. A thread
// renews the topics when the panel changes. Lines has the files that grow line by line. Objects live as long as the
// process.
#pragma once

#include "platform/view/Commands.h"
#include "platform/view/Watch.h"

#include <condition_variable>
#include <map>
#include <mutex>

namespace view {

class State {
public:
    State(const Commands& commands, std::filesystem::path panel);

    struct Topic {
        std::uint64_t version = 0; // number of the last change, counted over all topics
        std::string json; // one line
    };
    // Waits until a topic or a file changes after this version, at most `limit`. Returns all topics and stores their
    // version. Any thread.
    std::map<std::string, Topic> wait(std::uint64_t& version, std::chrono::seconds limit);

    // Differs after each boot of the panel.
    std::int64_t boot() const {
        return watch.boot();
    }

private:
    void follow();
    void refresh();
    void publish(const std::string& topic, const std::vector<std::string>& words);

    const Commands& commands;
    const std::filesystem::path root;
    Watch watch;
    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, Topic> topics;
    std::uint64_t version = 0;
    std::map<std::string, std::string> stamps; // state of the sources of each topic at its last renewal
};

} // namespace view
