// Signatures beside bare libcrypto with a ready key, context and digest: RSA-2048 with SHA-256, KCDSA
// 1024/160 with HAS-160 beside DSA of the same size, ECDSA with SHA-256; and Ed25519, which takes the message
// itself.
#include <benchmark/benchmark.h>
#include <openssl/core_names.h>
#include <openssl/dsa.h>
#include <openssl/ecdsa.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <tlxcrypto/digest.h>
#include <tlxcrypto/ecdsa.h>
#include <tlxcrypto/eddsa.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

using Octets = std::vector<std::uint8_t>;

struct Free {
    void operator()(EVP_PKEY *p) const { EVP_PKEY_free(p); }
    void operator()(EVP_PKEY_CTX *p) const { EVP_PKEY_CTX_free(p); }
    void operator()(BIGNUM *p) const { BN_free(p); }
    void operator()(RSA_UNIT *p) const { free_RSA_UNIT(p); }
    void operator()(KCDSA *p) const { free_KCDSA(p); }
    void operator()(ECDSA_KEY *p) const { free_ECDSA_KEY(p); }
    void operator()(EDDSA_KEY *p) const { free_EDDSA_KEY(p); }
    void operator()(ECDSA_SIG *p) const { ECDSA_SIG_free(p); }
    void operator()(EVP_MD_CTX *p) const { EVP_MD_CTX_free(p); }
    void operator()(BIGINT *p) const { free_BIGINT(p); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

// About the size of a certificate's signed part.
const Octets kData(1000, 0x5A);

std::uint32_t data_length() {
    return static_cast<std::uint32_t>(kData.size());
}

void check(benchmark::State &state, bool good) {
    if (!good) state.SkipWithError("the operation failed");
}

// libcrypto's key of a kind, with its parameters where they are a step of their own, and a context for one
// task.
struct Peer {
    Owned<EVP_PKEY> key;
    Owned<EVP_PKEY_CTX> signer;
    Owned<EVP_PKEY_CTX> verifier;
    Octets digest = Octets(32, 0xA5);
    Octets signature = Octets(512);
    std::size_t length = 0;

    void prepare(const EVP_MD *md) {
        signer.reset(EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr));
        verifier.reset(EVP_PKEY_CTX_new_from_pkey(nullptr, key.get(), nullptr));
        EVP_PKEY_sign_init(signer.get());
        EVP_PKEY_verify_init(verifier.get());
        for (EVP_PKEY_CTX *context : {signer.get(), verifier.get()}) {
            if (EVP_PKEY_is_a(key.get(), "RSA") == 1)
                EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PADDING);
            EVP_PKEY_CTX_set_signature_md(context, md);
        }
        digest.resize(static_cast<std::size_t>(EVP_MD_get_size(md)));
        sign();
    }
    bool sign() {
        length = signature.size();
        return EVP_PKEY_sign(signer.get(), signature.data(), &length, digest.data(), digest.size()) == 1;
    }
    bool verify() {
        return EVP_PKEY_verify(verifier.get(), signature.data(), length, digest.data(), digest.size()) == 1;
    }
};

