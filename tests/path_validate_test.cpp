// Validating paths: one row for every step that can fail, and for every surprise that passes.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <functional>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"

namespace tlx_test {
namespace {

using namespace extension;

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};
const CPV_SETTINGS kNoExplicitPolicy = {nullptr, 0, 0, 3};

/// "good", or the status and where validation stopped: "53100054 at 0".
std::string validate(const X509_CERTIFICATES *given, const CPV_SETTINGS &settings = kDefaults) {
    const LeakCheck leaks;
    const Certificates path(dup_X509_CERTIFICATES(given));
    std::int32_t stopped_at = -2;
    node_LIST *made = nullptr;
    const std::uint32_t status = validate_certpath_ex(path.get(), nullptr, &made, &settings, &stopped_at);
    const Tree tree(made);
    EXPECT_EQ(made != nullptr, status == 0);
    char text[32];
    std::snprintf(text, sizeof text, "%08X at %d", status, stopped_at);
    return status == 0 && stopped_at == -1 ? "good" : text;
}
std::string validate(const Chain &chain, const CPV_SETTINGS &settings = kDefaults) {
    return validate(make(chain).get(), settings);
}

/// One change of a case to a valid path.
using Bend = std::function<void(Chain &)>;
struct Case {
    const char *what;
    std::vector<Bend> bends;
    const char *expected;
    unsigned length = 3;
    CPV_SETTINGS settings = kDefaults;
};
void expect_verdicts(std::initializer_list<Case> cases) {
    for (const Case &each : cases) {
        Chain chain = valid_chain(each.length);
        for (const Bend &bend : each.bends)
            bend(chain);
        EXPECT_EQ(validate(chain, each.settings), each.expected) << each.what;
    }
}

template <typename T, typename Value>
Bend set(unsigned index, T CertSpec::*member, Value value) {
    return [=](Chain &chain) { chain[index].*member = value; };
}
Bend expired(unsigned index) {
    return set(index, &CertSpec::not_after, "2021-01-01,00:00:00");
}
Bend signed_by(unsigned index, unsigned key) {
    return set(index, &CertSpec::signer, key);
}
Bend with(unsigned index, const char *id, const char *value, bool critical = false) {
    return [=](Chain &chain) { chain[index].with(id, value, critical); };
}
Bend without(unsigned index, const char *id) {
    return [=](Chain &chain) { chain[index].without(id); };
}
Bend without_extensions(unsigned index) {
    return set(index, &CertSpec::extensions, std::nullopt);
}
Bend no_extension_in(unsigned index) {
    return [=](Chain &chain) { chain[index].extensions->clear(); };
}
Bend self_issued(unsigned index) {
    return [=](Chain &chain) {
        chain[index].issuer = chain[index].subject;
        chain[index].signer = chain[index].key;
    };
}

TEST(Validation, OfWellFormedPathsSucceedsAtAnyLength) {
    for (unsigned length = 1; length <= 7; ++length)
        EXPECT_EQ(validate(valid_chain(length)), "good") << length;
    Chain chain = valid_chain(4);
    chain[2].key = chain[1].signer = kKcdsaKey;
    EXPECT_EQ(validate(chain), "good") << "a KCDSA key in the middle";
    chain[3].key = chain[3].signer = chain[2].signer = kKcdsaKey;
    EXPECT_EQ(validate(chain), "good") << "and one at the root";
}

TEST(Validation, TakesAThousandCertificates) {
    const Cert root = valid_chain(1)[0].make();
    const Certificates path(new_X509_CERTIFICATES());
    while (get_X509_CERTIFICATES_count(path.get()) < TLX_CPV_MAX_CERTIFICATES)
        ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "good");
    ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "53070047 at -1");
}

TEST(Validation, ChecksSignaturesTimesAndNames) {
    expect_verdicts({
        {"target signed by another key", {signed_by(0, 3)}, "53100054 at 0"},
        {"KCDSA signature under an RSA key", {signed_by(1, kKcdsaKey)}, "53100054 at 1"},
        {"root not signed by itself", {signed_by(2, 3)}, "00000002 at 2"},
        {"root of another key kind than its signature", {signed_by(2, kKcdsaKey)}, "00000002 at 2"},
        {"expired target", {expired(0)}, "462D0113 at 0"},
        {"CA not yet valid", {set(1, &CertSpec::not_before, "2098-01-01,00:00:00")}, "462D0113 at 1"},
        {"a root may have expired", {expired(2)}, "good"},
        {"another issuer's name", {set(0, &CertSpec::issuer, "CA 9")}, "53100106 at 0"},
        {"no self-issued certificate at the end", {&Chain::pop_back}, "53100049 at 1"},
        {"the signature comes before the validity", {signed_by(0, 3), expired(0)}, "53100054 at 0"},
        {"the validity before the name", {set(0, &CertSpec::issuer, "CA 9"), expired(0)}, "462D0113 at 0"},
    });
}

