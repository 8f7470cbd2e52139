// Verification by RFC 5280: a row for each rule, searches among many candidates, budgets, threads.

#include <algorithm>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/threads.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

/// Settings from the values of an edited chain. RSA keys of 1024 bits are strong enough.
struct ChosenSettings {
    VERIFY_SETTINGS settings = {};
    Octets address;
    Policies policies;

    explicit ChosenSettings(const EditedChain &edited) {
        const auto &values = edited.values;
        const auto number = [&values](const char *name) {
            return values.contains(name) ? static_cast<std::uint32_t>(std::stoul(values.at(name))) : 0U;
        };
        settings.time = edited.time.get();
        settings.profile = values.contains("profile") ? number("profile") : TLX_PROFILE_KOREAN_LEGACY;
        settings.least_rsa_bits = number("bits");
        settings.accepted_faults = number("accepted");
        settings.anchor_rules = number("anchor-rules");
        settings.explicit_policy = number("require-policy");
        settings.inhibit_mapping = number("no-mapping");
        settings.inhibit_any_policy = number("no-any-policy");
        settings.purpose = number("purpose");
        if (values.contains("host")) settings.host = values.at("host").c_str();
        if (values.contains("mailbox")) settings.mailbox = values.at("mailbox").c_str();
        if (values.contains("user-policies")) policies = policy_list(values.at("user-policies"));
        settings.policies = policies.get();
        if (values.contains("address")) {
            address = hex(values.at("address"));
            settings.address = address.data();
            settings.address_len = size_of(address);
        }
        VERIFY_BUDGET &budget = settings.budget;
        budget.signatures = number("signatures");
        budget.candidates = number("candidates");
        budget.path_length = number("length");
        budget.policy_nodes = number("nodes");
        budget.name_comparisons = number("comparisons");
    }
};

template <typename Print>
std::string verify(const VERIFY_STORE *store, const Octets &target, const VERIFY_SETTINGS &settings,
                   Print print) {
    VERIFY_RESULT *made = nullptr;
    const std::uint32_t status =
        verify_CERTIFICATE(store, nullptr, target.data(), size_of(target), &settings, &made);
    const Result result(made);
    VERIFY_FINDING first;
    if (made == nullptr) return status_text(status);
    EXPECT_EQ(status, get_VERIFY_RESULT_finding(made, 0, &first) == 0 ? first.status : 0U);
    return print(made);
}

std::string verify(const VERIFY_STORE *store, const Octets &target, const VERIFY_SETTINGS &settings) {
    return verify(store, target, settings, [](const VERIFY_RESULT *result) { return text_of(result); });
}

template <typename Print>
std::string verify_edited(const Row &row, Print print) {
    const EditedChain edited(row.number(1), row[2]);
    const Store store = store_of(edited.chain);
    return verify(store.get(), encode_certificate(edited.chain[0].make().get()),
                  ChosenSettings(edited).settings,
                  [&](const VERIFY_RESULT *result) { return print(result, edited.chain); });
}

std::string verify_row(const Row &row) {
    return verify_edited(row, [](const VERIFY_RESULT *result, const Chain &) { return text_of(result); });
}

/// The policies with their qualifiers.
std::string policies_row(const Row &row) {
    return verify_edited(row, [](const VERIFY_RESULT *result, const Chain &) {
        std::string text;
        OBJECT_IDENTIFIER *policy = nullptr;
        std::uint32_t size = 0;
        for (std::uint32_t i = 0; get_VERIFY_RESULT_policy(result, i, &policy) == 0; ++i) {
            const std::uint8_t *qualifiers = get_VERIFY_RESULT_policy_qualifiers(result, i, &size);
            text += (i == 0 ? "" : ", ") + octets(policy) + (size == 0 ? "" : " " + hex_of(qualifiers, size));
        }
        EXPECT_EQ(get_VERIFY_RESULT_policy_qualifiers(result, 99, &size), nullptr);
        free_OBJECT_IDENTIFIER(policy);
        return text;
    });
}

