// Trust anchors and building paths: the choice of issuers, the ends of paths, and the same results from a
// large pool.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include <numeric>
#include <random>

#include "../tools/issuer_index.hpp"
#include "der/sip_hash.hpp"
#include "support/chain_builder.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};

/// The result of build_certPath_ex: the subjects of the path, or the status in hexadecimal with the subjects
/// appended to the caller's list before.
std::string build(const X509_CERTIFICATES *pool, const TRUST_ANCHORS *anchors, const X509_CERT *target,
                  const CPV_SETTINGS *settings = &kDefaults) {
    const LeakCheck leaks;
    const Certificates path(new_X509_CERTIFICATES());
    X509_CERTIFICATES *list = path.get();
    const std::uint32_t status = build_certPath_ex(pool, anchors, target, &list, settings);
    const std::string subjects = subjects_of(path.get());
    if (status == 0) return subjects;
    return status_text(status) + ":" + (subjects.empty() ? "" : " " + subjects);
}

std::string build_row(const Row &row) {
    const EditedChain edited(row.number(1), row[2]);
    const Chain &chain = edited.chain;
    Chain trusted;
    for (const std::string &place : split(edited.values.at("anchors"), ' '))
        trusted.push_back(place == "last" ? chain.back() : chain.at(std::stoul(place)));
    const Certificates pool = make(Chain(chain.begin() + 1, chain.end()));
    const CPV_SETTINGS settings = edited.settings();
    return build(pool.get(), anchors_of(trusted).get(), chain.front().make().get(), &settings);
}

TEST(Building, Rows) {
    make(valid_chain(4));  // sets up each key once
    expect_rows("path_build.txt", {{"build", {build_row}}});
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
    if (candidate.key_id != nullptr) spec.with("subjectKeyIdentifier", "04:" + std::string(candidate.key_id));
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

/// The library's index, and that of the command, which serves many targets.
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
            std::vector<X509_CERT *> certificates;
            const Certificates pool(new_X509_CERTIFICATES());
            for (unsigned i = 0; i < size; ++i) {
                const bool is_odd_one = random() % (round + 1) == 0;
                candidates.push_back(is_odd_one ? Candidate{any_of(names), any_of(serials), any_of(keys)}
                                                : Candidate{"Z", "7E" + std::to_string(10 + i % 90), "FE"});
                certificates.push_back(make_candidate(candidates.back(), i).release());
                push_STACK_value(pool.get(), certificates.back());
            }
            tool::IssuerIndex index;
            index.build(certificates);
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
                const Cert cert = target.make();
                const std::uint32_t status =
                    build_certPath_ex(pool.get(), anchors.get(), cert.get(), &list, &kDefaults);
                const int expected = first_that_fits(candidates, wanted);
                ASSERT_EQ(status, expected < 0 ? 0x53050047U : 0U);
                ASSERT_EQ(index.issuer_of(cert.get()), static_cast<std::size_t>(expected));
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
    std::uint8_t message[15];
    std::iota(std::begin(message), std::end(message), std::uint8_t{0});
    hash.add(message[0]);
    hash.add({message + 1, 2});
    hash.add({message + 3, 12});
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
    expect_refuses_null(0x53050049, build_certPath, pool.get(), anchors.get(), target.get(), &path);
    EXPECT_EQ(build_certPath(pool.get(), anchors.get(), empty.get(), &path), 0x462D0049U) << "no validity";
    EXPECT_EQ(build_certPath(pool.get(), no_anchors.get(), target.get(), &path), 0x53050116U);
    EXPECT_EQ(path, nullptr);

    ASSERT_EQ(build_certPath(pool.get(), anchors.get(), target.get(), &path), 0U);
    const Certificates owner(path);
    for (std::int32_t i = 0; i < 3; ++i) {
        const X509_CERT *each = get_X509_CERTIFICATES_child(pool.get(), i);
        EXPECT_NE(get_X509_CERTIFICATES_child(path, i), each) << "a copy";
        EXPECT_EQ(get_X509_CERTS_index_by_X509_CERT(path, each), i);
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

// ---- Trust anchors and lists of them ----

using Anchor = Held<free_TRUST_ANCHOR>;

TEST(TrustAnchor, IsMadeOfACertificate) {
    const Cert cert = valid_chain(1)[0].make();
    const Cert empty(new_X509_CERT());
    const LeakCheck leaks;
    const Anchor anchor(create_TRUST_ANCHOR_from_X509_CERT(cert.get()));
    ASSERT_NE(anchor, nullptr);
    EXPECT_EQ(anchor->kind, 0U);
    EXPECT_EQ(cmp_X509_NAME(anchor->name, get_X509_subject(cert.get())), 0);
    EXPECT_EQ(cmp_X509_PUBKEY(anchor->publicKey, get_X509_SPKI(cert.get())), 0);
    EXPECT_EQ(create_TRUST_ANCHOR_from_X509_CERT(empty.get()), nullptr);
    expect_refuses_null(nullptr, create_TRUST_ANCHOR_from_X509_CERT, cert.get());
    expect_making_may_fail([&] { return create_TRUST_ANCHOR_from_X509_CERT(cert.get()); }, free_TRUST_ANCHOR);

    anchor->kind = 7;
    EXPECT_EQ(Anchor(dup_TRUST_ANCHOR(anchor.get()))->kind, 7U);
    clean_X509_PUBKEY(anchor->publicKey);
    EXPECT_EQ(encoded(TRUST_ANCHOR_to_Seq, anchor.get()), "53030103") << "an empty key";
    free_X509_PUBKEY(std::exchange(anchor->publicKey, nullptr));
    EXPECT_EQ(encoded(TRUST_ANCHOR_to_Seq, anchor.get()), "53030049") << "no key";
    clean_TRUST_ANCHOR(anchor.get());
    EXPECT_EQ(anchor->kind, 0U);
}

TEST(TrustAnchors, AreFoundByNameAndKey) {
    Chain chain = valid_chain(3);
    chain.push_back(chain[2]);
    chain[3].key = 3;
    chain.push_back(chain[1]);
    const Anchors anchors = anchors_of(chain);
    ASSERT_EQ(get_TRUST_ANCHORS_count(anchors.get()), 5U);
    for (std::int32_t i = 0; i < 5; ++i) {
        const TRUST_ANCHOR *each = get_TRUST_ANCHORS_child(anchors.get(), i);
        EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), each), i < 4 ? i : 1) << "the first";
    }
    EXPECT_EQ(get_TRUST_ANCHORS_child(anchors.get(), 5), nullptr);
    chain[0].key = 3;
    const Anchor other(create_TRUST_ANCHOR_from_X509_CERT(chain[0].make().get()));
    const Anchor empty(new_TRUST_ANCHOR());
    for (const TRUST_ANCHOR *each : {other.get(), empty.get()})
        EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), each), -1);
    const TRUST_ANCHOR *first = get_TRUST_ANCHORS_child(anchors.get(), 0);
    expect_refuses_null(-1, get_TRUST_ANCHORS_index_by_TRUST_ANCHOR, anchors.get(), first);
    expect_refuses_null(1, add_TRUST_ANCHORS, anchors.get(), first);
    expect_refuses_null(0, get_TRUST_ANCHORS_count, anchors.get());
    free_TRUST_ANCHORS(nullptr);
}

}  // namespace
}  // namespace tlx_test
