// KCDSA: the published vectors, what a verification refuses, keys and parameters of our own, threads.

#include <algorithm>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/kcdsa_vectors.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/rows.hpp"
#include "support/threads.hpp"

namespace {

using namespace tlx_test;
using Unit = Held<free_KCDSA>;

const std::string kText = "This is a test message for KCDSA usage!";
const Octets kMessage(kText.begin(), kText.end());

struct Signature {
    Octets r = Octets(TLX_KCDSA_MAX_LENGTH);
    Octets s = Octets(TLX_KCDSA_MAX_LENGTH);
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;

    std::uint32_t trim(std::uint32_t status) {
        r.resize(r_len);
        s.resize(s_len);
        return status;
    }
};

std::uint32_t sign(const KCDSA *unit, std::uint32_t digest_id, Signature &made) {
    return made.trim(sign_KCDSA_data(unit, digest_id, kMessage.data(), length(kMessage), made.r.data(),
                                     &made.r_len, made.s.data(), &made.s_len));
}

/// The digest of the message that a signature of the key covers; empty when it cannot be begun.
Octets digest_of_message(const KCDSA *unit, std::uint32_t digest_id, std::uint32_t *status = nullptr) {
    const Held<free_DIGEST_UNIT> running(new_DIGEST_UNIT());
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    std::uint32_t size = 0;
    const std::uint32_t begun = init_KCDSA_digest(unit, digest_id, running.get());
    if (status != nullptr) *status = begun;
    if (begun != 0) return {};
    for (const std::uint8_t octet : kMessage)
        EXPECT_EQ(update_Digest(running.get(), &octet, 1), 0U);
    EXPECT_EQ(final_Digest(running.get(), digest.data(), &size), 0U);
    digest.resize(size);
    return digest;
}

std::uint32_t sign_with_k(const KCDSA *unit, std::uint32_t digest_id, const std::string &k, Signature &made) {
    return made.trim(sign_KCDSA_with_k(unit, digest_id, kMessage.data(), length(kMessage), number(k).get(),
                                       made.r.data(), &made.r_len, made.s.data(), &made.s_len));
}

std::uint32_t verify(const KCDSA *unit, std::uint32_t digest_id, const Octets &r, const Octets &s) {
    return verify_KCDSA_data(unit, digest_id, kMessage.data(), length(kMessage), r.data(), length(r),
                             s.data(), length(s));
}

class Kcdsa : public LeakFreeTest {
  protected:
    const KcdsaVector &vector_ = kcdsa_vectors().back();  // the one of the smallest numbers
    const Octets r_ = hex(vector_['r']);
    const Octets s_ = hex(vector_['s']);
    const Unit unit_ = kcdsa_unit(vector_, "xy");
    const Unit public_key_ = kcdsa_unit(vector_, "y");
};

TEST_F(Kcdsa, SignsAndVerifiesThePublishedVectors) {
    ASSERT_EQ(kcdsa_vectors().size(), 5U);
    for (const KcdsaVector &vector : kcdsa_vectors()) {
        SCOPED_TRACE(vector.name);
        const Unit key = kcdsa_unit(vector, "x");
        EXPECT_EQ(check_KCDSA_params(kcdsa_unit(vector, "xy").get()), 0U);
        ASSERT_EQ(compute_KCDSA_public(key.get()), 0U);
        EXPECT_EQ(cmp_BIGINT(get_KCDSA_number(key.get(), TLX_KCDSA_Y), number(vector['y']).get()), 0);
        Signature made;
        EXPECT_EQ(sign_with_k(key.get(), vector.digest_id, vector['k'], made), 0U);
        EXPECT_EQ(made.r, hex(vector['r']));
        EXPECT_EQ(made.s, hex(vector['s']));
        const Unit open = kcdsa_unit(vector, "y");
        EXPECT_EQ(verify(open.get(), vector.digest_id, made.r, made.s), 0U);
        const Octets digest = digest_of_message(open.get(), vector.digest_id);
        EXPECT_EQ(verify_KCDSA_digest(open.get(), vector.digest_id, digest.data(), length(digest),
                                      made.r.data(), length(made.r), made.s.data(), length(made.s)),
                  0U);
    }
}

/// Steps with a key of a published vector; a signature is of the message, and the last one made is verified.
std::string run_on_key(const Row &row) {
    const KcdsaVector &vector = kcdsa_vectors().at(row.number(1));
    Unit owner = row[2] == "none" ? Unit(new_KCDSA()) : kcdsa_unit(vector, row[2]);
    Unit kept;
    KCDSA *unit = owner.get();
    Signature made;
    std::uint32_t r_len = 7;
    std::uint32_t s_len = 7;
    std::uint8_t *r = made.r.data();
    std::uint8_t *s = made.s.data();
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    using N = const Numbers &;
    const Steps steps = {
        {"sign", [&](N n) { return sign_KCDSA_data(unit, n[0], kMessage.data(), 39, r, &r_len, s, &s_len); }},
        {"verify",
         [&](N n) { return verify_KCDSA_data(unit, n[0], kMessage.data(), 39, r, r_len, s, s_len); }},
        {"begin",
         [&](N n) {
             std::uint32_t begun = 0;
             const Octets made_now = digest_of_message(unit, n[0], &begun);
             std::copy(made_now.begin(), made_now.end(), digest.begin());
             return begun;
         }},
        {"sign-digest",
         [&](N n) { return sign_KCDSA_digest(unit, n[0], digest.data(), n[1], r, &r_len, s, &s_len); }},
        {"sign-without-digest",
         [&](N n) { return sign_KCDSA_digest(unit, n[0], nullptr, 20, r, &r_len, s, &s_len); }},
        {"verify-digest",
         [&](N n) { return verify_KCDSA_digest(unit, n[0], digest.data(), n[1], r, r_len, s, s_len); }},
        {"init", [&](N n) { return init_KCDSA(unit, n[0]); }},
        {"update", [&](N n) { return update_KCDSA(unit, kMessage.data() + n[0], n[1]); }},
        {"final", [&](N) { return final_KCDSA(unit, r, &r_len, s, &s_len); }},
        {"final-without-length", [&](N) { return final_KCDSA(unit, r, nullptr, s, &s_len); }},
        {"verify-final", [&](N) { return verify_KCDSA(unit, r, r_len, s, s_len); }},
        {"r-length", [&](N) { return r_len; }},
        {"s-length", [&](N) { return s_len; }},
        {"key-length", [&](N) { return get_KCDSA_length(unit); }},
        {"digest", [&](N n) { return set_KCDSA_digest(unit, n[0]); }},
        {"set-private", [&](N) { return set_KCDSA_private(unit, number(vector['x']).get()); }},
        {"set-parameters",
         [&](N) {
             return set_KCDSA_params(unit, number(vector['p']).get(), number(vector['q']).get(),
                                     number(vector['g']).get());
         }},
        {"set-nothing", [&](N) { return set_KCDSA_params(unit, nullptr, nullptr, nullptr); }},
        {"parameters", [&](N n) { return gen_KCDSA_params(unit, n[0], n[1], n[2]); }},
        {"check", [&](N) { return check_KCDSA_params(unit); }},
        {"key", [&](N) { return gen_KCDSA_key(unit); }},
        {"compute", [&](N) { return compute_KCDSA_public(unit); }},
        {"clean", [&](N) { return clean_KCDSA(unit), 0U; }},
        {"published",
         [&](N) {
             const Octets numbers[] = {hex(vector['r']), hex(vector['s'])};
             std::copy(numbers[0].begin(), numbers[0].end(), r);
             std::copy(numbers[1].begin(), numbers[1].end(), s);
             return r_len = length(numbers[0]), s_len = length(numbers[1]);
         }},
        {"builds", [&](N) { return get_KCDSA_builds(unit); }},
        {"set-public", [&](N) { return set_KCDSA_public(unit, number("05").get()); }},
        {"keep", [&](N) { return kept = Unit(dup_KCDSA(unit)), kept == nullptr ? 1U : 0U; }},
        {"swap", [&](N) { return owner.swap(kept), unit = owner.get(), 0U; }},
        {"bits",
         [&](N n) { return get_BIGINT_bits(get_KCDSA_number(unit, static_cast<TLX_KCDSA_NUMBER>(n[0]))); }},
    };
    return run_steps(row[3], steps);
}

/// What becomes of a key with one number changed: the statuses of verifying, signing and checking it.
std::string change_number(const Row &row) {
    KcdsaVector changed = kcdsa_vectors().back();
    changed.values[row[1][0]] = row[2];
    const Unit unit = kcdsa_unit(changed, row[3]);
    const Octets r = hex(changed['r']);
    const std::uint32_t verified = verify(unit.get(), TLX_DIGEST_HAS160, r, hex(changed['s']));
    Signature made;
    const std::uint32_t status = sign(unit.get(), TLX_DIGEST_HAS160, made);
    EXPECT_EQ(made.r_len + made.s_len, 0U);
    EXPECT_TRUE(verified != TLX_KCDSA_BAD_KEY || get_KCDSA_builds(unit.get()) == 0);
    return std::to_string(verified) + " " + std::to_string(status) + " " +
           std::to_string(check_KCDSA_params(unit.get()));
}

/// The status of a signature under the public key of the smallest vector.
std::string change_signature(const Row &row) {
    const Unit unit = kcdsa_unit(kcdsa_vectors().back(), "y");
    return std::to_string(verify(unit.get(), row.number(1), hex(row[2]), hex(row[3])));
}

TEST_F(Kcdsa, Rows) {
    expect_rows("kcdsa.txt",
                {{"steps", {run_on_key}},
                 {"allocations", {[](const Row &row) { return whether_done(run_on_key(row)); }, {"failed"}}},
                 {"number", {change_number}},
                 {"signature", {change_signature}}});
    // No k is not a k of the library's choice; 0; q.
    for (const std::string &k : {std::string(), std::string("00"), vector_['q']}) {
        Signature made;
        EXPECT_EQ(sign_with_k(unit_.get(), TLX_DIGEST_SHA1, k, made), 1U) << "k " << k;
    }
    EXPECT_EQ(get_KCDSA_number(unit_.get(), TLX_KCDSA_NUMBER_COUNT), nullptr);
    EXPECT_EQ(dup_KCDSA(nullptr), nullptr);
}

TEST_F(Kcdsa, RefusesEveryFlippedBit) {
    const Octets both = hex(vector_['r'] + vector_['s']);
    for (std::size_t bit = 0; bit < 8 * both.size(); ++bit) {
        Octets changed = both;
        changed[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_EQ(verify(public_key_.get(), vector_.digest_id, Octets(changed.begin(), changed.begin() + 20),
                         Octets(changed.begin() + 20, changed.end())),
                  TLX_KCDSA_BAD_SIGNATURE)
            << bit;
    }
}

TEST_F(Kcdsa, OneUnitServesManyThreads) {
    // Without the public key, which the first thread computes.
    const Unit unit = kcdsa_unit(vector_, "x");
    const auto sign_and_verify = [&unit] {
        for (int i = 0; i < 20; ++i) {
            Signature made;
            if (sign(unit.get(), TLX_DIGEST_HAS160, made) != 0) return false;
            if (verify(unit.get(), TLX_DIGEST_HAS160, made.r, made.s) != 0) return false;
        }
        return true;
    };
    EXPECT_EQ(successes_on_threads(4, sign_and_verify), 4U);
    EXPECT_GE(get_KCDSA_builds(unit.get()), 1U);
    EXPECT_LE(get_KCDSA_builds(unit.get()), 4U);
}

TEST_F(Kcdsa, CallsNoGoodSignatureBadWhenLibcryptoRunsOutOfMemory) {
    const auto verify_anew = [this] {
        return verify(kcdsa_unit(vector_, "y").get(), vector_.digest_id, r_, s_);
    };
    EXPECT_EQ(sweep_failing_libcrypto_allocations(verify_anew) > 10, kSharesLibcrypto);
}

}  // namespace