Peer &rsa_peer() {
    static Peer peer = [] {
        Peer made;
        made.key.reset(EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", static_cast<std::size_t>(2048)));
        made.prepare(EVP_sha256());
        return made;
    }();
    return peer;
}

Peer &dsa_peer() {
    static Peer peer = [] {
        Peer made;
        const Owned<EVP_PKEY_CTX> generator(EVP_PKEY_CTX_new_from_name(nullptr, "DSA", nullptr));
        EVP_PKEY *parameters = nullptr;
        EVP_PKEY_paramgen_init(generator.get());
        EVP_PKEY_CTX_set_dsa_paramgen_bits(generator.get(), 1024);
        EVP_PKEY_CTX_set_dsa_paramgen_q_bits(generator.get(), 160);
        EVP_PKEY_paramgen(generator.get(), &parameters);
        const Owned<EVP_PKEY> owned(parameters);
        const Owned<EVP_PKEY_CTX> key_generator(EVP_PKEY_CTX_new_from_pkey(nullptr, parameters, nullptr));
        EVP_PKEY *key = nullptr;
        EVP_PKEY_keygen_init(key_generator.get());
        EVP_PKEY_keygen(key_generator.get(), &key);
        made.key.reset(key);
        made.prepare(EVP_sha1());
        return made;
    }();
    return peer;
}

// libcrypto's RSA key as ours.
RSA_UNIT *rsa_unit() {
    static const Owned<RSA_UNIT> unit = [] {
        Owned<BIGINT> numbers[8];
        const char *const names[8] = {OSSL_PKEY_PARAM_RSA_N,         OSSL_PKEY_PARAM_RSA_E,
                                      OSSL_PKEY_PARAM_RSA_D,         OSSL_PKEY_PARAM_RSA_FACTOR1,
                                      OSSL_PKEY_PARAM_RSA_FACTOR2,   OSSL_PKEY_PARAM_RSA_EXPONENT1,
                                      OSSL_PKEY_PARAM_RSA_EXPONENT2, OSSL_PKEY_PARAM_RSA_COEFFICIENT1};
        for (std::size_t i = 0; i < 8; ++i) {
            BIGNUM *value = nullptr;
            EVP_PKEY_get_bn_param(rsa_peer().key.get(), names[i], &value);
            const Owned<BIGNUM> owned(value);
            Octets octets(static_cast<std::size_t>(BN_num_bytes(value)));
            BN_bn2bin(value, octets.data());
            numbers[i].reset(binary_to_BIGINT(octets.data(), static_cast<std::uint32_t>(octets.size())));
        }
        Owned<RSA_UNIT> made(new_RSA_UNIT());
        set_RSA_UNIT_private(made.get(), numbers[0].get(), numbers[1].get(), numbers[2].get(),
                             numbers[3].get(), numbers[4].get(), numbers[5].get(), numbers[6].get(),
                             numbers[7].get());
        return made;
    }();
    return unit.get();
}

// The 1024/160 key of the published vectors, the last section of the file.
KCDSA *kcdsa_unit() {
    static const Owned<KCDSA> unit = [] {
        std::map<char, std::string> values;
        std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
        for (std::string line; std::getline(file, line);) {
            if (line.size() > 4 && line[1] == ' ') values[line[0]] = line.substr(4);
        }
        const auto number = [&](char name) { return Owned<BIGINT>(hex_to_BIGINT(values[name].c_str())); };
        Owned<KCDSA> made(new_KCDSA());
        set_KCDSA_params(made.get(), number('p').get(), number('q').get(), number('g').get());
        set_KCDSA_private(made.get(), number('x').get());
        set_KCDSA_public(made.get(), number('y').get());
        return made;
    }();
    return unit.get();
}

void rsa_verify(benchmark::State &state) {
    std::uint8_t signature[257];
    std::uint32_t length = 0;
    sign_RSA(rsa_unit(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData.data(), data_length(), signature,
             &length);
    for (auto _ : state) {
        check(state, verify_RSA(rsa_unit(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData.data(),
                                data_length(), signature, length) == 0);
    }
}
BENCHMARK(rsa_verify)->ThreadRange(1, 2);

void rsa_verify_libcrypto(benchmark::State &state) {
    for (auto _ : state)
        check(state, rsa_peer().verify());
}
BENCHMARK(rsa_verify_libcrypto);

// A key used once: the price of preparing it is part of it.
void rsa_verify_under_new_key(benchmark::State &state) {
    std::uint8_t signature[257];
    std::uint32_t length = 0;
    sign_RSA(rsa_unit(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData.data(), data_length(), signature,
             &length);
    for (auto _ : state) {
        const Owned<RSA_UNIT> unit(new_RSA_UNIT());
        set_RSA_UNIT_public(unit.get(), get_RSA_UNIT_number(rsa_unit(), TLX_RSA_N),
                            get_RSA_UNIT_number(rsa_unit(), TLX_RSA_E));
        check(state, verify_RSA(unit.get(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData.data(),
                                data_length(), signature, length) == 0);
    }
}
BENCHMARK(rsa_verify_under_new_key);

void rsa_sign(benchmark::State &state) {
    std::uint8_t signature[257];
    std::uint32_t length = 0;
    for (auto _ : state) {
        check(state, sign_RSA(rsa_unit(), TLX_DIGEST_SHA256, TLX_RSA_MODE_PKCS1, kData.data(), data_length(),
                              signature, &length) == 0);
    }
}
BENCHMARK(rsa_sign);

void rsa_sign_libcrypto(benchmark::State &state) {
    for (auto _ : state)
        check(state, rsa_peer().sign());
}
BENCHMARK(rsa_sign_libcrypto);

struct KcdsaSignature {
    std::uint8_t r[TLX_KCDSA_MAX_LENGTH];
    std::uint8_t s[TLX_KCDSA_MAX_LENGTH];
    std::uint32_t r_length = 0;
    std::uint32_t s_length = 0;

    bool sign() {
        return sign_KCDSA_data(kcdsa_unit(), TLX_DIGEST_HAS160, kData.data(), 32, r, &r_length, s,
                               &s_length) == 0;
    }
};

void kcdsa_verify(benchmark::State &state) {
    KcdsaSignature signature;
    signature.sign();
    for (auto _ : state) {
        check(state, verify_KCDSA_data(kcdsa_unit(), TLX_DIGEST_HAS160, kData.data(), 32, signature.r,
                                       signature.r_length, signature.s, signature.s_length) == 0);
    }
}
BENCHMARK(kcdsa_verify);

void dsa_verify_libcrypto(benchmark::State &state) {
    for (auto _ : state)
        check(state, dsa_peer().verify());
}
BENCHMARK(dsa_verify_libcrypto);

void kcdsa_sign(benchmark::State &state) {
    KcdsaSignature signature;
    for (auto _ : state)
        check(state, signature.sign());
}
BENCHMARK(kcdsa_sign);

void dsa_sign_libcrypto(benchmark::State &state) {
    for (auto _ : state)
        check(state, dsa_peer().sign());
}
BENCHMARK(dsa_sign_libcrypto);

// A key on a curve, and its signature of kData by libcrypto.
struct CurveCase {
    std::uint32_t curve;
    Peer peer;
    Octets point;
    Octets r;
    Octets s;

    CurveCase(std::uint32_t id, const char *name) : curve(id) {
        peer.key.reset(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", name));
        peer.prepare(EVP_sha256());
        EVP_Digest(kData.data(), kData.size(), peer.digest.data(), nullptr, EVP_sha256(), nullptr);
        peer.sign();
        std::size_t size = 0;
        point.resize(133);
        EVP_PKEY_get_octet_string_param(peer.key.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size(),
                                        &size);
        point.resize(size);
        const std::uint8_t *der = peer.signature.data();
        const Owned<ECDSA_SIG> numbers(d2i_ECDSA_SIG(nullptr, &der, static_cast<long>(peer.length)));
        r.resize((id + 7) / 8);
        s.resize(r.size());
        BN_bn2binpad(ECDSA_SIG_get0_r(numbers.get()), r.data(), static_cast<int>(r.size()));
        BN_bn2binpad(ECDSA_SIG_get0_s(numbers.get()), s.data(), static_cast<int>(s.size()));
    }
    [[nodiscard]] Owned<ECDSA_KEY> make_key() const {
        return Owned<ECDSA_KEY>(
            binary_to_ECDSA_KEY(curve, point.data(), static_cast<std::uint32_t>(point.size())));
    }
    bool verify(const ECDSA_KEY *key) const {
        const auto size = static_cast<std::uint32_t>(r.size());
        return verify_ECDSA(key, TLX_DIGEST_SHA256, kData.data(), data_length(), r.data(), size, s.data(),
                            size) == 0;
    }
};

CurveCase &curve_case(const benchmark::State &state) {
    static CurveCase cases[] = {
        {TLX_CURVE_P256, "P-256"}, {TLX_CURVE_P384, "P-384"}, {TLX_CURVE_P521, "P-521"}};
    return cases[state.range(0)];
}

void ecdsa_verify(benchmark::State &state) {
    const CurveCase &known = curve_case(state);
    const Owned<ECDSA_KEY> key = known.make_key();
    for (auto _ : state)
        check(state, known.verify(key.get()));
}
BENCHMARK(ecdsa_verify)->DenseRange(0, 2);

void ecdsa_verify_under_new_key(benchmark::State &state) {
    const CurveCase &known = curve_case(state);
    for (auto _ : state)
        check(state, known.verify(known.make_key().get()));
}
BENCHMARK(ecdsa_verify_under_new_key)->DenseRange(0, 2);

void ecdsa_verify_libcrypto(benchmark::State &state) {
    CurveCase &known = curve_case(state);
    for (auto _ : state)
        check(state, known.peer.verify());
}
BENCHMARK(ecdsa_verify_libcrypto)->DenseRange(0, 2);

struct EdwardsCase {
    Owned<EVP_PKEY> peer{EVP_PKEY_Q_keygen(nullptr, nullptr, "ED25519")};
    Owned<EDDSA_KEY> key;
    std::uint8_t signature[64] = {};

    EdwardsCase() {
        std::uint8_t point[32];
        std::size_t size = sizeof point;
        EVP_PKEY_get_raw_public_key(peer.get(), point, &size);
        key.reset(binary_to_EDDSA_KEY(TLX_CURVE_ED25519, point, sizeof point));
        const Owned<EVP_MD_CTX> context(EVP_MD_CTX_new());
        EVP_DigestSignInit(context.get(), nullptr, nullptr, nullptr, peer.get());
        size = sizeof signature;
        EVP_DigestSign(context.get(), signature, &size, kData.data(), kData.size());
    }
};

void ed25519_verify(benchmark::State &state) {
    const EdwardsCase known;
    for (auto _ : state)
        check(state, verify_EDDSA(known.key.get(), kData.data(), data_length(), known.signature, 64) == 0);
}
BENCHMARK(ed25519_verify);

void ed25519_verify_libcrypto(benchmark::State &state) {
    const EdwardsCase known;
    for (auto _ : state) {
        const Owned<EVP_MD_CTX> context(EVP_MD_CTX_new());
        EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, known.peer.get());
        check(state, EVP_DigestVerify(context.get(), known.signature, 64, kData.data(), kData.size()) == 1);
    }
}
BENCHMARK(ed25519_verify_libcrypto);

}  // namespace
