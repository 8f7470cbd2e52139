// ECDSA, EdDSA and DSA: published signatures, what a verification refuses, what is computed once, threads.

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"
#include "support/threads.hpp"

namespace {

using namespace tlx_test;
using Ecdsa = Held<free_ECDSA_KEY>;
using Eddsa = Held<free_EDDSA_KEY>;
using Dsa = Held<free_DSA_KEY>;

/// A key of one family with a signature that a row has, whose octets a test may change.
struct Case {
    Ecdsa ecdsa;
    Eddsa eddsa;
    Dsa dsa;
    std::uint32_t digest_id = 0;
    Octets message;
    Octets r;  // for EdDSA the signature
    Octets s;

    explicit Case(const Row &row) {
        if (row[0] == "ecdsa") {
            const Octets point = hex(row[2]);
            ecdsa.reset(binary_to_ECDSA_KEY(row.number(1), point.data(), length(point)));
        } else if (row[0] == "eddsa") {
            const Octets point = hex(row[2]);
            eddsa.reset(binary_to_EDDSA_KEY(row.number(1), point.data(), length(point)));
            message = hex(row[3]);
            r = hex(row[4]);
            return;
        } else {
            dsa.reset(new_DSA_KEY(number(row[1]).get(), number(row[2]).get(), number(row[3]).get(),
                                  number(row[4]).get()));
        }
        const std::size_t at = row.fields.size() - 5;
        digest_id = row.number(at);
        message.assign(row[at + 1].begin(), row[at + 1].end());
        r = hex(row[at + 2]);
        s = hex(row[at + 3]);
    }

