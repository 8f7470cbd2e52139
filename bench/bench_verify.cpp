// Verifying the signature of a certificate: RSA-2048 with SHA-256 beside libcrypto, which starts from a ready
// key and digest or verifies the same certificate; KCDSA beside its bare verification.
#include <benchmark/benchmark.h>
#include <tlxpki.h>

#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include "peer_bench_verify.hpp"

namespace {

struct Free {
    void operator()(X509_CERT *cert) const { free_X509_CERT(cert); }
    void operator()(X509_PUBKEY *key) const { free_X509_PUBKEY(key); }
    void operator()(ASYMMETRIC_KEY *key) const { free_ASYMMETRIC_KEY(key); }
    void operator()(RSA_UNIT *unit) const { free_RSA_UNIT(unit); }
    void operator()(KCDSA *unit) const { free_KCDSA(unit); }
    void operator()(BIGINT *number) const { free_BIGINT(number); }
    void operator()(OBJECT_IDENTIFIER *oid) const { free_OBJECT_IDENTIFIER(oid); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

Octets octets_of(const BIGINT *number) {
    Octets octets((get_BIGINT_bits(number) + 7) / 8);
    BIGINT_to_binary(number, octets.data(), static_cast<std::uint32_t>(octets.size()));
    return octets;
}

/// The certificate of the test data, for a key and signed with it.
Owned<X509_CERT> certificate(const X509_PUBKEY *public_key, std::uint32_t kind, const void *unit,
                             const char *algorithm) {
    std::ifstream file(TLX_TEST_DATA "/x509/user.der", std::ios::binary);
    const std::string der{std::istreambuf_iterator<char>(file), {}};
    void *out = nullptr;
    readDER_from_Buffer(&out, TLX_DECODER(Seq_to_X509_CERT),
                        reinterpret_cast<const std::uint8_t *>(der.data()),
                        static_cast<std::uint32_t>(der.size()));
    Owned<X509_CERT> cert(static_cast<X509_CERT *>(out));
    const Owned<ASYMMETRIC_KEY> key(new_ASYMMETRIC_KEY());
    set_ASYMMETRIC_KEY(key.get(), kind, unit);
    set_X509_pub_key(cert.get(), public_key);
    set_X509_signature(cert.get(), Owned<OBJECT_IDENTIFIER>(get_OBJECT_IDENTIFIER(algorithm, 0)).get());
    if (gen_SIG_X509_Cert(cert.get(), key.get()) != 0) cert.reset();
    return cert;
}

struct RsaCase {
    Owned<RSA_UNIT> unit{new_RSA_UNIT()};
    Owned<X509_PUBKEY> key{new_X509_PUBKEY()};
    Owned<X509_CERT> cert;

    RsaCase() {
        gen_RSA_UNIT(unit.get(), 2048, 65537);
        set_X509_PUBKEY_rsa(key.get(), unit.get());
        cert = certificate(key.get(), TLX_KEY_RSA, unit.get(), "RSA-SHA256");
    }
    static const RsaCase &instance() {
        static const RsaCase made;
        return made;
    }
    [[nodiscard]] PeerKey peer() const {
        return {octets_of(get_RSA_UNIT_number(unit.get(), TLX_RSA_N)),
                octets_of(get_RSA_UNIT_number(unit.get(), TLX_RSA_E))};
    }
};

void BM_VerifyRsaCertificate(benchmark::State &state) {
    const RsaCase &rsa = RsaCase::instance();
    for (auto _ : state) {
        if (verify_SIG_X509_CERT(rsa.cert.get(), rsa.key.get()) != 0) state.SkipWithError("does not verify");
    }
}
BENCHMARK(BM_VerifyRsaCertificate);

void BM_VerifyReadyDigestLibcrypto(benchmark::State &state) {
    const RsaCase &rsa = RsaCase::instance();
    const PeerKey peer = rsa.peer();
    const BIT_STRING *value = get_X509_sig_value(rsa.cert.get());
    const Octets signature(value->data, value->data + value->length);
    Octets digest(32);
    get_ASN1_hash(rsa.cert->tbsCertificate, TLX_ENCODER(X509_TBS_CERT_to_Seq), TLX_DIGEST_SHA256,
                  digest.data());
    for (auto _ : state) {
        if (!peer.verify(signature, digest)) state.SkipWithError("does not verify");
    }
}
BENCHMARK(BM_VerifyReadyDigestLibcrypto);

void BM_VerifyRsaCertificateLibcrypto(benchmark::State &state) {
    const RsaCase &rsa = RsaCase::instance();
    const PeerKey peer = rsa.peer();
    std::uint8_t *der = nullptr;
    const std::uint32_t size = writeDER_to_Binary(rsa.cert.get(), TLX_ENCODER(X509_CERT_to_Seq), &der);
    const PeerCert cert(Octets(der, der + size));
    tlx_free(der);
    for (auto _ : state) {
        if (!peer.verify(cert.get())) state.SkipWithError("does not verify");
    }
}
BENCHMARK(BM_VerifyRsaCertificateLibcrypto);

/// The 1024/160 key of the published vectors, the last section of the file.
struct KcdsaCase {
    Owned<KCDSA> unit{new_KCDSA()};
    Owned<X509_PUBKEY> key{new_X509_PUBKEY()};
    Owned<X509_CERT> cert;

    KcdsaCase() {
        std::map<char, Owned<BIGINT>> numbers;
        std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
        for (std::string line; std::getline(file, line);) {
            if (line.size() > 4 && line[1] == ' ') numbers[line[0]].reset(hex_to_BIGINT(line.c_str() + 4));
        }
        set_KCDSA_params(unit.get(), numbers['p'].get(), numbers['q'].get(), numbers['g'].get());
        set_KCDSA_private(unit.get(), numbers['x'].get());
        set_KCDSA_public(unit.get(), numbers['y'].get());
        set_X509_PUBKEY_kcdsa(key.get(), unit.get());
        cert = certificate(key.get(), TLX_KEY_KCDSA, unit.get(), "KCDSAwithHAS160");
    }
    static const KcdsaCase &instance() {
        static const KcdsaCase made;
        return made;
    }
};

void BM_VerifyKcdsaCertificate(benchmark::State &state) {
    const KcdsaCase &kcdsa = KcdsaCase::instance();
    for (auto _ : state) {
        if (verify_SIG_X509_CERT(kcdsa.cert.get(), kcdsa.key.get()) != 0)
            state.SkipWithError("does not verify");
    }
}
BENCHMARK(BM_VerifyKcdsaCertificate);

/// The same arithmetic over a message of one octet.
void BM_VerifyBareKcdsa(benchmark::State &state) {
    const KcdsaCase &kcdsa = KcdsaCase::instance();
    const std::uint8_t message = 0x5A;
    std::uint8_t r[TLX_KCDSA_MAX_LENGTH];
    std::uint8_t s[TLX_KCDSA_MAX_LENGTH];
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    sign_KCDSA_data(kcdsa.unit.get(), TLX_DIGEST_HAS160, &message, 1, r, &r_len, s, &s_len);
    for (auto _ : state) {
        if (verify_KCDSA_data(kcdsa.unit.get(), TLX_DIGEST_HAS160, &message, 1, r, r_len, s, s_len) != 0) {
            state.SkipWithError("does not verify");
        }
    }
}
BENCHMARK(BM_VerifyBareKcdsa);

}  // namespace
