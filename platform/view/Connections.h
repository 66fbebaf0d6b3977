// The web server of the library, with limits for what one client can cost: the library itself would read header lines
// without an end.
#pragma once

#include <httplib.h>

namespace view {

class Connections : public httplib::Server {
    bool process_and_close_socket(socket_t socket) override; // one request a connection
};

} // namespace view