    [[nodiscard]] bool has_key() const { return ecdsa != nullptr || eddsa != nullptr || dsa != nullptr; }
    [[nodiscard]] std::uint32_t builds() const {
        return get_ECDSA_KEY_builds(ecdsa.get()) + get_EDDSA_KEY_builds(eddsa.get()) +
               get_DSA_KEY_builds(dsa.get());
    }
    [[nodiscard]] std::uint32_t verify() const {
        const std::uint8_t *data = message.data();
        const std::uint32_t size = length(message);
        if (eddsa != nullptr) return verify_EDDSA(eddsa.get(), data, size, r.data(), length(r));
        if (dsa != nullptr) {
            Octets digest(TLX_DIGEST_MAX_LENGTH);
            std::uint32_t digest_size = 0;
            const std::uint32_t digested = Digest(digest_id, data, size, digest.data(), &digest_size);
            const std::uint32_t status =
                verify_DSA(dsa.get(), digest_id, data, size, r.data(), length(r), s.data(), length(s));
            const std::uint32_t again = verify_DSA_digest(dsa.get(), digest.data(), digest_size, r.data(),
                                                          length(r), s.data(), length(s));
            EXPECT_TRUE(again == status || digested == 1 || again == 1 || status == 1);
            return status;
        }
        return verify_ECDSA(ecdsa.get(), digest_id, data, size, r.data(), length(r), s.data(), length(s));
    }
};

/// The status of verifying, of verifying again and of checking the key, which have to agree.
std::string verify_row(const Row &row) {
    const Case made(row);
    if (!made.has_key()) return "null";
    const std::uint32_t bad_key = made.ecdsa != nullptr ? check_ECDSA_KEY(made.ecdsa.get())
                                  : made.dsa != nullptr ? check_DSA_KEY(made.dsa.get())
                                                        : 0U;
    const std::uint32_t status = made.verify();
    const std::uint32_t again = made.verify();
    if (bad_key == 1 || status == 1 || again == 1) return "1";
    EXPECT_EQ(again, status);
    EXPECT_EQ(bad_key == 3, status == 3);
    EXPECT_LE(made.builds(), status == 3 ? 0U : 1U);
    return std::to_string(status);
}

/// The first row of each family and curve, whose signatures are good.
std::vector<Row> first_rows() {
    std::map<std::string, Row> firsts;
    for (const Row &row : read_rows("signature.txt"))
        firsts.emplace(row[0] == "dsa" ? "dsa" : row[0] + row[1], row);
    return {firsts.at("ecdsa256"), firsts.at("ecdsa384"),   firsts.at("ecdsa521"),
            firsts.at("eddsa448"), firsts.at("eddsa25519"), firsts.at("dsa")};
}

class Signature : public LeakFreeTest {};

TEST_F(Signature, Rows) {
    expect_rows("signature.txt", {{"ecdsa", {verify_row, {"1", "null"}}},
                                  {"eddsa", {verify_row, {"1", "null"}}},
                                  {"dsa", {verify_row, {"1", "null"}}}});
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

TEST_F(Signature, RefusesEveryFlippedBit) {
    for (const Row &row : first_rows()) {
        SCOPED_TRACE(row.place);
        Case changed(row);
        for (Octets *octets : {&changed.r, &changed.s}) {
            for (std::size_t bit = 0; bit < 8 * octets->size(); bit += 3) {
                (*octets)[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
                EXPECT_EQ(changed.verify(), 2U) << bit;
                (*octets)[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            }
        }
        EXPECT_EQ(changed.verify(), 0U) << "the failures left no trace";
    }
}

TEST_F(Signature, OneKeyAndItsCopiesServeManyThreads) {
    for (const Row &row : first_rows()) {
        const Case shared(row);
        const auto verify = [&shared] {
            const Ecdsa ecdsa(dup_ECDSA_KEY(shared.ecdsa.get()));
            const Eddsa eddsa(dup_EDDSA_KEY(shared.eddsa.get()));
            const Dsa dsa(dup_DSA_KEY(shared.dsa.get()));
            for (int i = 0; i < 10; ++i)
                if (shared.verify() != 0) return false;
            return get_ECDSA_KEY_builds(ecdsa.get()) + get_EDDSA_KEY_builds(eddsa.get()) +
                       get_DSA_KEY_builds(dsa.get()) >=
                   1;
        };
        EXPECT_EQ(successes_on_threads(4, verify), 4U) << row.place;
        EXPECT_LE(shared.builds(), 4U);
    }
}

TEST_F(Signature, CopiesOutliveTheirKeyAndRefuseNull) {
    const std::vector<Row> rows = first_rows();
    Case original(rows[0]);
    Case copy(rows[0]);
    EXPECT_EQ(original.verify(), 0U);
    copy.ecdsa.reset(dup_ECDSA_KEY(original.ecdsa.get()));
    original.ecdsa.reset();
    EXPECT_EQ(copy.verify(), 0U);
    EXPECT_EQ(copy.builds(), 1U) << "made by the first owner";
    EXPECT_EQ(get_ECDSA_KEY_curve(copy.ecdsa.get()), TLX_CURVE_P256);
    EXPECT_EQ(get_EDDSA_KEY_curve(Case(rows[3]).eddsa.get()), TLX_CURVE_ED448);
    EXPECT_EQ(digits_of(get_DSA_KEY_number(Case(rows[5]).dsa.get(), TLX_DSA_Y)), rows[5][4]);
    EXPECT_EQ(check_ECDSA_KEY(nullptr) + check_DSA_KEY(nullptr), 2U);
    const std::uint8_t octet = 1;
    EXPECT_EQ(verify_ECDSA(copy.ecdsa.get(), TLX_DIGEST_SHA256, &octet, 1, nullptr, 1, &octet, 1), 1U);
    EXPECT_EQ(verify_ECDSA(copy.ecdsa.get(), TLX_DIGEST_SHA256, nullptr, 1, &octet, 1, &octet, 1), 1U);
    EXPECT_EQ(verify_EDDSA(nullptr, &octet, 1, &octet, 1), 1U);
    EXPECT_EQ(verify_EDDSA(Case(rows[3]).eddsa.get(), nullptr, 1, &octet, 1), 1U);
    EXPECT_EQ(verify_DSA(Case(rows[5]).dsa.get(), TLX_DIGEST_SHA1, &octet, 1, &octet, 1, nullptr, 1), 1U);
}

TEST_F(Signature, CallsNoGoodSignatureBadWhenLibcryptoRunsOutOfMemory) {
    for (const Row &row : first_rows()) {
        SCOPED_TRACE(row.place);
        const auto verify_anew = [&row] { return Case(row).verify(); };
        EXPECT_EQ(sweep_failing_libcrypto_allocations(verify_anew) > 0, kSharesLibcrypto);
    }
}

}  // namespace
