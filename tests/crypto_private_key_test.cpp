// Private keys on curves: published signatures and shared secrets, what is refused, keys made at random.

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;
using Ecdsa = Held<free_ECDSA_KEY>;
using Eddsa = Held<free_EDDSA_KEY>;
using Xdh = Held<free_XDH_KEY>;

template <typename Owner, typename Make>
Owner made_by(Make make, std::uint32_t curve, const Octets &octets, std::uint32_t &status) {
    typename Owner::pointer key = nullptr;
    status = make(curve, octets.data(), length(octets), &key);
    return Owner(key);
}

/// Signs with the key, and verifies with the public key alone.
std::uint32_t sign_and_verify(const ECDSA_KEY *key, std::uint32_t digest_id) {
    const Octets message = {1, 2, 3};
    Octets point(TLX_ECDSA_MAX_POINT_LENGTH);
    Octets numbers(std::size_t{2} * get_ECDSA_KEY_length(key));
    std::uint32_t size = 0;
    if (const std::uint32_t status = get_ECDSA_KEY_point(key, point.data(), &size); status != 0)
        return status;
    const Ecdsa other(binary_to_ECDSA_KEY(get_ECDSA_KEY_curve(key), point.data(), size));
    const std::uint32_t half = length(numbers) / 2;
    std::uint8_t *r = numbers.data();
    std::uint8_t *s = r + half;
    const std::uint32_t status = sign_ECDSA(key, digest_id, message.data(), 3, r, s);
    if (other == nullptr || status != 0) return 1;
    EXPECT_EQ(sign_ECDSA(other.get(), digest_id, message.data(), 3, r, s), 1U) << "a public key";
    return verify_ECDSA(other.get(), digest_id, message.data(), 3, r, half, s, half);
}

/// The public point of a private number, whose signatures are good.
std::string ecdsa_point(const Row &row) {
    std::uint32_t status = 0;
    const Ecdsa key = made_by<Ecdsa>(private_binary_to_ECDSA_KEY, row.number(1), hex(row[2]), status);
    if (status != 0) return std::to_string(status);
    for (const std::uint32_t digest_id :
         {TLX_DIGEST_SHA1, TLX_DIGEST_HAS160, TLX_DIGEST_SHA512, TLX_DIGEST_SHAKE256})
        if (sign_and_verify(key.get(), digest_id) != 0) return "1";
    Octets point(TLX_ECDSA_MAX_POINT_LENGTH);
    std::uint32_t size = 0;
    if (get_ECDSA_KEY_point(key.get(), point.data(), &size) != 0) return "1";
    point.resize(size);
    return digits(point);
}

std::string eddsa_signature(const Row &row) {
    std::uint32_t status = 0;
    const Eddsa key = made_by<Eddsa>(private_binary_to_EDDSA_KEY, row.number(1), hex(row[2]), status);
    if (status != 0) return std::to_string(status);
    const Octets message = hex(row[3]);
    Octets signature(TLX_EDDSA_MAX_LENGTH);
    std::uint32_t size = 0;
    status = sign_EDDSA(key.get(), message.data(), length(message), signature.data(), &size);
    if (status != 0) return std::to_string(status);
    signature.resize(size);
    const std::uint8_t *point = get_EDDSA_KEY_point(key.get());
    return digits({point, point + get_EDDSA_KEY_length(key.get())}) + " " + digits(signature);
}

/// The secret of two keys, on which both sides agree when both are private.
template <typename Owner>
std::string agreed(const Owner &a, const Owner &b, bool is_private,
                   std::uint32_t (*compute)(typename Owner::pointer, typename Owner::pointer, std::uint8_t *),
                   std::uint32_t size) {
    Octets secret(size, 0xEE);
    Octets other(size, 0xEE);
    const std::uint32_t status = compute(a.get(), b.get(), secret.data());
    if (status != 0) {
        EXPECT_EQ(secret, Octets(size));
        return std::to_string(status);
    }
    if (is_private) {
        if (compute(b.get(), a.get(), other.data()) != 0) return "1";
        EXPECT_EQ(secret, other);
    }
    return digits(secret);
}

