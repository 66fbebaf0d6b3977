// What the page shows of a panel, but for the files that grow line by line: topics, each the answer of a panel command
// in JSON. They are renewed when the panel changes. Lives as long as the process.
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
        std::uint64_t version = 0; // of the last change; counts over all topics
        std::string json; // one line
    };
    // Waits, at most so long, until something has happened after this version; what holds then, and its version. Any
    // thread.
    std::map<std::string, Topic> wait(std::uint64_t& version, std::chrono::seconds limit);

    // Differs from boot to boot.
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
    std::map<std::string, std::string> stamps; // of what is behind the topics
};

} // namespace view