TEST(Validation, TakesTheTimeItIsGiven) {
    Chain chain = valid_chain(2);
    chain[0].not_before = "2000-02-03,04:05:06";
    chain[0].not_after = "2001-02-03,04:05:06";
    const Certificates path = make(chain);
    const std::pair<const char *, const char *> cases[] = {{"2000-02-03,04:05:05", "462D0113 at 0"},
                                                           {"2000-02-03,04:05:06", "good"},
                                                           {"2001-02-03,04:05:06", "good"},
                                                           {"2001-02-03,04:05:07", "462D0113 at 0"}};
    for (const auto &[text, expected] : cases) {
        ASN1_TIME *time = charToASN1_TIME(text);
        EXPECT_EQ(validate(path.get(), {time, 0, 255, 3}), expected) << text;
        free_ASN1_TIME(time);
    }
    EXPECT_EQ(validate(path.get()), "462D0113 at 0") << "the present";
}

TEST(Validation, ChecksTheIssuersBasicConstraints) {
    const Bend no_ca = with(1, kBasicConstraints, "30{01:00}");
    const Bend above_user = with(1, kBasicConstraints, "30{01:FF 02:00}");
    expect_verdicts({
        {"missing", {without(1, kBasicConstraints)}, "5309011B at 0"},
        {"missing at the root", {without(2, kBasicConstraints)}, "5309011B at 1"},
        {"missing at the target, which issues nothing", {without(0, kBasicConstraints)}, "good"},
        {"empty", {with(1, kBasicConstraints, "30{}")}, "5309000E at 0"},
        {"no element", {with(1, kBasicConstraints, "")}, "5309000E at 0"},
        {"any octet but zero is true, not critical", {with(1, kBasicConstraints, "30{01:01}")}, "good"},
        {"no CA, but keyCertSign", {no_ca}, "5309011B at 0"},
        {"no CA, and no keyCertSign", {no_ca, with(1, kKeyUsage, "03:0780")}, "530A0118 at 0"},
        {"no CA, and no key usage", {no_ca, without(1, kKeyUsage)}, "good"},
        // The path length counts only when it is zero above a CA.
        {"0 above a CA", {with(2, kBasicConstraints, "30{01:FF 02:00}")}, "5309011B at 1"},
        {"0 with a leading octet", {with(2, kBasicConstraints, "30{01:FF 02:0000}")}, "5309011B at 1"},
        {"0 above a user", {above_user}, "good"},
        {"0 above one that says it is no CA", {above_user, with(0, kBasicConstraints, "30{01:00}")}, "good"},
        {"0 above what cannot be read", {above_user, with(0, kBasicConstraints, "30{}")}, "good"},
        {"0 of no CA", {with(2, kBasicConstraints, "30{01:00 02:00}"), without(2, kKeyUsage)}, "good"},
        {"1 above four CAs", {with(5, kBasicConstraints, "30{01:FF 02:01}")}, "good", 6},
    });
}

TEST(Validation, ChecksTheIssuersKeyUsage) {
    expect_verdicts({
        {"missing", {without(1, kKeyUsage)}, "good"},
        {"without keyCertSign", {with(1, kKeyUsage, "03:01FA")}, "530A0118 at 0"},
        {"keyCertSign alone", {with(1, kKeyUsage, "03:0204")}, "good"},
        {"at the root", {with(2, kKeyUsage, "03:0780")}, "530A0118 at 1"},
        {"no bits", {with(1, kKeyUsage, "03:00")}, "530A0118 at 0"},
        {"no BIT STRING", {with(1, kKeyUsage, "04:0204")}, "530A0118 at 0"},
        {"no element", {with(1, kKeyUsage, "")}, "530A0118 at 0"},
        {"the target's does not count", {with(0, kKeyUsage, "")}, "good"},
    });
}

TEST(Validation, WantsExtensions) {
    expect_verdicts({
        {"none in the target", {without_extensions(0)}, "530A002B at 0"},
        {"an empty list in the target", {no_extension_in(0)}, "530A002B at 0"},
        {"none in the target, policies or not",
         {without_extensions(0)},
         "530A002B at 0",
         3,
         kNoExplicitPolicy},
        {"none in a CA", {without_extensions(1)}, "530A002B at 1", 3, kNoExplicitPolicy},
        // The root then passes the check of basic constraints and fails that of its key usage.
        {"none in the root", {without_extensions(2)}, "530A002B at 1"},
        {"an empty list in the root", {no_extension_in(2)}, "530A002B at 1"},
        {"none in a root that stands alone", {without_extensions(0)}, "good", 1},
        {"unknown ones are let pass", {with(0, "1.2.3.4.5", "05:", true)}, "good"},
    });
}

