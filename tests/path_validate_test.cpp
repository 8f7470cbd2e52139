// Validating paths: one row for every step that can fail, and for what passes although one might not think
// so.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>
#include <iterator>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"

namespace {

using namespace tlx_test::extension;
using tlx_test::Certificates;
using tlx_test::Chain;
using tlx_test::kPolicy;
using tlx_test::policy_list;
using tlx_test::text_of_tree;
using tlx_test::Tree;
using tlx_test::valid_chain;

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};
const CPV_SETTINGS kNoExplicitPolicy = {nullptr, 0, 0, 3};

struct Verdict {
    std::uint32_t status;
    std::int32_t stopped_at;
    bool operator==(const Verdict &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Verdict &verdict) {
    return out << std::hex << "0x" << verdict.status << " at " << std::dec << verdict.stopped_at;
}
constexpr Verdict kGood = {0, -1};

Verdict validate(const X509_CERTIFICATES *given, const CPV_SETTINGS &settings = kDefaults) {
    const tlx_test::LeakCheck leaks;
    const Certificates copy(dup_X509_CERTIFICATES(given));
    const X509_CERTIFICATES *path = copy.get();
    Verdict verdict = {1, -2};
    node_LIST *made = nullptr;
    verdict.status = validate_certpath_ex(path, nullptr, &made, &settings, &verdict.stopped_at);
    const Tree tree(made);
    EXPECT_EQ(made != nullptr, verdict.status == 0);
    return verdict;
}
Verdict validate(const Chain &chain, const CPV_SETTINGS &settings = kDefaults) {
    return validate(tlx_test::make(chain).get(), settings);
}

using Bend = std::function<void(Chain &)>;
struct Case {
    const char *what;
    unsigned length;
    Bend bend;
    CPV_SETTINGS settings;
    Verdict expected;
};
void expect_verdicts(std::initializer_list<Case> cases) {
    for (const Case &each : cases) {
        Chain chain = valid_chain(each.length);
        each.bend(chain);
        EXPECT_EQ(validate(chain, each.settings), each.expected) << each.what;
    }
}

const Bend kAsItIs = [](Chain &) {};
Bend on(unsigned index, std::function<void(tlx_test::CertSpec &)> bend) {
    return [=](Chain &chain) { bend(chain[index]); };
}
Bend with(unsigned index, const char *id, const char *value, bool critical = false) {
    return on(index, [=](auto &spec) { spec.with(id, value, critical); });
}
Bend without(unsigned index, const char *id) {
    return on(index, [=](auto &spec) { spec.without(id); });
}
Bend both(const Bend &first, const Bend &second) {
    return [=](Chain &chain) {
        first(chain);
        second(chain);
    };
}

TEST(Validation, OfWellFormedPathsSucceedsAtAnyLength) {
    for (unsigned length = 1; length <= 7; ++length)
        EXPECT_EQ(validate(valid_chain(length)), kGood) << length;
    Chain chain = valid_chain(4);
    chain[2].key = chain[1].signer = tlx_test::kKcdsaKey;
    EXPECT_EQ(validate(chain), kGood) << "a KCDSA key in the middle";
    chain[3].key = chain[3].signer = chain[2].signer = tlx_test::kKcdsaKey;
    EXPECT_EQ(validate(chain), kGood) << "and one at the root";
}

TEST(Validation, ChecksSignaturesTimesAndNames) {
    expect_verdicts({
        {"target signed by another key", 3, on(0, [](auto &c) { c.signer = 3; }), kDefaults, {0x53100054, 0}},
        {"CA signed by another key", 3, on(1, [](auto &c) { c.signer = 3; }), kDefaults, {0x53100054, 1}},
        {"KCDSA signature under an RSA key",
         3,
         on(0, [](auto &c) { c.signer = tlx_test::kKcdsaKey; }),
         kDefaults,
         {0x53100054, 0}},
        {"root not signed by itself",
         3,
         on(2, [](auto &c) { c.signer = 3; }),
         kDefaults,
         {TLX_RSA_BAD_SIGNATURE, 2}},
        {"root of another key kind than its signature",
         1,
         on(0, [](auto &c) { c.signer = tlx_test::kKcdsaKey; }),
         kDefaults,
         {TLX_RSA_BAD_SIGNATURE, 0}},
        {"expired target",
         3,
         on(0, [](auto &c) { c.not_after = "2021-01-01,00:00:00"; }),
         kDefaults,
         {0x462D0113, 0}},
        {"CA not yet valid",
         3,
         on(1, [](auto &c) { c.not_before = "2098-01-01,00:00:00"; }),
         kDefaults,
         {0x462D0113, 1}},
        {"a root may have expired", 3, on(2, [](auto &c) { c.not_after = "2021-01-01,00:00:00"; }), kDefaults,
         kGood},
        {"another issuer's name", 3, on(0, [](auto &c) { c.issuer = "CA 9"; }), kDefaults, {0x53100106, 0}},
        {"no self-issued certificate at the end",
         3,
         [](Chain &chain) { chain.pop_back(); },
         kDefaults,
         {0x53100049, 1}},
        {"the signature comes before the validity",
         3,
         on(0,
            [](auto &c) {
                c.signer = 3;
                c.not_after = "2021-01-01,00:00:00";
            }),
         kDefaults,
         {0x53100054, 0}},
        {"the validity comes before the name",
         3,
         on(0,
            [](auto &c) {
                c.issuer = "CA 9";
                c.not_after = "2021-01-01,00:00:00";
            }),
         kDefaults,
         {0x462D0113, 0}},
    });
}

TEST(Validation, TakesTheTimeItIsGiven) {
    Chain chain = valid_chain(2);
    chain[0].not_before = "2000-02-03,04:05:06";
    chain[0].not_after = "2001-02-03,04:05:06";
    const auto path = tlx_test::make(chain);
    const auto at = [&](const char *text) {
        ASN1_TIME *time = charToASN1_TIME(text);
        const Verdict verdict = validate(path.get(), {time, 0, 255, 3});
        free_ASN1_TIME(time);
        return verdict;
    };
    EXPECT_EQ(at("2000-02-03,04:05:05"), (Verdict{0x462D0113, 0}));
    EXPECT_EQ(at("2000-02-03,04:05:06"), kGood);
    EXPECT_EQ(at("2001-02-03,04:05:06"), kGood);
    EXPECT_EQ(at("2001-02-03,04:05:07"), (Verdict{0x462D0113, 0}));
    EXPECT_EQ(validate(path.get()), (Verdict{0x462D0113, 0})) << "the present";
}

TEST(Validation, ChecksTheIssuersBasicConstraints) {
    expect_verdicts({
        {"missing", 3, without(1, kBasicConstraints), kDefaults, {0x5309011B, 0}},
        {"missing at the root", 3, without(2, kBasicConstraints), kDefaults, {0x5309011B, 1}},
        {"missing at the target, which issues nothing", 3, without(0, kBasicConstraints), kDefaults, kGood},
        {"empty", 3, with(1, kBasicConstraints, "30{}"), kDefaults, {0x5309000E, 0}},
        {"only a path length", 3, with(1, kBasicConstraints, "30{02:01}"), kDefaults, {0x5309000E, 0}},
        {"no element", 3, with(1, kBasicConstraints, ""), kDefaults, {0x5309000E, 0}},
        {"not critical", 3, with(1, kBasicConstraints, "30{01:FF}"), kDefaults, kGood},
        {"any octet but zero is true", 3, with(1, kBasicConstraints, "30{01:01}"), kDefaults, kGood},
        {"no CA, but keyCertSign", 3, with(1, kBasicConstraints, "30{01:00}"), kDefaults, {0x5309011B, 0}},
        {"no CA, and a key usage without keyCertSign",
         3,
         both(with(1, kBasicConstraints, "30{01:00}"), with(1, kKeyUsage, "03:0780")),
         kDefaults,
         {0x530A0118, 0}},
        {"no CA, and no key usage", 3, both(with(1, kBasicConstraints, "30{01:00}"), without(1, kKeyUsage)),
         kDefaults, kGood},
    });
}

TEST(Validation, ChecksThePathLengthOnlyWhenItIsZeroAboveACa) {
    expect_verdicts({
        {"0 above a CA", 3, with(2, kBasicConstraints, "30{01:FF 02:00}"), kDefaults, {0x5309011B, 1}},
        {"0 above a CA with a leading octet",
         3,
         with(2, kBasicConstraints, "30{01:FF 02:0000}"),
         kDefaults,
         {0x5309011B, 1}},
        {"0 above a user", 3, with(1, kBasicConstraints, "30{01:FF 02:00}"), kDefaults, kGood},
        {"0 above one that says it is no CA", 3,
         both(with(1, kBasicConstraints, "30{01:FF 02:00}"), with(0, kBasicConstraints, "30{01:00}")),
         kDefaults, kGood},
        {"0 above one whose constraints cannot be read", 3,
         both(with(1, kBasicConstraints, "30{01:FF 02:00}"), with(0, kBasicConstraints, "30{}")), kDefaults,
         kGood},
        {"1 above four CAs", 6, with(5, kBasicConstraints, "30{01:FF 02:01}"), kDefaults, kGood},
        {"0 of no CA", 3, both(with(2, kBasicConstraints, "30{01:00 02:00}"), without(2, kKeyUsage)),
         kDefaults, kGood},
    });
}

TEST(Validation, ChecksTheIssuersKeyUsage) {
    expect_verdicts({
        {"missing", 3, without(1, kKeyUsage), kDefaults, kGood},
        {"without keyCertSign", 3, with(1, kKeyUsage, "03:01FA"), kDefaults, {0x530A0118, 0}},
        {"keyCertSign alone", 3, with(1, kKeyUsage, "03:0204"), kDefaults, kGood},
        {"at the root", 3, with(2, kKeyUsage, "03:0780"), kDefaults, {0x530A0118, 1}},
        {"no bits", 3, with(1, kKeyUsage, "03:00"), kDefaults, {0x530A0118, 0}},
        {"no contents", 3, with(1, kKeyUsage, "03:"), kDefaults, {0x530A0118, 0}},
        {"no BIT STRING", 3, with(1, kKeyUsage, "04:0204"), kDefaults, {0x530A0118, 0}},
        {"no element", 3, with(1, kKeyUsage, ""), kDefaults, {0x530A0118, 0}},
        {"the target's does not count", 3, with(0, kKeyUsage, ""), kDefaults, kGood},
    });
}

TEST(Validation, WantsExtensions) {
    const auto none = [](auto &c) { c.extensions.reset(); };
    const auto empty = [](auto &c) { c.extensions.emplace(); };
    expect_verdicts({
        {"none in the target", 3, on(0, none), kDefaults, {0x530A002B, 0}},
        {"an empty list in the target", 3, on(0, empty), kDefaults, {0x530A002B, 0}},
        {"none in the target, policies or not", 3, on(0, none), kNoExplicitPolicy, {0x530A002B, 0}},
        {"none in a CA", 3, on(1, none), kNoExplicitPolicy, {0x530A002B, 1}},
        // The root passes for a CA then, and fails for its key usage.
        {"none in the root", 3, on(2, none), kDefaults, {0x530A002B, 1}},
        {"an empty list in the root", 3, on(2, empty), kDefaults, {0x530A002B, 1}},
        {"none in a root that stands alone", 1, on(0, none), kDefaults, kGood},
        {"unknown ones are let pass", 3, with(0, "1.2.3.4.5", "05:", true), kDefaults, kGood},
    });
}

TEST(Validation, ChecksNothingOfSelfIssuedCertificatesButTheirSignature) {
    const Bend self_issued_target = [](Chain &chain) {
        chain[0].issuer = chain[0].subject;
        chain[0].signer = chain[0].key;
        chain[0].extensions.reset();
        chain[0].not_after = "2021-01-01,00:00:00";
    };
    const Bend self_issued_ca = [](Chain &chain) {
        chain[1].issuer = chain[1].subject;
        chain[1].signer = chain[1].key;
    };
    expect_verdicts({
        {"at the target", 3, self_issued_target, kDefaults, kGood},
        {"of a foreign key",
         3,
         both(self_issued_target, on(0, [](auto &c) { c.signer = 3; })),
         kDefaults,
         {TLX_RSA_BAD_SIGNATURE, 0}},
        // It adds no level to the policy tree, which the next one then misses.
        {"in the middle", 3, self_issued_ca, kDefaults, {0x53100049, 0}},
        {"in the middle of a longer one", 5, self_issued_ca, kDefaults, {0x53100049, 0}},
        {"in the middle, signed by the CA above",
         3,
         both(self_issued_ca, on(1, [](auto &c) { c.signer = 0; })),
         kDefaults,
         {TLX_RSA_BAD_SIGNATURE, 1}},
    });
}

TEST(Validation, LetsPolicyConstraintsRequirePolicies) {
    // The certificate of the constraint counts them down; the target is one below CA 2, two below CA 1.
    const Bend no_policies = [](Chain &chain) {
        for (auto &spec : chain)
            spec.without(kPolicies);
    };
    const auto constraint = [&](unsigned index, const char *value) {
        return both(no_policies, with(index, kPolicyConstraints, value));
    };
    expect_verdicts({
        {"not required", 4, no_policies, kNoExplicitPolicy, kGood},
        {"required at once", 4, no_policies, kDefaults, {0x5310011C, 2}},
        {"an intermediate without policies", 4, without(1, kPolicies), kDefaults, {0x5310011C, 1}},
        {"a target without policies", 4, without(0, kPolicies), kDefaults, {0x5310011C, 0}},
        {"a root without policies", 4, without(3, kPolicies), kDefaults, kGood},
        {"from the next but one on", 4, constraint(2, "30{80:01}"), kNoExplicitPolicy, {0x5310011C, 0}},
        {"explicitly tagged", 4, constraint(2, "30{A0{02:01}}"), kNoExplicitPolicy, {0x5310011C, 0}},
        {"beyond the end", 4, constraint(2, "30{80:02}"), kNoExplicitPolicy, {0x53070119, -1}},
        {"0 changes nothing", 4, constraint(2, "30{80:00}"), kNoExplicitPolicy, kGood},
        {"inhibitPolicyMapping alone", 4, constraint(2, "30{81:01}"), kNoExplicitPolicy, kGood},
        {"in the root, which does not count", 4, constraint(3, "30{80:01}"), kNoExplicitPolicy, kGood},
        {"a number of 33 bits", 4, constraint(2, "30{A0{02:0100000001}}"), kNoExplicitPolicy, kGood},
        {"larger than what is left", 4, constraint(2, "30{80:7F}"), kNoExplicitPolicy, kGood},
        {"no element", 4, constraint(2, ""), kNoExplicitPolicy, kGood},
        {"an empty one", 4, constraint(2, "30{}"), kNoExplicitPolicy, kGood},
        {"in the target, too late for it", 4, constraint(0, "30{80:01}"), kNoExplicitPolicy, kGood},
    });
}

TEST(Validation, ReadsButDoesNotHonourWhatItSays) {
    const Bend any = [](Chain &chain) {
        for (auto &spec : chain)
            spec.policies({tlx_test::kAnyPolicy});
    };
    const CPV_SETTINGS inhibited = {nullptr, 1, 255, 3};
    expect_verdicts({
        {"inhibitAnyPolicy", 4, both(any, with(2, kInhibitAnyPolicy, "02:00", true)), kDefaults, kGood},
        {"inhibitAnyPolicy of 1", 4, both(any, with(2, kInhibitAnyPolicy, "02:01", true)), kDefaults, kGood},
        {"broken inhibitAnyPolicy", 4, with(2, kInhibitAnyPolicy, "02:"), kDefaults, kGood},
        {"initial any-policy inhibit", 4, any, inhibited, kGood},
        {"a maximum of 1 on six certificates", 6, kAsItIs, {nullptr, 0, 255, 1}, kGood},
        {"a maximum of 0", 6, kAsItIs, {nullptr, 0, 255, 0}, kGood},
        {"a maximum below 0", 3, kAsItIs, {nullptr, 0, 255, -1}, {0x53070047, 2}},
    });
}

TEST(Validation, RefusesPoliciesThatCannotBeRead) {
    expect_verdicts(
        {{"qualifiers are not looked at", 3, with(0, kPolicies, "30{30{06:2A0301 02:}}"), kDefaults, kGood}});
    for (const char *value : {"", "30{}", "30{30{}}", "30{30{02:01}}", "30{30{06:}}", "04{30{06:2A03}}",
                              "30{30{06:2A03} 05:}", "30{30{06:2AFF}}"}) {
        expect_verdicts({{value, 3, with(1, kPolicies, value), kNoExplicitPolicy, {0x530A0047, 1}},
                         {value, 3, with(2, kPolicies, value), kDefaults, kGood}});
    }
}

TEST(Validation, RefusesWhatIsNoPath) {
    const auto one = tlx_test::make(valid_chain(1));
    EXPECT_EQ(validate(static_cast<X509_CERTIFICATES *>(nullptr)), (Verdict{0x53070049, -1}));
    EXPECT_EQ(validate(Chain()), (Verdict{0x5307002B, -1}));
    EXPECT_EQ(validate_certpath(nullptr, nullptr, nullptr), 0x53070049U);
    EXPECT_EQ(validate_certpath_ex(one.get(), nullptr, nullptr, nullptr, nullptr), 0U)
        << "nothing wanted back";

    const auto path = tlx_test::make(valid_chain(3));
    push_STACK_value(path.get(), new_X509_CERT());
    EXPECT_EQ(validate(path.get()), (Verdict{0x53100049, 3})) << "an empty certificate is not self-issued";
    void *empty = remove_STACK_value(path.get(), 3);
    insert_STACK_value(path.get(), empty, 1);
    EXPECT_EQ(validate(path.get()), (Verdict{0x53100054, 1}));
    push_STACK_value(path.get(), nullptr);
    EXPECT_EQ(validate(path.get()), (Verdict{0x53100049, 4})) << "no certificate at all";
}

TEST(Validation, ChangesNoCertificate) {
    const auto path = tlx_test::make(valid_chain(3));
    const Certificates before(dup_X509_CERTIFICATES(path.get()));
    EXPECT_EQ(validate(path.get()), kGood);
    for (std::int32_t i = 0; i < 3; ++i)
        EXPECT_EQ(cmp_X509_CERT(get_X509_CERTIFICATES_child(path.get(), i),
                                get_X509_CERTIFICATES_child(before.get(), i)),
                  0);
}

TEST(Validation, EmptiesATreeThatItIsGivenAndKeepsWhatItBuilt) {
    Chain chain = valid_chain(3);
    const auto good = tlx_test::make(chain);
    chain[0].signer = 3;
    const auto bad = tlx_test::make(chain);
    const tlx_test::LeakCheck leaks;
    const Tree tree(new_node_LIST());
    node_LIST *list = tree.get();
    const char *const whole = "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1";
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(validate_certpath(good.get(), nullptr, &list), 0U);
        EXPECT_EQ(list, tree.get());
        EXPECT_EQ(text_of_tree(list), whole);
    }
    EXPECT_EQ(validate_certpath(nullptr, nullptr, &list), 0x53070049U);
    EXPECT_EQ(text_of_tree(list), whole) << "untouched";
    EXPECT_EQ(validate_certpath(bad.get(), nullptr, &list), 0x53100054U);
    EXPECT_EQ(text_of_tree(list), "0: 2.5.29.32.0; 1: 1.2.3.1");
    EXPECT_EQ(list, tree.get());

