// A response about one certificate, from its data to DER, beside the bare signature in it, and what a client
// makes of it beside the bare verification. RSA-2048 and SHA-256.
#include <benchmark/benchmark.h>
#include <tlxpki.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include <string>

#include "../tools/owned.hpp"

namespace {

using tool::Certificate;
using tool::Owned;
using Response = Owned<OCSP_RESPONSE, free_OCSP_RESPONSE>;

Certificate read_certificate(const std::string &name) {
    void *read = nullptr;
    readDER_from_File(&read, TLX_DECODER(Seq_to_X509_CERT), (TLX_TEST_DATA "/chain/" + name).c_str());
    return Certificate(static_cast<X509_CERT *>(read));
}

/// A CA of the test data with a new key, which answers for a certificate below it.
struct Responder {
    Owned<RSA_UNIT, free_RSA_UNIT> unit{new_RSA_UNIT()};
    Owned<P8_PRIV_KEY_INFO, free_P8_PRIV_KEY_INFO> key{new_P8_PRIV_KEY_INFO()};
    Certificate cert = read_certificate("user.der");
    Certificate ca = read_certificate("middle.der");
    Owned<ASN1_TIME, free_ASN1_TIME> time{X509_TIME_to_ASN1_TIME(get_X509_notBefore(cert.get()))};
    Owned<ASN1_STRING, free_ASN1_STRING> now{asn1TimeToGENERALIZED_TIME(time.get(), 2)};
    OCSP_CERT_ID *id = nullptr;  // stays

    Responder() {
        const Owned<ASYMMETRIC_KEY, free_ASYMMETRIC_KEY> holder(new_ASYMMETRIC_KEY());
        const Owned<X509_PUBKEY, free_X509_PUBKEY> open(new_X509_PUBKEY());
        gen_RSA_UNIT(unit.get(), 2048, 65537);
        set_ASYMMETRIC_KEY(holder.get(), TLX_KEY_RSA, unit.get());
        set_PRIV_KEY_KeyParams(key.get(), holder.get());
        set_X509_PUBKEY_rsa(open.get(), unit.get());
        set_X509_pub_key(ca.get(), open.get());
        gen_SIG_X509_Cert(ca.get(), holder.get());
        generate_OCSP_CERT_ID(&id, cert.get(), ca.get(), TLX_DIGEST_SHA1);
    }
    static Responder &instance() {
        static Responder made;
        return made;
    }
    Response respond() {
        const std::uint8_t nonce[34] = {};
        OCSP_RESPONSE_DATA *data = nullptr;
        BASIC_OCSP_RESPONSE *basic = nullptr;
        OCSP_RESPONSE_BYTES *bytes = nullptr;
        OCSP_RESPONSE *response = nullptr;
        generate_OCSP_RESPONSE_DATA(&data, ca.get(), TLX_OCSP_BY_NAME, 0, nonce, sizeof nonce);
        add_single_OCSP_RESPONSE(data, &id, TLX_OCSP_GOOD, nullptr, now.get(), now.get());
        generate_BASIC_OCSP_RESPONSE_ex(&basic, data, ca.get(), key.get(), TLX_DIGEST_SHA256);
        const Owned<BASIC_OCSP_RESPONSE, free_BASIC_OCSP_RESPONSE> owner(basic);
        generate_OCSP_RESPONSE_BYTES(&bytes, basic);
        generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL);
        return Response(response);
    }
};

void check(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("the operation failed");
}

void ocsp_respond(benchmark::State &state) {
    for (auto _ : state) {
        const Response response = Responder::instance().respond();
        std::uint8_t *der = nullptr;
        check(state, writeDER_to_Binary(response.get(), TLX_ENCODER(OCSP_RESPONSE_to_Seq), &der) > 1000);
        tlx_free(der);
    }
}
BENCHMARK(ocsp_respond);

/// As many octets as the data of the response have.
constexpr std::uint8_t kData[300] = {};

void bare_signature(benchmark::State &state) {
    std::uint8_t signature[256];
    std::uint32_t length = 0;
    for (auto _ : state) {
        check(state, sign_RSA(Responder::instance().unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData,
                              sizeof kData, signature, &length) == 0);
    }
}
BENCHMARK(bare_signature);

void ocsp_check(benchmark::State &state) {
    const Responder &responder = Responder::instance();
    const Response response = Responder::instance().respond();
    OCSP_ANSWER answer;
    for (auto _ : state) {
        check(state, check_OCSP_RESPONSE(response.get(), responder.cert.get(), responder.ca.get(), nullptr, 0,
                                         responder.time.get(), &answer) == 0);
    }
}
BENCHMARK(ocsp_check);

void bare_verification(benchmark::State &state) {
    std::uint8_t signature[256];
    std::uint32_t length = 0;
    const RSA_UNIT *unit = Responder::instance().unit.get();
    sign_RSA(unit, TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData, sizeof kData, signature, &length);
    for (auto _ : state) {
        check(state, verify_RSA(unit, TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData, sizeof kData, signature,
                                length) == 0);
    }
}
BENCHMARK(bare_verification);

}  // namespace