TEST(Validation, ChecksNothingOfSelfIssuedCertificatesButTheirSignature) {
    expect_verdicts({
        {"at the target", {self_issued(0), without_extensions(0), expired(0)}, "good"},
        {"of a foreign key", {self_issued(0), signed_by(0, 3)}, "00000002 at 0"},
        // It adds no level to the policy tree, and the next certificate needs that level.
        {"in the middle", {self_issued(1)}, "53100049 at 0"},
        {"in the middle of a longer one", {self_issued(1)}, "53100049 at 0", 5},
        {"policies are read first", {self_issued(1), with(0, kPolicies, "30{}")}, "530A0047 at 0"},
        {"in the middle, signed by the CA above", {self_issued(1), signed_by(1, 0)}, "00000002 at 1"},
    });
}

TEST(Validation, LetsPolicyConstraintsRequirePolicies) {
    expect_verdicts({
        {"an intermediate without policies", {without(1, kPolicies)}, "5310011C at 1", 4},
        {"a target without policies", {without(0, kPolicies)}, "5310011C at 0", 4},
        {"a root without policies", {without(3, kPolicies)}, "good", 4},
    });
    // The constraint counts down from its own certificate; the target is one below CA 2, two below CA 1.
    const struct {
        const char *what;
        unsigned index;
        const char *value, *expected;
    } cases[] = {
        {"from the next but one on", 2, "30{80:01}", "5310011C at 0"},
        {"explicitly tagged", 2, "30{A0{02:01}}", "5310011C at 0"},
        {"beyond the end", 2, "30{80:02}", "53070119 at -1"},
        {"0 changes nothing", 2, "30{80:00}", "good"},
        {"inhibitPolicyMapping alone", 2, "30{81:01}", "good"},
        {"in the root, which does not count", 3, "30{80:01}", "good"},
        {"a number of 33 bits", 2, "30{A0{02:0100000001}}", "good"},
        {"larger than what is left", 2, "30{80:7F}", "good"},
        {"no element", 2, "", "good"},
        {"an empty one", 2, "30{}", "good"},
        {"in the target, too late for it", 0, "30{80:01}", "good"},
    };
    Chain chain = valid_chain(4);
    for (CertSpec &spec : chain)
        spec.without(kPolicies);
    EXPECT_EQ(validate(chain), "5310011C at 2");
    EXPECT_EQ(validate(chain, kNoExplicitPolicy), "good") << "not required";
    for (const auto &each : cases) {
        Chain constrained = chain;
        constrained[each.index].with(kPolicyConstraints, each.value);
        EXPECT_EQ(validate(constrained, kNoExplicitPolicy), each.expected) << each.what;
    }
}

TEST(Validation, ReadsButDoesNotHonourWhatItSays) {
    const Bend any_policy = [](Chain &chain) {
        for (CertSpec &spec : chain)
            spec.policies({kAnyPolicy});
    };
    expect_verdicts({
        {"inhibitAnyPolicy", {any_policy, with(2, kInhibitAnyPolicy, "02:00", true)}, "good", 4},
        {"inhibitAnyPolicy of 1", {any_policy, with(2, kInhibitAnyPolicy, "02:01", true)}, "good", 4},
        {"broken inhibitAnyPolicy", {with(2, kInhibitAnyPolicy, "02:")}, "good", 4},
        {"initial any-policy inhibit", {any_policy}, "good", 4, {nullptr, 1, 255, 3}},
        {"a maximum of 1 on six certificates", {}, "good", 6, {nullptr, 0, 255, 1}},
        {"a maximum of 0", {}, "good", 6, {nullptr, 0, 255, 0}},
        {"a maximum below 0", {}, "53070047 at 2", 3, {nullptr, 0, 255, -1}},
    });
}

TEST(Validation, RefusesPoliciesThatCannotBeRead) {
    for (const char *value : {"", "30{}", "30{30{}}", "30{30{02:01}}", "30{30{06:}}", "04{30{06:2A03}}",
                              "30{30{06:2A03} 05:}", "30{30{06:2AFF}}", "30{30{06:2A9080808003}}"}) {
        expect_verdicts({{value, {with(1, kPolicies, value)}, "530A0047 at 1", 3, kNoExplicitPolicy},
                         {"in the root", {with(2, kPolicies, value)}, "good"}});
    }
    expect_verdicts({{"a broken qualifier", {with(0, kPolicies, "30{30{06:2A0301 02:}}")}, "good"}});
}

