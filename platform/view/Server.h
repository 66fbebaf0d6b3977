// Serves the page of one panel, to this machine alone, until the process ends.
//
//     GET  /TOKEN/            the page; /TOKEN/page.js and so on: its files
//     GET  /TOKEN/events      what happens, as server-sent events; the event's name is a topic of State, or "lines"
//     POST /TOKEN/run         {"words": ["touch", "--at", "10", "20"]}: runs that panel command; code, output and
//                             errors are the answer
//
// A request without the token, for another host name or from another origin gets 403.
#pragma once

#include "platform/view/Connections.h"
#include "platform/view/Lines.h"
#include "platform/view/State.h"

namespace view {

class Server {
public:
    // `port` 0: any that is free. Throws std::runtime_error if it cannot be had.
    Server(const Commands& commands, panel::Panel panel, int port);

    std::string address() const; // of the page, with the token

private:
    httplib::Server::HandlerResponse admit(const httplib::Request& request, httplib::Response& response);
    void run(const httplib::Request& request, httplib::Response& response);
    void stream(httplib::Response& response);
    bool sendNews(httplib::DataSink& sink, Lines& lines, std::uint64_t& version);

    const Commands& commands;
    const panel::Panel panel;
    std::unique_ptr<State> state; // once the port is had
    std::string host;
    std::string token;
    std::atomic<int> streams = 0;
    std::atomic<int> atWork = 0; // commands
    Connections server;
};

} // namespace view
