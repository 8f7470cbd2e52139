#include "fetch.hpp"

#include <tlxpki/ocsp.h>

#include <utility>

#include "block_kind.hpp"
#include "element.hpp"
#include "failure.hpp"
#include "http.hpp"
#include "input.hpp"
#include "status.hpp"
#include "strict_report.hpp"

namespace tool {

namespace {

constexpr uint32_t kNoMemory = 0x5502003C;
constexpr int kOk = 200;
constexpr std::chrono::seconds kConnectLimit{5};
constexpr std::chrono::seconds kLimit{20};
constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr uint8_t kContext0 = 0xA0;

/// A list of a million entries takes some 40 MB.
std::size_t most_octets(uint32_t kind) {
    return kind == TLX_FETCH_CRL ? 64 * kMegabyte : kMegabyte;
}

Octets octets_of_text(const std::string &text) {
    return {reinterpret_cast<const uint8_t *>(text.data()), text.size()};
}

/// A request for the status of a certificate, without a nonce, so that responders can answer beforehand.
std::string ocsp_request(const VERIFY_REQUEST &request) {
    const Certificate cert = decode_received({request.certificate, request.certificate_len});
    const Certificate issuer = decode_received({request.issuer, request.issuer_len});
    OCSP_REQUEST *made = nullptr;
    const uint32_t status = generate_OCSP_REQUEST(&made, cert.get(), issuer.get(), TLX_DIGEST_SHA1);
    const Owned<OCSP_REQUEST, free_OCSP_REQUEST> owner(made);
    if (status != 0) throw Failure("no OCSP request can be made: " + exact_status_sentence(status));
    uint8_t *octets = nullptr;
    const uint32_t size = TLX_WRITE_DER(OCSP_REQUEST, made, &octets);
    const Owned<uint8_t, tlx_free> octets_owner(octets);
    if (octets == nullptr) throw std::bad_alloc();
    return {reinterpret_cast<const char *>(octets), size};
}

std::vector<std::string> ask_over_http(HttpRequest &http, const VERIFY_REQUEST &request) {
    if (request.kind == TLX_FETCH_OCSP) {
        http.content_type = "application/ocsp-request";
        http.body = ocsp_request(request);
    }
    HttpAnswer answer = ask_http(http);
    if (answer.status != kOk) {
        throw Failure(http.url + ": answers with HTTP status " + std::to_string(answer.status));
    }
    return {std::move(answer.body)};
}

/// The certificates in signed data (RFC 5652): ContentInfo has SignedData in [0], and that the set in [0].
std::vector<Octets> certificates_of_message(Octets message) {
    const Octets content = child_of(message, 1);
    for (const Octets member : children_of(child_of(content, 0))) {
        if (member[0] == kContext0) return children_of(member);
    }
    return {};
}

void expect_added(uint32_t status) {
    if (status == kNoMemory) throw std::bad_alloc();
    if (status != 0) throw Failure("gives what cannot be used: " + exact_status_sentence(status));
}

uint32_t size_of(Octets octets) {
    return static_cast<uint32_t>(octets.size());
}

}  // namespace

void Fetcher::serve(VERIFY_SETTINGS &settings) {
    settings.fetch = fetch;
    settings.fetch_context = this;
}

std::vector<std::string> Fetcher::take_warnings() {
    return std::exchange(warnings_, {});
}

/// No exception leaves it: the library has none.
uint32_t Fetcher::fetch(void *context, const VERIFY_REQUEST *request, VERIFY_STORE *fetched) {
    try {
        static_cast<Fetcher *>(context)->ask(*request, fetched);
        return 0;
    } catch (const std::bad_alloc &) {
        return kNoMemory;
    }
}

void Fetcher::ask(const VERIFY_REQUEST &request, VERIFY_STORE *fetched) {
    for (uint32_t i = 0; i < request.url_count; ++i) {
        const std::string url = request.urls[i];
        try {
            return take(request, url, fetched);
        } catch (const Failure &failure) {
            const std::string reason = failure.what();
            const std::string place = reason.starts_with(url) ? "" : url + ": ";
            warnings_.push_back(place + reason);
        }
    }
}

void Fetcher::take(const VERIFY_REQUEST &request, const std::string &url, VERIFY_STORE *fetched) const {
    HttpRequest http;
    http.url = url;
    http.connect_limit = kConnectLimit;
    http.limit = kLimit;
    http.most_octets = most_octets(request.kind);
    std::string problem = "gives nothing";
    for (const std::string &octets : is_ldap(url) ? ask_ldap(http) : ask_over_http(http, request)) {
        try {
            add(request.kind, octets, fetched);
            problem.clear();
        } catch (const Failure &failure) {
            if (!problem.empty()) problem = failure.what();
        }
    }
    if (!problem.empty()) throw Failure(problem);
}

void Fetcher::add(uint32_t kind, const std::string &octets, VERIFY_STORE *fetched) const {
    const Octets all = octets_of_text(octets);
    if (kind == TLX_FETCH_CRL) return expect_added(add_VERIFY_STORE_crl(fetched, all.data(), size_of(all)));
    if (kind == TLX_FETCH_OCSP) return expect_added(add_VERIFY_STORE_ocsp(fetched, all.data(), size_of(all)));
    add_certificates(octets, fetched);
}

/// RFC 5280, section 4.2.2.1: a certificate or a message with certificates alone; some servers give PEM.
void Fetcher::add_certificates(const std::string &octets, VERIFY_STORE *fetched) const {
    const Input input(octets_of_text(octets), "what it gives");
    for (const Block &block : input.blocks()) {
        expect_one_element(block);
        std::vector<Octets> certificates = {block.octets};
        if (kind_of(block) == Kind::kMessage) certificates = certificates_of_message(block.octets);
        for (const Octets each : certificates) {
            expect_added(add_VERIFY_STORE_certificate(fetched, each.data(), size_of(each), accepted_faults_));
        }
    }
}

}  // namespace tool
