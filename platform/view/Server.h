// Serves the page of one panel on the loopback address until the process ends.
//
//     GET  /TOKEN/            the page; /TOKEN/page.js and others: its files
//     GET  /TOKEN/events      server-sent events; an event's name is a topic of State, or "lines"
//     POST /TOKEN/run         {"id": "1", "words": ["touch", "--at", "10", "20"]}: starts this panel command. When it
//                             ends, all pages get the event "outcome" with id, code and text. No command is refused,
//                             since "start" can run any program. Too many at a time are, but not "off" and "cut"
//
// A request without the token, for another host name or from another origin gets the status 403.
#pragma once

#include "platform/view/Connections.h"
#include "platform/view/Lines.h"
#include "platform/view/State.h"

namespace view {

class Server {
public:
    // Starts the server. Port 0 stands for a free port. Throws std::runtime_error if the port is not available.
    Server(const Commands& commands, panel::Panel panel, int port);

    std::string address() const; // the page's address with the token

private:
    httplib::Server::HandlerResponse admit(const httplib::Request& request, httplib::Response& response);
    void run(const httplib::Request& request, httplib::Response& response);
    void stream(httplib::Response& response);
    bool sendNews(httplib::DataSink& sink, Lines& lines, std::uint64_t& version);

    const Commands& commands;
    const panel::Panel panel;
    std::unique_ptr<State> state; // created once the port is bound
    std::string host;
    std::string token;
    std::atomic<int> streams = 0; // pages that receive events
    std::atomic<int> atWork = 0; // commands that run
    Connections server;
};

} // namespace view
