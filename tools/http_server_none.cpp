// No server over HTTP: the command was built so.
#include "failure.hpp"
#include "http_server.hpp"

namespace tool {

void serve_http(const HttpService &service) {
    throw Failure(service.address +
                  ": this tlxpki was built without an HTTP server; on Windows none has one");
}

}  // namespace tool