    node_LIST *made = nullptr;
    EXPECT_EQ(validate_certpath(bad.get(), nullptr, &made), 0x53100054U);
    EXPECT_EQ(made, nullptr);
}

TEST(Validation, UsesTheSettingsOfTheProcess) {
    Chain chain = valid_chain(3);
    chain[1].without(kPolicies);
    const auto path = tlx_test::make(chain);
    EXPECT_EQ(validate_certpath(path.get(), nullptr, nullptr), 0x5310011CU);
    set_initial_explicit_policy(0);
    EXPECT_EQ(validate_certpath(path.get(), nullptr, nullptr), 0U);
    std::int32_t stopped_at = 7;
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, &stopped_at), 0U);
    EXPECT_EQ(validate(path.get(), kDefaults), (Verdict{0x5310011C, 1})) << "settings of one's own";
    set_initial_explicit_policy(255);
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, &stopped_at), 0x5310011CU);
    EXPECT_EQ(stopped_at, 1);
}

// ---- Settings ----

TEST(Settings, AreStoredAsStated) {
    EXPECT_EQ(get_initial_any_policy_inhibit(), 0U);
    EXPECT_EQ(get_initial_explicit_policy(), 255U);
    EXPECT_EQ(get_initial_policy_mapping_inhibit(), 0U);
    EXPECT_EQ(get_max_certificatePath_length(), 3);

    set_initial_any_policy_inhibit(7);
    set_initial_explicit_policy(0);
    set_initial_policy_mapping_inhibit(1);
    EXPECT_EQ(get_initial_policy_mapping_inhibit(), 0U) << "mappings are not processed";
    EXPECT_EQ(set_max_certificatePath_length(0), 1U);
    EXPECT_EQ(set_max_certificatePath_length(-1), 1U);
    EXPECT_EQ(get_max_certificatePath_length(), 3);
    EXPECT_EQ(set_max_certificatePath_length(1), 0U);
    EXPECT_EQ(set_max_certificatePath_length(0), 1U);

    const ASN1_TIME somewhen = {};
    CPV_SETTINGS settings = {&somewhen, 1, 1, 1};
    get_CPV_SETTINGS(&settings);
    EXPECT_EQ(settings.time, nullptr);
    EXPECT_EQ(settings.initial_any_policy_inhibit, 7U);
    EXPECT_EQ(settings.initial_explicit_policy, 0U);
    EXPECT_EQ(settings.max_certificatePath_length, 1);
    get_CPV_SETTINGS(nullptr);

    set_initial_any_policy_inhibit(0);
    set_initial_explicit_policy(255);
    EXPECT_EQ(set_max_certificatePath_length(3), 0U);
}

}  // namespace