/// Attempts as rule, place, and in parentheses which certificate of the chain is meant.
std::string attempts_row(const Row &row) {
    return verify_edited(row, [](const VERIFY_RESULT *result, const Chain &chain) {
        std::string text;
        VERIFY_ATTEMPT attempt;
        for (std::uint32_t i = 0; get_VERIFY_RESULT_attempt(result, i, &attempt) == 0; ++i) {
            const Octets tried(attempt.certificate, attempt.certificate + attempt.certificate_len);
            const auto is_tried = [&](const CertSpec &each) {
                return encode_certificate(each.make().get()) == tried;
            };
            const auto index = std::ranges::find_if(chain, is_tried) - chain.begin();
            text += (i == 0 ? "" : ", ") + std::string(attempt.finding.rule) + " at " +
                    std::to_string(attempt.finding.certificate) + " (" + std::to_string(index) + ")";
        }
        return text;
    });
}

TEST(Verify, Rows) {
    make_signing_keys();
    expect_rows("verify.txt",
                {{"verify", {verify_row}}, {"policies", {policies_row}}, {"attempts", {attempts_row}}});
}

std::string digits_of_number(std::uint32_t number) {
    const std::uint8_t octets[] = {static_cast<std::uint8_t>(number >> 24),
                                   static_cast<std::uint8_t>(number >> 16),
                                   static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
    std::string text = hex_of(octets, sizeof octets);
    std::erase(text, ' ');
    return text;
}

/// A chain of which every CA has this many certificates, all with its key but of other serial numbers.
Chain widen(const Chain &chain, unsigned count) {
    Chain all;
    for (std::size_t i = 1; i + 1 < chain.size(); ++i) {
        for (unsigned n = 0; n < count; ++n) {
            CertSpec twin = chain[i];
            twin.serial = digits_of_number(0x7F000000 + n);
            all.push_back(twin);
        }
    }
    return all;
}

VERIFY_SETTINGS legacy_settings() {
    VERIFY_SETTINGS settings = {};
    settings.profile = TLX_PROFILE_KOREAN_LEGACY;
    return settings;
}

class VerifySearch : public LeakFreeTest {
  protected:
    static void SetUpTestSuite() { make_signing_keys(); }

    const Chain chain_ = valid_chain(4);
    const Store store_ = store_of(chain_);
    const Octets target_ = encode_certificate(chain_[0].make().get());
    const VERIFY_SETTINGS settings_ = legacy_settings();
};

TEST_F(VerifySearch, FindsTheGoodOneAmongTwins) {
    // An expired twin, one of another key, one that is no CA: all with the name and the key identifier.
    CertSpec expired = chain_[1], other = chain_[1], user = chain_[1];
    expired.until = "2021-01-01,00:00:00";
    other.key = 3;
    user.with("basicConstraints", "30{}");
    for (const CertSpec &twin : {expired, other, user})
        add(store_.get(), twin);
    EXPECT_EQ(verify(store_.get(), target_, settings_), "valid");
}

TEST_F(VerifySearch, TakesIntermediatesButNoAnchorsFromThePool) {
    const Store anchors(new_VERIFY_STORE());
    add(anchors.get(), chain_[3], true);
    VERIFY_RESULT *result = nullptr;
    EXPECT_EQ(verify_CERTIFICATE(anchors.get(), store_.get(), target_.data(), size_of(target_), &settings_,
                                 &result),
              0U);
    EXPECT_EQ(get_VERIFY_RESULT_path_count(result), 4U);
    EXPECT_EQ(get_VERIFY_RESULT_paths(result), 1U);
    EXPECT_EQ(get_VERIFY_RESULT_candidates(result), 3U);
    std::uint32_t size = 0;
    const std::uint8_t *octets = get_VERIFY_RESULT_certificate(result, 3, &size);
    EXPECT_EQ(Octets(octets, octets + size), target_);
    EXPECT_EQ(get_VERIFY_RESULT_certificate(result, 4, &size), nullptr);
    free_VERIFY_RESULT(result);
    const Store empty(new_VERIFY_STORE());
    result = nullptr;
    EXPECT_EQ(
        verify_CERTIFICATE(empty.get(), store_.get(), target_.data(), size_of(target_), &settings_, &result),
        0x55030047U);
    EXPECT_EQ(text_of(result), "NoIssuer at 2") << "the root is no anchor";
    EXPECT_EQ(get_VERIFY_RESULT_paths(result), 0U);
    free_VERIFY_RESULT(result);
}

TEST_F(VerifySearch, EndsMazesAtTheirBudgets) {
    // Forty certificates for each CA, below an anchor that has expired: 1600 paths, all of them bad.
    Chain chain = chain_;
    chain[3].until = "2021-01-01,00:00:00";
    const Store maze = store_of(chain);
    for (const CertSpec &twin : widen(chain, 40))
        add(maze.get(), twin);
    struct Limit {
        std::uint32_t signatures, candidates, tried;
        const char *found;
    };
    // Below 84 signatures each candidate takes a new one, and the last one finds the budget spent.
    const Limit limits[] = {{20, 0, 21, "NotValidNow at 3, SignatureBudget at 3"},
                            {40, 0, 41, "NotValidNow at 3, SignatureBudget at 3"},
                            {80, 0, 81, "NotValidNow at 3, SignatureBudget at 3"},
                            {0, 0, 117, "NotValidNow at 3, SignatureBudget at 3"},
                            {0, 50, 50, "NotValidNow at 3, CandidateBudget at 3"},
                            {5000, 1000, 1000, "NotValidNow at 3, CandidateBudget at 3"},
                            {5000, 2000, 2000, "NotValidNow at 3, CandidateBudget at 3"}};
    for (const Limit &limit : limits) {
        VERIFY_SETTINGS settings = settings_;
        settings.budget.signatures = limit.signatures;
        settings.budget.candidates = limit.candidates;
        const std::string found =
            verify(maze.get(), target_, settings, [&limit](const VERIFY_RESULT *result) {
                EXPECT_EQ(get_VERIFY_RESULT_candidates(result), limit.tried);
                EXPECT_EQ(get_VERIFY_RESULT_attempt_count(result), 0U) << "all fail alike";
                return text_of(result);
            });
        EXPECT_EQ(found, limit.found);
    }
    VERIFY_SETTINGS settings = settings_;
    settings.budget.signatures = 3;
    settings.anchor_rules = TLX_ANCHOR_RULES_CONSTRAINTS;
    EXPECT_EQ(verify(maze.get(), target_, settings), "valid") << "the first path will do";
}

TEST_F(VerifySearch, ReadsAtMost128Extensions) {
    CertSpec many = chain_[0];
    while (many.extensions->size() < 128)
        many.with("1.2.3." + std::to_string(many.extensions->size()), "05:");
    EXPECT_EQ(verify(store_.get(), encode_certificate(many.make().get()), settings_), "valid");
    many.with("1.2.4", "05:");
    EXPECT_EQ(verify(store_.get(), encode_certificate(many.make().get()), settings_), "ManyExtensions at 0");
}

TEST_F(VerifySearch, KeepsTheFirstAttempts) {
    // The good issuer was added first and comes last.
    CertSpec other = chain_[1];
    other.key = 3;
    for (const CertSpec &twin : widen({chain_[0], other, chain_[3]}, 40))
        add(store_.get(), twin);
    VERIFY_RESULT *made = nullptr;
    EXPECT_EQ(verify_CERTIFICATE(store_.get(), nullptr, target_.data(), size_of(target_), &settings_, &made),
              0U);
    const Result result(made);
    VERIFY_ATTEMPT attempt;
    EXPECT_EQ(get_VERIFY_RESULT_candidates(made), 43U);
    EXPECT_EQ(get_VERIFY_RESULT_attempt_count(made), 32U);
    EXPECT_EQ(get_VERIFY_RESULT_attempt(made, 31, &attempt), 0U);
    EXPECT_EQ(attempt.finding.status, 0x53100054U);
    EXPECT_EQ(get_VERIFY_RESULT_attempt(made, 32, &attempt), 1U);
    EXPECT_EQ(attempt.certificate, nullptr);
    expect_refuses_null(1U, get_VERIFY_RESULT_attempt, made, 0U, &attempt);
}

TEST_F(VerifySearch, OneStoreServesManyThreads) {
    const auto work = [this] {
        for (int i = 0; i < 20; ++i)
            if (verify_CERTIFICATE(store_.get(), nullptr, target_.data(), size_of(target_), &settings_,
                                   nullptr) != 0)
                return false;
        return true;
    };
    EXPECT_EQ(successes_on_threads(4, work), 4U);
}

TEST_F(VerifySearch, EveryAllocationMayFail) {
    const Octets root = encode_certificate(chain_[3].make().get());
    const Octets ca = encode_certificate(chain_[2].make().get());
    const Octets user = encode_certificate(chain_[1].make().get());
    const unsigned failures = sweep_failing_allocations([&] {
        const Store store(new_VERIFY_STORE());
        VERIFY_RESULT *made = nullptr;
        const bool done =
            store != nullptr && add_VERIFY_STORE_anchor(store.get(), root.data(), size_of(root), 0) == 0 &&
            add_VERIFY_STORE_certificate(store.get(), ca.data(), size_of(ca), 0) == 0 &&
            verify_CERTIFICATE(store.get(), nullptr, user.data(), size_of(user), &settings_, &made) == 0;
        EXPECT_EQ(made != nullptr, done);
        free_VERIFY_RESULT(made);
        return done;
    });
    EXPECT_GT(failures, 20U);
}

TEST_F(VerifySearch, AnAnchorMayBeANameAndAKey) {
    const Cert root = chain_[3].make();
    const Octets name = encoding_of(get_X509_subject(root.get()), TLX_ENCODER(X509_NAME_to_Seq));
    const Octets key = encoding_of(get_X509_SPKI(root.get()), TLX_ENCODER(X509_PUBKEY_to_Seq));
    const Store store(new_VERIFY_STORE());
    EXPECT_EQ(add_VERIFY_STORE_anchor_key(store.get(), name.data(), size_of(name), key.data(), size_of(key)),
              0U);
    EXPECT_EQ(add_VERIFY_STORE_anchor_key(store.get(), key.data(), size_of(key), key.data(), size_of(key)),
              0x55010206U);
    EXPECT_EQ(
        add_VERIFY_STORE_anchor_key(store.get(), name.data(), size_of(name), name.data(), size_of(name)),
        0x55010208U);
    add(store.get(), chain_[2]);
    add(store.get(), chain_[2]);
    EXPECT_EQ(get_VERIFY_STORE_count(store.get()), 2U) << "the same certificate twice counts once";
    add(store.get(), chain_[3], true);
    add(store.get(), chain_[3]);
    EXPECT_EQ(get_VERIFY_STORE_count(store.get()), 4U) << "but an anchor is not an intermediate";
    const Octets target = encode_certificate(chain_[1].make().get());
    EXPECT_EQ(verify(store.get(), target, settings_), "valid");
}

TEST_F(VerifySearch, RefusesMissingArguments) {
    const std::uint8_t *octets = target_.data();
    expect_refuses_null(0x55070049U, add_VERIFY_STORE_anchor, store_.get(), octets, 1U, 0U);
    expect_refuses_null(0x55080049U, add_VERIFY_STORE_anchor_key, store_.get(), octets, 1U, octets, 1U);
    expect_refuses_null(0x55090049U, add_VERIFY_STORE_certificate, store_.get(), octets, 1U, 0U);
    EXPECT_EQ(verify_CERTIFICATE(nullptr, nullptr, octets, 1, nullptr, nullptr), 0x550A0049U);
    EXPECT_EQ(verify_CERTIFICATE(store_.get(), nullptr, nullptr, 1, nullptr, nullptr), 0x550A0049U);
    EXPECT_EQ(verify_CERTIFICATE(store_.get(), nullptr, octets, 1, nullptr, nullptr), 0x5501004FU);
    for (const auto count :
         {get_VERIFY_RESULT_finding_count, get_VERIFY_RESULT_warning_count, get_VERIFY_RESULT_path_count,
          get_VERIFY_RESULT_policy_count, get_VERIFY_RESULT_candidates, get_VERIFY_RESULT_paths,
          get_VERIFY_RESULT_attempt_count})
        EXPECT_EQ(count(nullptr), 0U);
    VERIFY_SETTINGS wrong = {};
    wrong.purpose = 9;
    EXPECT_EQ(verify_CERTIFICATE(store_.get(), nullptr, octets, 1, &wrong, nullptr), 0x550A0048U);
}

}  // namespace
}  // namespace tlx_test
