// tlxpki ocsp request.
#include <iostream>

#include "choice.hpp"
#include "commands.hpp"
#include "failure.hpp"
#include "key_file.hpp"
#include "ocsp.hpp"
#include "output.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr uint32_t kNonceOctets = 32;  // RFC 9654, section 2.1

constexpr Choice kDigests[] = {{"sha1", TLX_DIGEST_SHA1}, {"sha256", TLX_DIGEST_SHA256}};

void must_be_made(uint32_t status) {
    if (status != 0) throw Failure("the request cannot be made: " + exact_status_sentence(status));
}

void sign(OCSP_REQUEST *request, const OcspRequestOptions &options) {
    if (options.signer.empty() != options.key.empty()) throw Failure("--signer and --key go together");
    if (options.signer.empty()) return;
    Password password(options.password_file);
    const Certificate signer = std::move(load_certificates(options.signer).front().cert);
    const KeyFile key = load_key(options.key, password);
    must_be_made(sign_OCSP_REQUEST(request, signer.get(), key.info.get(), TLX_DIGEST_SHA256));
    if (verify_OCSP_REQUEST(request, nullptr) != 0) {
        throw Failure(options.key + ": is not the key of " + options.signer);
    }
}

}  // namespace

int run_ocsp_request(const OcspRequestOptions &options) {
    expect_room_for_json(options.json, options.output);
    const Certificate issuer = std::move(load_certificates(options.issuer).front().cert);
    OCSP_REQUEST *out = nullptr;
    OcspRequest request;
    for (const std::string &path : options.certs) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            const uint32_t status = generate_OCSP_REQUEST(&out, loaded.cert.get(), issuer.get(),
                                                          value_of(kDigests, options.digest));
            if (request == nullptr) request.reset(out);
            must_be_made(status);
        }
    }
    if (options.nonce) must_be_made(generate_OCSP_REQUEST_nonce(out, kNonceOctets));
    sign(out, options);
    uint8_t *octets = nullptr;
    const uint32_t size = TLX_WRITE_DER(OCSP_REQUEST, out, &octets);
    const Owned<uint8_t, tlx_free> owner(octets);
    if (octets == nullptr) throw std::bad_alloc();
    write_octets(options.output, {octets, size});
    if (options.json) {
        Json document = {{"output", options.output}};
        document.update(describe_ocsp_request(out));
        print_json(std::cout, document);
    }
    return kGood;
}

}  // namespace tool
