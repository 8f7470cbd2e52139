// Building paths: the choice of issuers, the ends of paths, and the same results from a large pool.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <random>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "trust/sip_hash.hpp"

namespace tlx_test {
namespace {

using namespace extension;

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};
const char *const kNoIssuer = "53050047: ";

/// The result of build_certPath_ex: the subjects of the path, or the status in hexadecimal with the subjects
/// appended to the caller's list before.
std::string build(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors, const X509_CERT *target,
                  const CPV_SETTINGS *settings = &kDefaults) {
    const LeakCheck leaks;
    const Certificates path(new_X509_CERTIFICATES());
    X509_CERTIFICATES *list = path.get();
    const std::uint32_t status = build_certPath_ex(pool, anchors, target, &list, settings);
    char text[16];
    std::snprintf(text, sizeof text, "%08X: ", status);
    return (status == 0 ? "" : text) + subjects_of(path.get());
}

/// The path from the first certificate of the chain, with the others as the pool and the last as the anchor.
std::string build(const Chain &chain, const CPV_SETTINGS &settings = kDefaults) {
    const Certificates pool = make(Chain(chain.begin() + 1, chain.end()));
    return build(pool.get(), anchors_of({chain.back()}).get(), chain.front().make().get(), &settings);
}

// ---- Where paths end ----

TEST(Building, AllowsOneMoreThanTheMaximum) {
    const struct {
        unsigned length;
        std::int32_t most;
        const char *path;
    } cases[] = {
        {1, -5, "Root"},  // self-issued: it needs no pool
        {2, 0, "User, Root"},
        {2, -1, "53050047: "},
        {3, 0, "53050047: User"},
        {4, INT32_MAX, "User, CA 2, CA 1, Root"},
        {5, 3, "User, CA 3, CA 2, CA 1, Root"},
        {6, 3, "53050047: User, CA 4, CA 3, CA 2"},
        {7, 5, "User, CA 5, CA 4, CA 3, CA 2, CA 1, Root"},
    };
    for (const auto &each : cases)
        EXPECT_EQ(build(valid_chain(each.length), {nullptr, 0, 0, each.most}), each.path) << each.length;
}

TEST(Building, EndsInAnAnchorWithTheSameNameAndKey) {
    const Chain chain = valid_chain(3);
    CertSpec other_key = chain[2];
    other_key.key = 3;
    CertSpec other_name = chain[2];
    other_name.subject = "Loot";
    const Certificates pool = make(chain);
    const Cert target = chain[0].make();
    for (const Chain &anchors : {Chain(), Chain{other_key}, Chain{other_name}, Chain{chain[1]}})
        EXPECT_EQ(build(pool.get(), anchors_of(anchors).get(), target.get()), "53050116: User, CA 1");
    EXPECT_EQ(build(pool.get(), anchors_of({other_key, other_name, chain[2]}).get(), target.get()),
              "User, CA 1, Root");
}

TEST(Building, ChecksTheValidityOfEach) {
    ASN1_TIME *time = charToASN1_TIME("2020-06-01,00:00:00");
    const char *const before[] = {"462D0113: ", "462D0113: User", "462D0113: User, CA 1"};
    for (unsigned index = 0; index < 3; ++index) {
        Chain chain = valid_chain(3);
        chain[index].not_after = "2021-01-01,00:00:00";
        EXPECT_EQ(build(chain), before[index]);
        EXPECT_EQ(build(chain, {time, 0, 0, 3}), "User, CA 1, Root");
    }
    free_ASN1_TIME(time);
    Chain chain = valid_chain(6);
    chain[4].not_after = "2021-01-01,00:00:00";
    EXPECT_EQ(build(chain).substr(0, 8), "53050047") << "the length comes before the validity";
}

TEST(Building, OfLoopsEndsWhenEachCertificateHadItsTurn) {
    Chain chain = valid_chain(4);
    chain[2].with({"03", "", ""});  // CA 1 names CA 2
    EXPECT_EQ(build(chain), "53050047: User, CA 2, CA 1, CA 2");
    EXPECT_EQ(build(chain, {nullptr, 0, 0, 1}), "53050047: User, CA 2");
    chain[1].with({"03", "", ""});  // CA 2 names itself
    EXPECT_EQ(build(chain, {nullptr, 0, 0, INT32_MAX}), "53050047: User, CA 2, CA 2, CA 2");
}

TEST(Building, LooksAtNoSignatureAndNoOtherName) {
    Chain chain = valid_chain(3);
    chain[0].signer = 3;
    chain[0].issuer = "Somebody else";
    EXPECT_EQ(build(chain), "User, CA 1, Root");
}

// ---- Who is the issuer ----

TEST(IssuerChoice, GoesByTheAuthorityKeyIdentifier) {
    // In the pool CA 1 has key 02 and serial 02, Root key 01 and serial 01.
    const char *const by_ca = "User, CA 1, Root";
    const struct {
        const char *what;
        AuthorityKeyId wanted;
        const char *path;
    } cases[] = {
        {"key with more octets than the candidate's", {"02FF", "", ""}, by_ca},
        {"empty key", {" ", "", ""}, kNoIssuer},
        {"another key", {"FF02", "", ""}, kNoIssuer},
        {"serial", {"", "", "02"}, by_ca},
        {"another serial", {"", "", "0200"}, kNoIssuer},
        {"directory name", {"", "CA 1", ""}, by_ca},
        {"another directory name", {"", "CA 2", ""}, kNoIssuer},
        {"another key, but the serial", {"FF", "", "02"}, by_ca},
        {"another key, but the name", {"FF", "CA 1", "FF"}, by_ca},
        {"the first that fits in one of them", {"02", "Root", "FF"}, by_ca},
        {"not the one that fits in most", {"01", "CA 1", "01"}, by_ca},
        {"nothing", {"", "", ""}, kNoIssuer},
    };
    Chain chain = valid_chain(3);
    for (const auto &each : cases) {
        chain[0].with(each.wanted);
        EXPECT_EQ(build(chain), each.path) << each.what;
    }
    // Only the first general name counts: of dNSName 'a' and the directory name of CA 1, in either order.
    const std::string name = "A4{30{31{30{06:550406 13:4B52}} 31{30{06:550403 0C:43412031}}}}";
    const std::string names_first = "30{A1{" + name + "82:61}}";
    const std::string dns_first = "30{A1{82:61" + name + "}}";
    chain[0].with(kAuthorityKeyId, names_first);
    EXPECT_EQ(build(chain), by_ca);
    for (const std::string value :
         {"", "30{}", "04:02", "30{82:}", "30{81{}}", "30{A1{}}", dns_first.c_str()}) {
        chain[0].with(kAuthorityKeyId, value);
        EXPECT_EQ(build(chain), kNoIssuer) << value;
    }
    chain[0].without(kAuthorityKeyId);
    EXPECT_EQ(build(chain), kNoIssuer) << "none";
    chain[0].extensions.reset();
    EXPECT_EQ(build(chain), kNoIssuer) << "no extensions";
}

TEST(IssuerChoice, TakesTheFirstOfThePool) {
    const Chain chain = valid_chain(3);
    CertSpec expired = chain[1];
    expired.not_after = "2021-01-01,00:00:00";
    CertSpec without_key = chain[1];
    without_key.subject = "CA without key";
    without_key.without(kSubjectKeyId);
    CertSpec any_key = chain[1];
    any_key.subject = "Any";
    any_key.with(kSubjectKeyId, "04:");
    CertSpec broken_key = chain[1];
    broken_key.with(kSubjectKeyId, "02:02");
    // What Korean user certificates say: the key of CA 1, and the name of CA 1's own issuer.
    CertSpec korean = chain[0];
    korean.with({"02", "Root", "02"});
    const struct {
        const char *what;
        Chain chain;
        const char *path;
    } cases[] = {
        {"two", {chain[0], chain[1], expired, chain[2]}, "User, CA 1, Root"},
        {"no second choice", {chain[0], expired, chain[1], chain[2]}, "462D0113: User"},
        {"no key", {chain[0], without_key, chain[1], chain[2]}, "User, CA 1, Root"},
        {"a broken key", {chain[0], broken_key, chain[2]}, kNoIssuer},
        {"an empty one fits every key", {chain[0], any_key, chain[2]}, "53050047: User, Any, Any"},
        {"no root", {chain[0], chain[1], chain[0]}, "53050047: User"},
        {"the key of the CA", {korean, chain[1], chain[2]}, "User, CA 1, Root"},
        {"the name of the root, which stands first", {korean, chain[2], chain[1], chain[2]}, "User, Root"},
    };
    for (const auto &each : cases)
        EXPECT_EQ(build(each.chain), each.path) << each.what;
}

// ---- The index of a large pool ----

/// The members by which building finds a certificate of a pool.
struct Candidate {
    std::string name;
    std::string serial;
    const char *key_id;  // null for none
};

/// A self-issued certificate whose version is the low octet of its place in the pool.
Cert make_candidate(const Candidate &candidate, std::size_t place) {
    CertSpec spec;
    spec.subject = spec.issuer = candidate.name;
    spec.serial = candidate.serial;
    spec.version = static_cast<std::uint8_t>(place);
    spec.is_signed = false;
    if (candidate.key_id != nullptr) spec.with(kSubjectKeyId, "04:" + std::string(candidate.key_id));
    return spec.make();
}

/// The rule; -1 for none.
int first_that_fits(const std::vector<Candidate> &pool, const AuthorityKeyId &wanted) {
    const std::string key = wanted.key_id == " " ? "" : wanted.key_id;
    for (std::size_t i = 0; i < pool.size(); ++i) {
        const bool by_key =
            !wanted.key_id.empty() && pool[i].key_id != nullptr && key.starts_with(pool[i].key_id);
        const bool by_name = !wanted.issuer.empty() && wanted.issuer == pool[i].name;
        if (by_key || by_name || wanted.serial == pool[i].serial) return static_cast<int>(i);
    }
    return -1;
}

TEST(IssuerIndex, FindsWhatAScanFinds) {
    // Few different values, so that pools have duplicates and identifiers that begin alike.
    const char *const keys[] = {nullptr, "", "01", "0102", "010203", "02", "0201", "0203040506070809"};
    const char *const sought_keys[] = {"", " ", "01", "0102", "010203FF", "02", "0203040506070809", "03"};
    const char *const serials[] = {"00", "01", "02", "FFFFFFFFFFFFFFFFFFFFFFFF"};
    const char *const names[] = {"A", "B", "C"};
    Chain trusted(4);
    for (std::size_t i = 0; i < 4; ++i)
        trusted[i].subject = trusted[i].issuer = i < 3 ? names[i] : "Z";
    const Anchors anchors = anchors_of(trusted);
    std::mt19937 random(4711);
    const auto any_of = [&random](const auto &values) { return values[random() % std::size(values)]; };
    unsigned found = 0;
    unsigned missed = 0;
    for (const unsigned size : {0U, 1U, 20U, 255U, 256U, 257U}) {
        for (unsigned round = 0; round < 8; ++round) {
            std::vector<Candidate> candidates;
            const Certificates pool(new_X509_CERTIFICATES());
            for (unsigned i = 0; i < size; ++i) {
                const bool is_odd_one = random() % (round + 1) == 0;
                candidates.push_back(is_odd_one ? Candidate{any_of(names), any_of(serials), any_of(keys)}
                                                : Candidate{"Z", "7E" + std::to_string(10 + i % 90), "FE"});
                push_STACK_value(pool.get(), make_candidate(candidates.back(), i).release());
            }
            if (round == 1) push_STACK_value(pool.get(), new_X509_CERT());
            if (round == 2) push_STACK_value(pool.get(), nullptr);
            for (unsigned i = 0; i < 20; ++i) {
                const AuthorityKeyId wanted = {random() % 2 == 0 ? any_of(sought_keys) : "",
                                               random() % 3 == 0 ? any_of(names) : "",
                                               random() % 3 == 0 ? any_of(serials) : ""};
                CertSpec target;
                target.subject = "User";
                target.with(wanted);
                target.is_signed = false;
                const Certificates path(new_X509_CERTIFICATES());
                X509_CERTIFICATES *list = path.get();
                const std::uint32_t status =
                    build_certPath_ex(pool.get(), anchors.get(), target.make().get(), &list, &kDefaults);
                const int expected = first_that_fits(candidates, wanted);
                ASSERT_EQ(status, expected < 0 ? 0x53050047U : 0U);
                ++(expected < 0 ? missed : found);
                if (expected < 0) continue;
                ASSERT_EQ(get_X509_version(get_X509_CERTIFICATES_child(list, 1)),
                          static_cast<std::uint8_t>(expected))
                    << "pool of " << size << ": " << wanted.key_id << ", " << wanted.issuer << ", "
                    << wanted.serial;
            }
        }
    }
    EXPECT_GT(found, 300U);
    EXPECT_GT(missed, 300U);
}

TEST(SipHash, GivesThePublishedValue) {
    // Appendix A of the paper: key 00 01 .. 0F, message 00 01 .. 0E.
    tlx::SipHash hash(tlx::SipHash::Key{{0x0706050403020100, 0x0F0E0D0C0B0A0908}});
    for (std::uint8_t octet = 0; octet < 15; ++octet)
        hash.add(octet);
    EXPECT_EQ(hash.value(), 0xA129CA6149BE45E5U);
}

// ---- Arguments and results ----

TEST(Building, MakesAPathOrAppendsToOne) {
    const Chain chain = valid_chain(3);
    const Certificates pool = make(chain);
    const Anchors anchors = anchors_of({chain[2]});
    const Anchors no_anchors = anchors_of({});
    const Cert target = chain[0].make();
    const Cert empty(new_X509_CERT());
    const LeakCheck leaks;
    X509_CERTIFICATES *path = nullptr;
    EXPECT_EQ(build_certPath(nullptr, anchors.get(), target.get(), &path), 0x53050049U);
    EXPECT_EQ(build_certPath(pool.get(), nullptr, target.get(), &path), 0x53050049U);
    EXPECT_EQ(build_certPath(pool.get(), anchors.get(), nullptr, &path), 0x53050049U);
    EXPECT_EQ(build_certPath(pool.get(), anchors.get(), target.get(), nullptr), 0x53050049U);
    EXPECT_EQ(build_certPath(pool.get(), anchors.get(), empty.get(), &path), 0x462D0049U) << "no validity";
    EXPECT_EQ(build_certPath(pool.get(), no_anchors.get(), target.get(), &path), 0x53050116U);
    EXPECT_EQ(path, nullptr);

    ASSERT_EQ(build_certPath(pool.get(), anchors.get(), target.get(), &path), 0U);
    const Certificates owner(path);
    for (std::int32_t i = 0; i < 3; ++i) {
        const X509_CERT *copy = get_X509_CERTIFICATES_child(path, i);
        EXPECT_NE(copy, get_X509_CERTIFICATES_child(pool.get(), i));
        EXPECT_EQ(cmp_X509_CERT(copy, get_X509_CERTIFICATES_child(pool.get(), i)), 0);
    }
    EXPECT_EQ(build_certPath(pool.get(), anchors.get(), target.get(), &path), 0U);
    EXPECT_EQ(path, owner.get());
    EXPECT_EQ(subjects_of(path), "User, CA 1, Root, User, CA 1, Root");
}

TEST(Building, UsesTheSettingsOfTheProcess) {
    const Chain chain = valid_chain(6);
    const Certificates pool = make(chain);
    const Anchors anchors = anchors_of({chain[5]});
    const Cert target = chain[0].make();
    for (const std::int32_t most : {4, 3}) {
        EXPECT_EQ(set_max_certificatePath_length(most), 0U);
        X509_CERTIFICATES *path = nullptr;
        EXPECT_EQ(build_certPath(pool.get(), anchors.get(), target.get(), &path),
                  most == 4 ? 0 : 0x53050047U);
        free_X509_CERTIFICATES(path);
        EXPECT_EQ(build(pool.get(), anchors.get(), target.get(), nullptr).starts_with("User"), most == 4);
    }
}

TEST(IsSelfSigned, ComparesTheNamesAlone) {
    CertSpec spec = valid_chain(1)[0];
    spec.signer = 3;
    EXPECT_EQ(is_selfSigned(spec.make().get()), 0U) << "no signature is checked";
    spec.issuer = "root";
    EXPECT_EQ(is_selfSigned(spec.make().get()), 1U);
    EXPECT_EQ(is_selfSigned(nullptr), 1U);
    EXPECT_EQ(is_selfSigned(Cert(new_X509_CERT()).get()), 1U);
}

}  // namespace
}  // namespace tlx_test
