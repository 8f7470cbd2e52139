// Messages beside libcrypto's CMS: decoding a signed message with three certificates; signing and verifying
// 1 KB and 16 MB with RSA-2048 and SHA-256, from content to DER and back. And final_PKCS7_Sign() and
// verify_PKCS7() beside the digest and the signature in them; many signers with certificates and paths.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <map>
#include <memory>
#include <string>

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
    void operator()(TRUST_ANCHOR *anchor) const { free_TRUST_ANCHOR(anchor); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

Owned<X509_CERT> read_certificate(const std::string &name) {
    void *read = nullptr;
    readDER_from_File(&read, TLX_DECODER(Seq_to_X509_CERT), (TLX_TEST_DATA "/chain/" + name).c_str());
    return Owned<X509_CERT>(static_cast<X509_CERT *>(read));
}

/// The chain of the test data, all with the same new key.
struct Signer {
    Owned<RSA_UNIT> unit{new_RSA_UNIT()};
    Owned<ASYMMETRIC_KEY> key{new_ASYMMETRIC_KEY()};
    Owned<X509_CERT> cert = read_certificate("user.der");
    X509_CERTIFICATES *const pool = new_X509_CERTIFICATES();  // this and the anchors stay
    TRUST_ANCHORS *const anchors = new_TRUST_ANCHORS();
    Owned<ASN1_TIME> time{X509_TIME_to_ASN1_TIME(get_X509_notBefore(cert.get()))};

    Signer() {
        const Owned<X509_CERT> middle = read_certificate("middle.der");
        const Owned<X509_CERT> root = read_certificate("root.der");
        gen_RSA_UNIT(unit.get(), 2048, 65537);
        set_ASYMMETRIC_KEY(key.get(), TLX_KEY_RSA, unit.get());
        const Owned<X509_PUBKEY> open(new_X509_PUBKEY());
        set_X509_PUBKEY_rsa(open.get(), unit.get());
        for (X509_CERT *each : {cert.get(), middle.get(), root.get()}) {
            set_X509_pub_key(each, open.get());
            gen_SIG_X509_Cert(each, key.get());
        }
        const Owned<TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(root.get()));
        add_TRUST_ANCHORS(anchors, anchor.get());
        add_X509_CERTIFICATES(pool, middle.get());
        add_X509_CERTIFICATES(pool, root.get());
    }
    static const Signer &instance() {
        static const Signer made;
        return made;
    }
};

/// A message of signers, each with a certificate of its own.
Owned<P7_CONTENT_INFO> message_of(std::int64_t signers) {
    const Signer &signer = Signer::instance();
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    const Owned<BIGINT> serial(new_BIGINT());
    const Owned<X509_CERT> cert(dup_X509_CERT(signer.cert.get()));
    set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA);
    for (std::int64_t i = 0; i < signers; ++i) {
        if (i > 0) {
            set_BIGINT_word(serial.get(), static_cast<std::uint32_t>(0x10000000 + i));
            set_X509_serial(cert.get(), serial.get());
            gen_SIG_X509_Cert(cert.get(), signer.key.get());
        }
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

void message_decode_libcrypto_cms(benchmark::State &state) {
    const Octets message = small_message();
    for (auto _ : state)
        check(state, decode_cms_and_free(message));
}
BENCHMARK(message_decode_libcrypto_cms);

void message_decode_libcrypto_pkcs7(benchmark::State &state) {
    const Octets message = small_message();
    for (auto _ : state)
        check(state, decode_pkcs7_and_free(message));
}
BENCHMARK(message_decode_libcrypto_pkcs7);

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

constexpr std::uint32_t kLong = 16 << 20;
constexpr std::uint32_t kScheme = TLX_RSA_MODE_PKCS1;

/// A digest and a signature: what final_PKCS7_Sign() has to do at the least.
void digest_and_sign_16_megabytes(benchmark::State &state) {
    const Octets content(kLong, 0x5A);
    std::uint8_t signature[256];
    std::uint32_t length = 0;
    for (auto _ : state) {
        check(state, sign_RSA(Signer::instance().unit.get(), TLX_DIGEST_SHA256, kScheme, content.data(),
                              kLong, signature, &length) == 0);
    }
}
BENCHMARK(digest_and_sign_16_megabytes)->Unit(benchmark::kMicrosecond);

void final_sign_16_megabytes(benchmark::State &state) {
    const auto info = message_of(1);
    const Octets content(kLong, 0x5A);
    P7_SIGNER_INFO *signer = get_P7_SIGNER_INFOS_child(info->content.signedData->signerInfos, 0);
    init_PKCS7_Sign(info.get(), 0);
    update_PKCS7_Sign(info.get(), content.data(), kLong);
    for (auto _ : state) {
        check(state, final_PKCS7_Sign(info.get()) == 0);
        state.PauseTiming();
        free_ASN1_STRING(signer->encryptedDigest);
        signer->encryptedDigest = nullptr;
        init_PKCS7_Sign(info.get(), 0);
        state.ResumeTiming();
    }
}
BENCHMARK(final_sign_16_megabytes)->Unit(benchmark::kMicrosecond);

/// The same for verify_PKCS7().
void digest_and_verify_16_megabytes(benchmark::State &state) {
    const Octets content(kLong, 0x5A);
    const RSA_UNIT *unit = Signer::instance().unit.get();
    std::uint8_t signature[256];
    std::uint32_t length = 0;
    sign_RSA(unit, TLX_DIGEST_SHA256, kScheme, content.data(), kLong, signature, &length);
    for (auto _ : state) {
        check(state,
              verify_RSA(unit, TLX_DIGEST_SHA256, kScheme, content.data(), kLong, signature, length) == 0);
    }
}
BENCHMARK(digest_and_verify_16_megabytes)->Unit(benchmark::kMicrosecond);

void verify_16_megabytes(benchmark::State &state) {
    const auto info = decoded(signed_message(1, Octets(kLong, 0x5A)));
    for (auto _ : state)
        check(state, verify_PKCS7(info.get(), nullptr, nullptr, 0) == 0);
}
BENCHMARK(verify_16_megabytes)->Unit(benchmark::kMicrosecond);

/// Linear in the signers, each with a certificate, and with anchors also with a path.
void verify_many_signers(benchmark::State &state, const TRUST_ANCHORS *anchors) {
    static std::map<std::int64_t, Owned<P7_CONTENT_INFO>> messages;
    auto &info = messages[state.range(0)];
    if (info == nullptr) info = decoded(signed_message(state.range(0), Octets(1000, 0x5A)));
    for (auto _ : state) {
        check(state, verify_PKCS7_Signers(info.get(), nullptr, 0, Signer::instance().pool, anchors,
                                          Signer::instance().time.get(), nullptr) == 0);
    }
}

void many_signers(benchmark::State &state) {
    verify_many_signers(state, nullptr);
}
BENCHMARK(many_signers)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

void many_signers_with_paths(benchmark::State &state) {
    verify_many_signers(state, Signer::instance().anchors);
}
BENCHMARK(many_signers_with_paths)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