std::string ecdh(const Row &row) {
    std::uint32_t status = 0;
    const Ecdsa a = made_by<Ecdsa>(private_binary_to_ECDSA_KEY, row.number(1), hex(row[2]), status);
    if (status != 0) return std::to_string(status);
    const Octets octets = hex(row[3]);
    const bool is_public = octets.size() > get_ECDSA_KEY_length(a.get());
    const Ecdsa b = is_public ? Ecdsa(binary_to_ECDSA_KEY(row.number(1), octets.data(), length(octets)))
                              : made_by<Ecdsa>(private_binary_to_ECDSA_KEY, row.number(1), octets, status);
    if (b == nullptr) return "1";
    const auto compute = [](ECDSA_KEY *key, ECDSA_KEY *peer, std::uint8_t *secret) {
        return compute_ECDH(key, peer, secret);
    };
    return agreed<Ecdsa>(a, b, !is_public, compute, get_ECDSA_KEY_length(a.get()));
}

std::string xdh(const Row &row) {
    std::uint32_t status = 0;
    const Xdh a = made_by<Xdh>(private_binary_to_XDH_KEY, row.number(1), hex(row[2]), status);
    if (status != 0) return std::to_string(status);
    const Octets octets = hex(row[4]);
    const Xdh b = row[3] == "public" ? Xdh(binary_to_XDH_KEY(row.number(1), octets.data(), length(octets)))
                                     : made_by<Xdh>(private_binary_to_XDH_KEY, row.number(1), octets, status);
    if (b == nullptr) return "1";
    const auto compute = [](XDH_KEY *key, XDH_KEY *peer, std::uint8_t *secret) {
        return compute_XDH(key, peer, secret);
    };
    return agreed<Xdh>(a, b, row[3] == "private", compute, get_XDH_KEY_length(a.get()));
}

/// Curves of ECDSA.
constexpr std::uint32_t kCurves[] = {TLX_CURVE_P256, TLX_CURVE_P384, TLX_CURVE_P521};

class PrivateKey : public LeakFreeTest {};

