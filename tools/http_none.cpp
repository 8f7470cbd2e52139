// No requests over HTTP: the command was built so.
#include "failure.hpp"
#include "http.hpp"

namespace tool {

HttpAnswer ask_http(const HttpRequest &request) {
    throw Failure(request.url + ": this tlxpki was built without HTTP");
}

}  // namespace tool
