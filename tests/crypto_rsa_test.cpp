// RSA against libcrypto in both directions, keys that are none, what is computed once, threads.

#include <algorithm>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"
#include "support/threads.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Held<free_RSA_UNIT>;

std::uint32_t set_private(RSA_UNIT *unit, const Octets (&values)[8]) {
    Number n[8];
    for (std::size_t i = 0; i < 8; ++i)
        if (!values[i].empty()) n[i] = number(values[i]);
    return set_RSA_UNIT_private(unit, n[0].get(), n[1].get(), n[2].get(), n[3].get(), n[4].get(), n[5].get(),
                                n[6].get(), n[7].get());
}

Unit private_unit(const peer::RsaKey &key) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_private(unit.get(), key.numbers), 0U);
    return unit;
}

Unit public_unit(const Octets &n, const Octets &e) {
    Unit unit(new_RSA_UNIT());
    EXPECT_EQ(set_RSA_UNIT_public(unit.get(), number(n).get(), number(e).get()), 0U);
    return unit;
}

const peer::RsaKey &test_key() {
    static const peer::RsaKey key = peer::generate_rsa(1024);
    return key;
}

Unit public_unit() {
    return public_unit(test_key().numbers[0], test_key().numbers[1]);
}

const Octets kData = {'s', 'i', 'g', 'n', ' ', 'm', 'e'};
constexpr std::uint32_t kSha256 = TLX_DIGEST_SHA256;
constexpr std::uint32_t kPkcs1 = TLX_RSA_MODE_PKCS1;
constexpr std::uint32_t kPss = TLX_RSA_MODE_PSS;

std::uint32_t sign(const Unit &unit, std::uint32_t digest_id, std::uint32_t mode, Octets &signature) {
    signature.assign(get_RSA_length(unit.get()), 0xEE);
    std::uint32_t size = 99;
    const std::uint32_t status =
        sign_RSA(unit.get(), digest_id, mode, kData.data(), length(kData), signature.data(), &size);
    const std::size_t room = signature.size();
    EXPECT_TRUE(status != TLX_RSA_BAD_KEY || signature == Octets(room) || signature == Octets(room, 0xEE));
    signature.resize(size);
    return status;
}

std::uint32_t verify(const Unit &unit, std::uint32_t digest_id, std::uint32_t mode, const Octets &signature) {
    return verify_RSA(unit.get(), digest_id, mode, kData.data(), length(kData), signature.data(),
                      length(signature));
}

class Rsa : public LeakFreeTest {
  protected:
    const Unit private_key_ = private_unit(test_key());
    const Unit public_key_ = public_unit();
};

// octets^exponent mod n, in as many octets.
Octets power(const Unit &unit, const Octets &base, TLX_RSA_NUMBER exponent) {
    const Number value = number(base);
    EXPECT_EQ(mod_exp_BIGINT(value.get(), value.get(), get_RSA_UNIT_number(unit.get(), exponent),
                             get_RSA_UNIT_number(unit.get(), TLX_RSA_N)),
              0U);
    Octets result(base.size());
    EXPECT_EQ(BIGINT_to_binary(value.get(), result.data(), length(result)), 0U);
    return result;
}

/// The status of a PSS signature under a key of some bits, with an octet of the encoded message changed.
std::string change_pss(const Row &row) {
    const Unit unit = private_unit(test_key());
    EXPECT_TRUE(row.number(1) == 1024 || gen_RSA_UNIT(unit.get(), row.number(1), 65537) == 0);
    Octets encoded;
    do {  // until the changed message is below n
        Octets signature;
        EXPECT_EQ(sign(unit, kSha256, kPss, signature), 0U);
        encoded = power(unit, signature, TLX_RSA_E);
        encoded[row.number(2)] ^= static_cast<std::uint8_t>(row.number(3));
    } while (cmp_BIGINT(number(encoded).get(), get_RSA_UNIT_number(unit.get(), TLX_RSA_N)) >= 0);
    return std::to_string(verify(unit, kSha256, kPss, power(unit, encoded, TLX_RSA_D)));
}

const std::map<std::uint32_t, std::string> kPeerNames = {{0, ""},
                                                         {TLX_DIGEST_MD5, "MD5"},
                                                         {TLX_DIGEST_SHA1, "SHA1"},
                                                         {TLX_DIGEST_SHA224, "SHA224"},
                                                         {TLX_DIGEST_SHA256, "SHA256"},
                                                         {TLX_DIGEST_SHA384, "SHA384"},
                                                         {TLX_DIGEST_SHA512, "SHA512"},
                                                         {TLX_DIGEST_SHA512_224, "SHA512-224"},
                                                         {TLX_DIGEST_SHA512_256, "SHA512-256"},
                                                         {TLX_DIGEST_SHA3_224, "SHA3-224"},
                                                         {TLX_DIGEST_SHA3_256, "SHA3-256"},
                                                         {TLX_DIGEST_SHA3_384, "SHA3-384"},
                                                         {TLX_DIGEST_SHA3_512, "SHA3-512"}};

