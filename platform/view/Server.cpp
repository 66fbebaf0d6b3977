#include "platform/view/Server.h"

#include "platform/panel/Json.h"
#include "platform/view/Page.h"

#include <random>
#include <stdexcept>
#include <sys/socket.h>
#include <thread>

namespace view {

namespace {

using httplib::Request;
using httplib::Response;
using Admission = httplib::Server::HandlerResponse;
using panel::Json;

constexpr int oneLine = -1; // an indentation for jsonText that gives one line

constexpr std::size_t mostBody = 64 << 10; // bytes
constexpr std::size_t mostText = 64 << 10; // bytes of a command's output that are kept: the last ones
constexpr int mostStreams = 5; // pages at the same time; a browser opens six connections, and one is for commands
constexpr int mostCommands = 12; // commands at the same time; switching the panel off is always possible
constexpr std::chrono::seconds heartbeat(15); // interval of empty events, which detect a closed page

std::string newToken() {
    std::random_device random("/dev/urandom");
    std::string token;
    while (token.size() < 32)
        token += "0123456789abcdef"[random() % 16];
    return token;
}

bool send(httplib::DataSink& sink, const std::string& event, const std::string& json) {
    const std::string text = "event: " + event + "\ndata: " + json + "\n\n";
    return sink.write(text.data(), text.size());
}

void refuse(Response& response, int status, const std::string& why) {
    response.status = status;
    response.set_content(why + '\n', "text/plain; charset=utf-8");
}

} // namespace

Server::Server(const Commands& panelCommands, panel::Panel shown, int port)
    : commands(panelCommands), panel(std::move(shown)), token(newToken()) {
    server.set_payload_max_length(mostBody);
    // The library's own options would let other programs bind the same port.
    server.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    server.set_default_headers({
        {"Content-Security-Policy", "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
                                    "img-src data:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'"},
        {"X-Content-Type-Options", "nosniff"},
        {"Referrer-Policy", "no-referrer"},
        {"Cross-Origin-Resource-Policy", "same-origin"},
        {"Cache-Control", "no-store"},
    });
    server.set_exception_handler([](const Request&, Response& response, const std::exception_ptr&) {
        refuse(response, 400, "The request cannot be answered");
    });
    server.set_pre_routing_handler(
        [this](const Request& request, Response& response) { return admit(request, response); });
    const std::string start = '/' + token + '/';
    for (const PageFile& file : pageFiles())
        server.Get(start + std::string(file.name), [file](const Request&, Response& response) {
            response.set_content(file.content.data(), file.content.size(), std::string(file.type));
        });
    server.Get(start + "events", [this](const Request&, Response& response) { stream(response); });
    server.Post(start + "run", [this](const Request& request, Response& response) { run(request, response); });
    const bool bound =
        port ? server.bind_to_port("127.0.0.1", port) : (port = server.bind_to_any_port("127.0.0.1")) > 0;
    if (!bound)
        throw std::runtime_error("the port " + std::to_string(port) +
                                 " is not available (choose another --port, or leave it out)");
    host = port == 80 ? "127.0.0.1" : "127.0.0.1:" + std::to_string(port);
    state = std::make_unique<State>(commands, panel.directory());
    std::thread([this] { server.listen_after_bind(); }).detach();
}

std::string Server::address() const {
    return "http://" + host + '/' + token + '/';
}

// Refuses a request before its body is read. Other pages do not know the token. The check of the host name keeps out
// pages whose own host name resolves to this machine (DNS rebinding).
httplib::Server::HandlerResponse Server::admit(const Request& request, Response& response) {
    const bool known = request.path.rfind('/' + token + '/', 0) == 0;
    const bool hostNamed = request.get_header_value("Host") == host;
    const bool foreign = request.has_header("Origin") && request.get_header_value("Origin") != "http://" + host;
    // A compressed body could expand to any size.
    const bool plain =
        request.get_header_value("Content-Type") == "application/json" && !request.has_header("Content-Encoding");
    if (!known || !hostNamed || foreign)
        refuse(response, 403, "Access denied");
    else if (request.method == "POST" && !plain)
        refuse(response, 415, "The request must be plain JSON");
    else
        return Admission::Unhandled;
    return Admission::Handled;
}

void Server::run(const Request& request, Response& response) {
    const Json order = panel::parseJson(request.body); // an exception becomes the status 400
    const std::string id = order.value("id", "");
    const std::vector<std::string> words = order.at("words");
    if (std::any_of(words.begin(), words.end(), [](const auto& word) { return word.find('\0') != word.npos; }))
        return refuse(response, 400, "A word has a zero");
    const bool end = words.at(0) == "off" || words[0] == "cut";
    const std::shared_ptr<void> done(nullptr, [this](void*) { --atWork; });
    if (++atWork > mostCommands && !end)
        return refuse(response, 503, "Too many commands at a time");
    // The request does not wait for the command: a browser has few connections.
    std::thread([this, id, words, done] {
        Outcome outcome{1, ""};
        try {
            outcome = commands.run(words);
        } catch (const std::exception& error) {
            outcome.text = error.what();
        }
        outcome.text.erase(0, outcome.text.size() - std::min(outcome.text.size(), mostText));
        state->addOutcome(panel::jsonText({{"id", id}, {"code", outcome.code}, {"text", outcome.text}}, oneLine));
    }).detach();
    response.status = 202;
}

void Server::stream(Response& response) {
    const auto lines = std::make_shared<Lines>(panel);
    state->wake(); // ends the streams of pages that were closed
    const std::shared_ptr<void> done(nullptr, [this](void*) { --streams; });
    if (++streams > mostStreams)
        return refuse(response, 503, "Too many pages show this panel");
    response.set_chunked_content_provider("text/event-stream", [this, lines, version = std::uint64_t{},
                                                                done](std::size_t, httplib::DataSink& sink) mutable {
        return sendNews(sink, *lines, version);
    });
}

bool Server::sendNews(httplib::DataSink& sink, Lines& lines, std::uint64_t& version) try {
    const std::uint64_t before = version;
    const auto news = state->wait(version, heartbeat);
    if (!sink.is_writable()) // the page was closed
        return false;
    for (const auto& [name, json] : news)
        if (!send(sink, name, json))
            return false;
    for (const auto& [file, gone, some] : lines.read())
        if (!send(
                sink, "lines",
                panel::jsonText({{"file", file}, {"gone", gone}, {"history", before == 0}, {"lines", some}}, oneLine)))
            return false;
    return version != before || sink.write(":\n\n", 3);
} catch (const std::exception&) { // the library would let it end the process; the page connects again
    return false;
}

} // namespace view