TEST(Validation, RefusesWhatIsNoPath) {
    EXPECT_EQ(validate(static_cast<X509_CERTIFICATES *>(nullptr)), "53070049 at -1");
    EXPECT_EQ(validate(Chain()), "5307002B at -1");
    EXPECT_EQ(validate_certpath(nullptr, nullptr, nullptr), 0x53070049U);

    const Certificates path = make(valid_chain(3));
    push_STACK_value(path.get(), new_X509_CERT());
    EXPECT_EQ(validate(path.get()), "53100049 at 3") << "an empty certificate is not self-issued";
    void *empty = remove_STACK_value(path.get(), 3);
    insert_STACK_value(path.get(), empty, 1);
    EXPECT_EQ(validate(path.get()), "53100054 at 1");
    push_STACK_value(path.get(), nullptr);
    EXPECT_EQ(validate(path.get()), "53100049 at 4") << "no certificate at all";
}

TEST(Validation, EmptiesATreeThatItIsGivenAndKeepsWhatItBuilt) {
    Chain chain = valid_chain(3);
    const Certificates good = make(chain);
    chain[0].signer = 3;
    const Certificates bad = make(chain);
    const Certificates before(dup_X509_CERTIFICATES(good.get()));
    const LeakCheck leaks;
    const Tree tree(new_node_LIST());
    node_LIST *list = tree.get();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(validate_certpath(good.get(), nullptr, &list), 0U);
        EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1");
    }
    EXPECT_EQ(validate_certpath(nullptr, nullptr, &list), 0x53070049U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1") << "untouched";
    EXPECT_EQ(validate_certpath(bad.get(), nullptr, &list), 0x53100054U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1");
    EXPECT_EQ(list, tree.get());
    for (std::int32_t i = 0; i < 3; ++i)
        EXPECT_EQ(cmp_X509_CERT(get_X509_CERTIFICATES_child(good.get(), i),
                                get_X509_CERTIFICATES_child(before.get(), i)),
                  0)
            << "no certificate changes";
}

// ---- Settings ----

TEST(Settings, OfTheProcessAreStoredAsStatedAndUsed) {
    CPV_SETTINGS settings;
    get_CPV_SETTINGS(&settings);
    EXPECT_EQ(settings.initial_any_policy_inhibit, 0U);
    EXPECT_EQ(settings.initial_explicit_policy, 255U);
    EXPECT_EQ(settings.max_certificatePath_length, 3);

    Chain chain = valid_chain(3);
    chain[1].without(kPolicies);
    const Certificates path = make(chain);
    std::int32_t stopped_at = 7;
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, &stopped_at), 0x5310011CU);
    EXPECT_EQ(stopped_at, 1);
    set_initial_explicit_policy(0);
    EXPECT_EQ(validate_certpath(path.get(), nullptr, nullptr), 0U);
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(validate(path.get(), kDefaults), "5310011C at 1") << "settings of one's own";

    set_initial_any_policy_inhibit(7);
    set_initial_policy_mapping_inhibit(1);
    EXPECT_EQ(get_initial_policy_mapping_inhibit(), 0U) << "mappings are not processed";
    EXPECT_EQ(set_max_certificatePath_length(0), 1U);
    EXPECT_EQ(set_max_certificatePath_length(-1), 1U);
    EXPECT_EQ(get_max_certificatePath_length(), 3);
    EXPECT_EQ(set_max_certificatePath_length(1), 0U);
    const ASN1_TIME somewhen = {};
    settings.time = &somewhen;
    get_CPV_SETTINGS(&settings);
    EXPECT_EQ(settings.time, nullptr);
    EXPECT_EQ(settings.initial_any_policy_inhibit, get_initial_any_policy_inhibit());
    EXPECT_EQ(settings.initial_any_policy_inhibit, 7U);
    EXPECT_EQ(settings.initial_explicit_policy, get_initial_explicit_policy());
    EXPECT_EQ(settings.initial_explicit_policy, 0U);
    EXPECT_EQ(settings.max_certificatePath_length, 1);
    get_CPV_SETTINGS(nullptr);

    set_initial_any_policy_inhibit(0);
    set_initial_explicit_policy(255);
    EXPECT_EQ(set_max_certificatePath_length(3), 0U);
}

}  // namespace
}  // namespace tlx_test
