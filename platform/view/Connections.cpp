#include "platform/view/Connections.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace view {

namespace {

constexpr std::size_t mostBytes = 128 << 10; // size of a request with its header
constexpr std::chrono::seconds mostTime(10); // duration of a request
constexpr timeval patience{10, 0}; // wait for the next byte in either direction

class Connection : public httplib::Stream {
public:
    explicit Connection(socket_t opened) : file(opened) {
        setsockopt(file, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        setsockopt(file, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    }

    ssize_t read(char* place, std::size_t size) override {
        if (at == end) {
            // The socket's time-out limits each read. This limits their sum: a client could send a byte at a time.
            if (total >= mostBytes || std::chrono::steady_clock::now() > deadline)
                return -1;
            const ssize_t got = recv(file, buffer, sizeof buffer, 0);
            if (got <= 0)
                return got;
            total += static_cast<std::size_t>(got);
            at = 0;
            end = static_cast<std::size_t>(got);
        }
        size = std::min(size, end - at);
        std::copy_n(buffer + at, size, place);
        at += size;
        return static_cast<ssize_t>(size);
    }
    ssize_t write(const char* place, std::size_t size) override {
        return send(file, place, size, MSG_NOSIGNAL);
    }
    // The library asks this before a read. The read itself waits, with a time-out.
    bool is_readable() const override {
        return true;
    }
    bool is_writable() const override { // also false once the client has closed the connection
        pollfd entry{file, POLLOUT | POLLRDHUP, 0};
        return poll(&entry, 1, static_cast<int>(patience.tv_sec * 1000)) > 0 && entry.revents == POLLOUT;
    }
    void get_remote_ip_and_port(std::string&, int&) const override {}
    void get_local_ip_and_port(std::string&, int&) const override {}
    socket_t socket() const override {
        return file;
    }

private:
    const socket_t file;
    const std::chrono::steady_clock::time_point deadline = std::chrono::steady_clock::now() + mostTime;
    char buffer[4096];
    std::size_t at = 0;
    std::size_t end = 0;
    std::size_t total = 0;
};

class Threads : public httplib::TaskQueue {
    void enqueue(std::function<void()> task) override {
        for (;;)
            try {
                return std::thread(task).detach();
            } catch (const std::system_error&) { // this machine has no thread left: new connections wait
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
            }
    }
    void shutdown() override {}
};

} // namespace

Connections::Connections() {
    new_task_queue = [] { return new Threads; };
}

bool Connections::process_and_close_socket(socket_t socket) {
    Connection connection(socket);
    bool closed = false;
    const bool good = process_request(connection, true, closed, nullptr);
    shutdown(socket, SHUT_RDWR);
    close(socket);
    return good;
}

} // namespace view