peer::RsaScheme scheme_of(const Numbers &n) {
    return {kPeerNames.at(n[0]), kPeerNames.at(n[1]), static_cast<int>(n[2])};
}

/// What a key decrypts, or 1 when it leaves nothing of what does not decrypt.
std::uint32_t open_sealed(RSA_UNIT *unit, const Octets &sealed, std::uint32_t room) {
    Octets opened(room);
    std::uint32_t size = room;
    const std::uint32_t status = decrypt_RSAES(unit, opened.data(), &size, sealed.data(), length(sealed));
    EXPECT_EQ(opened, Octets(room, status == 0 ? 0x5A : 0));
    EXPECT_EQ(size, status == 0 ? room : 0U);
    return status;
}

const peer::RsaKey &other_key() {
    static const peer::RsaKey key = peer::generate_rsa(1024);
    return key;
}

/// value * 2^count + more
Octets shifted(std::uint32_t value, std::uint32_t count, std::uint32_t more) {
    Octets octets(count / 8 + 4);
    for (std::uint32_t i = 0; i < 4; ++i)
        octets[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    octets.back() = static_cast<std::uint8_t>(octets.back() + more);
    return octets;
}

/// Steps with a key, which make octets (a signature or a ciphertext) and use what was made last.
std::string run_on_key(const Row &row) {
    Unit unit = row[1] == "private"  ? private_unit(test_key())
                : row[1] == "public" ? public_unit()
                                     : Unit(new_RSA_UNIT());
    Unit kept;
    Octets made(128);
    Octets numbers[8];
    std::copy(std::begin(test_key().numbers), std::end(test_key().numbers), numbers);
    std::uint32_t size = 128;
    using N = const Numbers &;
    const Steps steps = {
        // On signatures: a digest and a mode, or a digest, the digest of MGF1 (0: PKCS #1 v1.5) and octets of
        // salt.
        {"sign", [&](N n) { return sign(unit, n[0], n[1], made); }},
        {"verify", [&](N n) { return verify(unit, n[0], n[1], made); }},
        // Of the digest: less a number of octets.
        {"verify-digest",
         [&](N n) {
             Octets digest(TLX_DIGEST_MAX_LENGTH);
             std::uint32_t size_of_digest = 0;
             (void)Digest(n[0], kData.data(), length(kData), digest.data(), &size_of_digest);
             return verify_RSA_digest(unit.get(), n[0], n[1], digest.data(), size_of_digest - n[2],
                                      made.data(), length(made));
         }},
        {"sign-digest",
         [&](N n) {
             const Octets digest(n[2] != 0 ? n[2] : get_DigestLength(n[0]), 0xAA);
             return sign_RSA_digest(unit.get(), n[0], n[1], digest.data(), length(digest), made.data(),
                                    &size);
         }},
        {"verify-that-digest",
         [&](N n) {
             const Octets digest(get_DigestLength(n[0]), 0xAA);
             return verify_RSA_digest(unit.get(), n[0], n[1], digest.data(), length(digest), made.data(),
                                      size);
         }},
        {"libcrypto-signs", [&](N n) { return made = peer::rsa_sign(test_key(), scheme_of(n), kData), 0U; }},
        {"libcrypto-verifies",
         [&](N n) { return peer::rsa_verify(test_key(), scheme_of(n), kData, made) ? 0U : 1U; }},
        {"pss", [&](N n) { return set_RSA_UNIT_PSS(unit.get(), n[0], n[1]); }},
        // In pieces.
        {"init", [&](N n) { return init_RSASSA(unit.get(), n[0], n[1], n[2]); }},
        {"update", [&](N n) { return update_RSASSA(unit.get(), kData.data() + n[0], n[1]); }},
        {"final", [&](N) { return final_RSASSA(unit.get(), made.data(), &size); }},
        {"verify-final", [&](N) { return verify_RSASSA(unit.get(), made.data(), 128); }},
        {"size", [&](N) { return size; }},
        // On encryption.
        {"prepare", [&](N n) { return init_RSAES(unit.get(), n[0], n[1], n[2]); }},
        {"prepare-oaep",  // direction, digest, digest of MGF1, octets of label
         [&](N n) {
             const Octets label(n[3], 0x4C);
             return init_RSAES_OAEP(unit.get(), n[0], n[1], n[2], label.data(), n[3]);
         }},
        {"encrypt",
         [&](N n) {
             const Octets message(n[0], 0x5A);
             return encrypt_RSAES(unit.get(), made.data(), &size, message.data(), n[0]);
         }},
        {"decrypt", [&](N n) { return open_sealed(unit.get(), made, n[0]); }},
        {"libcrypto-encrypts",
         [&](N n) { return made = peer::rsa_encrypt(test_key(), scheme_of(n), Octets(n[2], 0x5A)), 0U; }},
        {"libcrypto-decrypts",
         [&](N n) {
             return peer::rsa_decrypt(test_key(), scheme_of(n), made) == Octets(n[2], 0x5A) ? 0U : 1U;
         }},
        // 1 for the message, 0 for another key; 10 and the status on failure.
        {"decrypt-key",
         [&](N n) {
             Octets key(n[0], 0xEE);
             const std::uint32_t status =
                 decrypt_RSAES_key(unit.get(), key.data(), n[0], made.data(), length(made));
             if (status != 0) return 10 + status;
             EXPECT_NE(key, Octets(n[0], 0xEE));
             return key == Octets(n[0], 0x5A) ? 1U : 0U;
         }},
        // Makes the ciphertext of an encoded message: 00 02, octets of padding, one octet, octets of 5A.
        {"encode",
         [&](N n) {
             Octets encoded(128, 0x5A);
             encoded[0] = 0;
             encoded[1] = static_cast<std::uint8_t>(n[0]);
             encoded[2 + n[1]] = static_cast<std::uint8_t>(n[2]);
             if (n[3] != 0) encoded[n[3]] = 0;
             return made = power(unit, encoded, TLX_RSA_E), 0U;
         }},
        // Other octets, other units.
        {"octets", [&](N n) { return made.assign(n[0], static_cast<std::uint8_t>(n[1])), 0U; }},
        {"resize", [&](N n) { return made.resize(n[0]), 0U; }},
        {"change", [&](N n) { return made[n[0]] ^= static_cast<std::uint8_t>(n[1]), 0U; }},
        {"copy", [&](N) { return unit = Unit(dup_RSA_UNIT(unit.get())), 0U; }},
        {"keep", [&](N) { return kept = Unit(dup_RSA_UNIT(unit.get())), 0U; }},
        {"swap", [&](N) { return unit.swap(kept), 0U; }},
        {"clean", [&](N) { return clean_RSA_UNIT(unit.get()), 0U; }},
        {"kind", [&](N) { return get_RSA_UNIT_kind(unit.get()); }},
        {"generate", [&](N n) { return gen_RSA_UNIT(unit.get(), n[0], n[1]); }},
        {"set-private", [&](N) { return set_private(unit.get(), test_key().numbers); }},
        {"length", [&](N) { return get_RSA_length(unit.get()); }},
        // Numbers, by their place among n, e, d, p, q, dp, dq and qinv, and the unit made of them.
        {"number", [&](N n) { return numbers[n[0]] = shifted(n[1], n[2], n[3]), 0U; }},
        {"flip", [&](N n) { return numbers[n[0]].back() ^= 1U, 0U; }},
        {"same", [&](N n) { return numbers[n[0]] = test_key().numbers[n[1]], 0U; }},
        {"other", [&](N n) { return numbers[n[0]] = other_key().numbers[n[0]], 0U; }},
        {"public", [&](N) { return unit = public_unit(numbers[0], numbers[1]), 0U; }},
        {"private", [&](N) { return set_private(unit.get(), numbers); }},
        {"drop", [&](N n) { return numbers[n[0]].clear(), 0U; }},
        {"equal",
         [&](N n) {
             const BIGINT *own = get_RSA_UNIT_number(unit.get(), static_cast<TLX_RSA_NUMBER>(n[0]));
             return cmp_BIGINT(own, number(numbers[n[0]]).get()) == 0 ? 1U : 0U;
         }},
        {"builds", [&](N) { return get_RSA_UNIT_builds(unit.get()); }},
    };
    return run_steps(row[2], steps);
}

/// The statuses of making a key, of verifying its signature, also with another digest and with n added to it
/// (zeros, when the sum is longer), and of signing with SHA-512.
std::string generate(const Row &row) {
    const Unit unit = public_unit();
    const std::uint32_t made = gen_RSA_UNIT(unit.get(), row.number(1), row.number(2));
    const auto get = [&](TLX_RSA_NUMBER which) { return get_RSA_UNIT_number(unit.get(), which); };
    EXPECT_EQ(get_BIGINT_bits(get(TLX_RSA_N)), row.number(1));
    EXPECT_EQ(get_BIGINT_word(get(TLX_RSA_E)), row.number(2));
    const Number value(new_BIGINT());
    mod_mul_BIGINT(value.get(), get(TLX_RSA_QINV), get(TLX_RSA_Q), get(TLX_RSA_P));
    EXPECT_EQ(get_BIGINT_word(value.get()), 1U) << "qinv";
    // d = dp modulo p - 1, and likewise for q.
    for (const auto &[prime, part] : {std::pair(TLX_RSA_P, TLX_RSA_DP), std::pair(TLX_RSA_Q, TLX_RSA_DQ)}) {
        sub_BIGINT(value.get(), get(prime), number("01").get());
        mod_BIGINT(value.get(), get(TLX_RSA_D), value.get());
        EXPECT_EQ(cmp_BIGINT(value.get(), get(part)), 0);
    }
    Octets good;
    EXPECT_EQ(sign(unit, kSha256, kPkcs1, good), 0U);
    add_BIGINT(value.get(), number(good).get(), get(TLX_RSA_N));
    Octets raised(good.size());
    BIGINT_to_binary(value.get(), raised.data(), length(raised));
    Octets other;
    std::string results = std::to_string(made);
    for (const std::uint32_t status :
         {verify(unit, kSha256, kPkcs1, good), verify(unit, TLX_DIGEST_SHA512, kPkcs1, good),
          verify(unit, kSha256, kPkcs1, raised), sign(unit, TLX_DIGEST_SHA512, kPkcs1, other)})
        results += " " + std::to_string(status);
    return results;
}

TEST_F(Rsa, Rows) {
    expect_rows("rsa.txt",
                {{"steps", {run_on_key}},
                 {"allocations", {[](const Row &row) { return whether_done(run_on_key(row)); }, {"failed"}}},
                 {"pss", {change_pss}},
                 {"generate", {generate}}});
    EXPECT_EQ(get_RSA_UNIT_number(private_key_.get(), TLX_RSA_NUMBER_COUNT), nullptr);
    EXPECT_EQ(dup_RSA_UNIT(nullptr), nullptr);
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST_F(Rsa, SignsHas160WithItsIdentifier) {
    Octets signature;
    ASSERT_EQ(sign(private_key_, TLX_DIGEST_HAS160, kPkcs1, signature), 0U);
    Octets hash(20);
    std::uint32_t size = 0;
    ASSERT_EQ(Digest(TLX_DIGEST_HAS160, kData.data(), length(kData), hash.data(), &size), 0U);
    // SEQUENCE { SEQUENCE { 1.2.410.200004.1.2, NULL }, OCTET STRING }
    EXPECT_TRUE(digits_of(power(public_key_, signature, TLX_RSA_E))
                    .ends_with("FF003024300C06082A831A8C9A44010205000414" + digits_of(hash)));
}

TEST_F(Rsa, RefusesEveryFlippedBit) {
    for (const std::uint32_t mode : {kPkcs1, kPss}) {
        Octets signature;
        ASSERT_EQ(sign(private_key_, TLX_DIGEST_SHA1, mode, signature), 0U);
        for (std::size_t bit = 0; bit < 8 * signature.size(); bit += 7) {
            Octets bad = signature;
            bad[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            EXPECT_EQ(verify(private_key_, TLX_DIGEST_SHA1, mode, bad), TLX_RSA_BAD_SIGNATURE) << bit;
        }
        EXPECT_EQ(verify(private_key_, TLX_DIGEST_SHA1, mode, signature), 0U) << "the failures left no trace";
    }
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST_F(Rsa, OneUnitAndItsCopiesServeManyThreads) {
    const auto sign_and_verify = [this] {
        for (unsigned i = 0; i < 50; ++i) {
            const std::uint32_t mode = i % 4 == 0 ? kPss : kPkcs1;
            const Unit copy(dup_RSA_UNIT(private_key_.get()));
            Octets signature;
            if (sign(i % 2 == 0 ? private_key_ : copy, kSha256, mode, signature) != 0) return false;
            if (verify(private_key_, kSha256, mode, signature) != 0) return false;
            if (verify(copy, kSha256, mode, signature) != 0) return false;
        }
        return true;
    };
    EXPECT_EQ(successes_on_threads(4, sign_and_verify), 4U);
    EXPECT_GE(get_RSA_UNIT_builds(private_key_.get()), 2U);
    EXPECT_LE(get_RSA_UNIT_builds(private_key_.get()), 8U);
}

TEST_F(Rsa, CallsNoGoodSignatureBadWhenLibcryptoRunsOutOfMemory) {
    for (const std::uint32_t mode : {kPkcs1, kPss}) {
        Octets signature;
        ASSERT_EQ(sign(private_key_, kSha256, mode, signature), 0U);
        const auto verify_anew = [&] { return verify(public_unit(), kSha256, mode, signature); };
        EXPECT_EQ(sweep_failing_libcrypto_allocations(verify_anew) > 10, kSharesLibcrypto) << mode;
        const auto sign_anew = [&] { return sign(private_unit(test_key()), kSha256, mode, signature); };
        EXPECT_EQ(sweep_failing_libcrypto_allocations(sign_anew) > 10, kSharesLibcrypto) << mode;
    }
}

}  // namespace
