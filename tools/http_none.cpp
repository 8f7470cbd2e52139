// No requests over HTTP: the command was built so.
#include "failure.hpp"
#include "http.hpp"

namespace tool {

HttpAnswer ask_http(const HttpRequest &request) {
    throw Failure(request.url + ": this tlxpki was built without HTTP");
}

std::vector<std::string> ask_ldap(const HttpRequest &request) {
    throw Failure(request.url + ": is not fetched: this tlxpki has no LDAP");
}

}  // namespace tool
