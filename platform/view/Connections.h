// The library's web server with a thread per connection, so that idle connections delay no other one, and with limits
// on the size and duration of a request. The library itself would read header lines without end.
#pragma once

#include <httplib.h>

namespace view {

class Connections : public httplib::Server {
public:
    Connections();

private:
    bool process_and_close_socket(socket_t socket) override; // handles one request per connection
};

} // namespace view
