// The web server of the library, with limits for what one client can cost: the library itself would read header lines
// without an end.
#pragma once

#include <httplib.h>

#include <mutex>
#include <set>

namespace view {

class Connections : public httplib::Server {
public:
    // Takes no further connection, and ends those that are still sending their request.
    void end();

private:
    bool process_and_close_socket(socket_t socket) override; // one request a connection

    std::mutex mutex;
    std::set<socket_t> open;
};

} // namespace view