TEST_F(PrivateKey, Rows) {
    expect_rows("private_key.txt", {{"ecdsa", {ecdsa_point, {"1"}}},
                                    {"eddsa", {eddsa_signature, {"1"}}},
                                    {"ecdh", {ecdh, {"1"}}},
                                    {"xdh", {xdh, {"1"}}}});
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

TEST_F(PrivateKey, RandomKeysDifferAndSign) {
    for (const std::uint32_t curve : kCurves) {
        ECDSA_KEY *first = nullptr;
        ECDSA_KEY *second = nullptr;
        EXPECT_EQ(gen_ECDSA_KEY(curve, &first) + gen_ECDSA_KEY(curve, &second), 0U);
        const Ecdsa a(first);
        const Ecdsa b(second);
        EXPECT_EQ(cmp_ECDSA_KEY(first, second), -1);
        EXPECT_EQ(cmp_ECDSA_KEY(first, first), 0);
        EXPECT_EQ(sign_and_verify(first, TLX_DIGEST_SHA256), 0U);
        std::uint32_t status = 0;
        const std::uint8_t *number = get_ECDSA_KEY_private(first);
        const Ecdsa again = made_by<Ecdsa>(private_binary_to_ECDSA_KEY, curve,
                                           {number, number + get_ECDSA_KEY_length(first)}, status);
        EXPECT_EQ(cmp_ECDSA_KEY(first, again.get()), 0);
    }
    EDDSA_KEY *first = nullptr;
    EDDSA_KEY *second = nullptr;
    EXPECT_EQ(gen_EDDSA_KEY(TLX_CURVE_ED448, &first) + gen_EDDSA_KEY(TLX_CURVE_ED448, &second), 0U);
    const Eddsa a(first);
    const Eddsa b(second);
    EXPECT_NE(Octets(get_EDDSA_KEY_private(first), get_EDDSA_KEY_private(first) + 57),
              Octets(get_EDDSA_KEY_private(second), get_EDDSA_KEY_private(second) + 57));
    XDH_KEY *third = nullptr;
    EXPECT_EQ(gen_XDH_KEY(TLX_CURVE_X25519, &third), 0U);
    const Xdh c(third);
    EXPECT_NE(Octets(get_XDH_KEY_private(third), get_XDH_KEY_private(third) + 32), Octets(32));
}

TEST_F(PrivateKey, ComparesPointsOfAnyForm) {
    const Row row = read_rows("private_key.txt").front();
    const Octets point = hex(row.fields.back());
    Octets compressed(point.begin(), point.begin() + 33);
    compressed[0] = 2 + point.back() % 2;
    const Ecdsa whole(binary_to_ECDSA_KEY(TLX_CURVE_P256, point.data(), length(point)));
    const Ecdsa shortened(binary_to_ECDSA_KEY(TLX_CURVE_P256, compressed.data(), 33));
    compressed[0] ^= 1;
    const Ecdsa negated(binary_to_ECDSA_KEY(TLX_CURVE_P256, compressed.data(), 33));
    const Ecdsa none(binary_to_ECDSA_KEY(TLX_CURVE_P256, point.data(), 32));
    EXPECT_EQ(cmp_ECDSA_KEY(whole.get(), shortened.get()), 0);
    EXPECT_EQ(cmp_ECDSA_KEY(whole.get(), negated.get()), -1);
    EXPECT_EQ(cmp_ECDSA_KEY(whole.get(), none.get()), 1);
    EXPECT_EQ(cmp_ECDSA_KEY(nullptr, whole.get()), 1);
}

TEST_F(PrivateKey, RefusesNullAndPublicKeys) {
    ECDSA_KEY *key = nullptr;
    EXPECT_EQ(private_binary_to_ECDSA_KEY(TLX_CURVE_P256, nullptr, 32, &key), 1U);
    EXPECT_EQ(gen_ECDSA_KEY(TLX_CURVE_P256, nullptr), 1U);
    EXPECT_EQ(gen_EDDSA_KEY(TLX_CURVE_P256, nullptr), 1U);
    EXPECT_EQ(gen_ECDSA_KEY(TLX_CURVE_P256, &key), 0U);
    const Ecdsa owner(key);
    Octets out(TLX_EDDSA_MAX_LENGTH);
    std::uint32_t size = 9;
    EXPECT_EQ(sign_ECDSA_digest(key, nullptr, 32, out.data(), out.data()), 1U);
    EXPECT_EQ(sign_ECDSA_digest(key, out.data(), 65, out.data(), out.data()), 1U);
    EXPECT_EQ(compute_ECDH(key, nullptr, out.data()), 1U);
    const Eddsa ed(binary_to_EDDSA_KEY(TLX_CURVE_ED25519, out.data(), 32));
    EXPECT_EQ(sign_EDDSA(ed.get(), nullptr, 0, out.data(), &size), 1U);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(get_EDDSA_KEY_private(ed.get()), nullptr);
    EXPECT_EQ(get_ECDSA_KEY_private(nullptr), nullptr);
    EXPECT_EQ(get_XDH_KEY_curve(nullptr) + get_XDH_KEY_length(nullptr), 0U);
}

TEST_F(PrivateKey, ReturnsOneWhenLibcryptoRunsOutOfMemory) {
    unsigned failures = sweep_failing_libcrypto_allocations([] {
        ECDSA_KEY *key = nullptr;
        const std::uint32_t status = gen_ECDSA_KEY(TLX_CURVE_P256, &key);
        const Ecdsa owner(key);
        return status != 0 ? status : sign_and_verify(key, TLX_DIGEST_SHA256);
    });
    failures += sweep_failing_libcrypto_allocations([] {
        XDH_KEY *key = nullptr;
        std::uint8_t secret[TLX_XDH_MAX_LENGTH];
        const std::uint32_t status = gen_XDH_KEY(TLX_CURVE_X25519, &key);
        const Xdh owner(key);
        return status != 0 ? status : compute_XDH(key, key, secret);
    });
    EXPECT_EQ(failures > 0, kSharesLibcrypto);
}

}  // namespace
