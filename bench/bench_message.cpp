// Messages beside libcrypto's CMS: decoding a signed message with three certificates; signing and verifying
// 1 KB and 16 MB with RSA-2048 and SHA-256, from content to DER and back; many signers with certificates.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <memory>

#include "peer_bench_message.hpp"

namespace {

struct Free {
    void operator()(P7_CONTENT_INFO *info) const { free_P7_CONTENT_INFO(info); }
    void operator()(X509_CERT *cert) const { free_X509_CERT(cert); }
    void operator()(X509_PUBKEY *key) const { free_X509_PUBKEY(key); }
    void operator()(ASYMMETRIC_KEY *key) const { free_ASYMMETRIC_KEY(key); }
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(BIGINT *number) const { free_BIGINT(number); }
    void operator()(ASN1_TIME *time) const { free_ASN1_TIME(time); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

/// A key and the certificate of the test data for it, whose own signature is of no account here.
struct Signer {
    Owned<RSA_UNIT> unit{new_RSA_UNIT()};
    Owned<ASYMMETRIC_KEY> key{new_ASYMMETRIC_KEY()};
    Owned<X509_CERT> cert;
    Owned<ASN1_TIME> time;

    Signer() {
        void *read = nullptr;
        readDER_from_File(&read, TLX_DECODER(Seq_to_X509_CERT), TLX_TEST_DATA "/chain/user.der");
        cert.reset(static_cast<X509_CERT *>(read));
        gen_RSA_UNIT(unit.get(), 2048, 65537);
        set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get());
        const Owned<X509_PUBKEY> open(new_X509_PUBKEY());
        set_X509_PUBKEY_rsa(open.get(), unit.get());
        set_X509_pub_key(cert.get(), open.get());
        time.reset(X509_TIME_to_ASN1_TIME(get_X509_notBefore(cert.get())));
    }
    static const Signer &instance() {
        static const Signer made;
        return made;
    }
};

/// A message of signers with serial numbers from 1 on, each with its certificate.
Owned<P7_CONTENT_INFO> message_of(std::int64_t signers) {
    const Signer &signer = Signer::instance();
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    const Owned<BIGINT> serial(new_BIGINT());
    const Owned<X509_CERT> cert(dup_X509_CERT(signer.cert.get()));
    set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA);
    for (std::int64_t i = 1; i <= signers; ++i) {
        set_BIGINT_word(serial.get(), static_cast<std::uint32_t>(i));
        set_X509_serial(cert.get(), serial.get());
        add_PKCS7_Certificate(info.get(), cert.get());
        add_PKCS7_Signature(info.get(), cert.get(), signer.key.get(), TLX_OID_SHA256);
    }
    return info;
}

Octets encoded(const P7_CONTENT_INFO *info) {
    std::uint8_t *der = nullptr;
    const std::uint32_t size = writeDER_to_Binary(info, TLX_ENCODER(P7_CONTENT_INFO_to_Seq), &der);
    const Octets octets(der, der + (size == 0xFFFFFFFF ? 0 : size));
    tlx_free(der);
    return octets;
}

Owned<P7_CONTENT_INFO> decoded(const Octets &message) {
    void *info = nullptr;
    readDER_from_Buffer(&info, TLX_DECODER(Seq_to_P7_CONTENT_INFO), message.data(),
                        static_cast<std::uint32_t>(message.size()));
    return Owned<P7_CONTENT_INFO>(static_cast<P7_CONTENT_INFO *>(info));
}

Octets signed_message(std::int64_t signers, const Octets &content) {
    const auto info = message_of(signers);
    const std::uint32_t status = sign_PKCS7_withAttributes(
        info.get(), content.data(), static_cast<std::int32_t>(content.size()), 0, nullptr);
    return status == 0 ? encoded(info.get()) : Octets();
}

void check(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("the operation failed");
}

Octets content_of(const benchmark::State &state) {
    return Octets(static_cast<std::size_t>(state.range(0)), 0x5A);
}

/// One signer and three certificates.
Octets small_message() {
    const auto info = message_of(1);
    for (int i = 0; i < 2; ++i)
        add_PKCS7_Certificate(info.get(), Signer::instance().cert.get());
    const std::uint8_t content[1000] = {};
    sign_PKCS7_withAttributes(info.get(), content, sizeof content, 0, nullptr);
    return encoded(info.get());
}

void message_decode(benchmark::State &state) {
    const Octets message = small_message();
    for (auto _ : state)
        check(state, decoded(message) != nullptr);
}
BENCHMARK(message_decode);

void message_decode_libcrypto(benchmark::State &state) {
    const Octets message = small_message();
    for (auto _ : state)
        check(state, decode_and_free(message));
}
BENCHMARK(message_decode_libcrypto);

void message_sign(benchmark::State &state) {
    const Octets content = content_of(state);
    for (auto _ : state)
        check(state, !signed_message(1, content).empty());
}
BENCHMARK(message_sign)->Arg(1 << 10)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

void message_sign_libcrypto(benchmark::State &state) {
    const PeerSigner peer;
    const Octets content = content_of(state);
    for (auto _ : state)
        check(state, !peer.sign(content).empty());
}
BENCHMARK(message_sign_libcrypto)->Arg(1 << 10)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

void message_verify(benchmark::State &state) {
    const Octets message = signed_message(1, content_of(state));
    for (auto _ : state) {
        const auto info = decoded(message);
        check(state, verify_PKCS7_Signers(info.get(), nullptr, 0, nullptr, nullptr,
                                          Signer::instance().time.get(), nullptr) == 0);
    }
}
BENCHMARK(message_verify)->Arg(1 << 10)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

void message_verify_libcrypto(benchmark::State &state) {
    const PeerSigner peer;
    const Octets message = peer.sign(content_of(state));
    for (auto _ : state)
        check(state, peer.verify(message));
}
BENCHMARK(message_verify_libcrypto)->Arg(1 << 10)->Arg(16 << 20)->Unit(benchmark::kMicrosecond);

/// What final_PKCS7_Sign() and verify_PKCS7() do at the least with 16 MB.
void digest_16_megabytes(benchmark::State &state) {
    const Octets content(16 << 20, 0x5A);
    std::uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    std::uint32_t length = 0;
    for (auto _ : state)
        check(state, Digest(TLX_DIGEST_SHA256, content.data(), 16 << 20, digest, &length) == 0);
}
BENCHMARK(digest_16_megabytes)->Unit(benchmark::kMicrosecond);

void named_verify_16_megabytes(benchmark::State &state) {
    const auto info = decoded(signed_message(1, Octets(16 << 20, 0x5A)));
    for (auto _ : state)
        check(state, verify_PKCS7(info.get(), nullptr, nullptr, 0) == 0);
}
BENCHMARK(named_verify_16_megabytes)->Unit(benchmark::kMicrosecond);

/// Linear in the signers, each with a certificate.
void many_signers_verify(benchmark::State &state) {
    const Octets content(1000, 0x5A);
    const auto info = decoded(signed_message(state.range(0), content));
    for (auto _ : state) {
        check(state, verify_PKCS7_Signers(info.get(), nullptr, 0, nullptr, nullptr,
                                          Signer::instance().time.get(), nullptr) == 0);
    }
}
BENCHMARK(many_signers_verify)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
