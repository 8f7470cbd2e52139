// Trust anchors and lists of them.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/chain_builder.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Anchor = Held<free_TRUST_ANCHOR>;

TEST(TrustAnchor, NeedsANameAndAKey) {
    const LeakCheck leaks;
    const Anchor anchor(new_TRUST_ANCHOR());
    anchor->name = new_X509_NAME();
    EXPECT_EQ(encoded(TRUST_ANCHOR_to_Seq, anchor.get()), "53030049") << "no key";
    anchor->publicKey = new_X509_PUBKEY();
    EXPECT_EQ(encoded(TRUST_ANCHOR_to_Seq, anchor.get()), "53030103") << "an empty key";
}

TEST(TrustAnchor, IsMadeOfACertificate) {
    const Cert cert = valid_chain(1)[0].make();
    const LeakCheck leaks;
    const Anchor anchor(create_TRUST_ANCHOR_from_X509_CERT(cert.get()));
    ASSERT_NE(anchor, nullptr);
    EXPECT_EQ(anchor->kind, 0U);
    EXPECT_EQ(cmp_X509_NAME(anchor->name, get_X509_subject(cert.get())), 0);
    EXPECT_EQ(cmp_X509_PUBKEY(anchor->publicKey, get_X509_SPKI(cert.get())), 0);
    const Cert empty(new_X509_CERT());
    EXPECT_EQ(create_TRUST_ANCHOR_from_X509_CERT(empty.get()), nullptr);
    EXPECT_EQ(create_TRUST_ANCHOR_from_X509_CERT(nullptr), nullptr);
    expect_making_may_fail([&] { return create_TRUST_ANCHOR_from_X509_CERT(cert.get()); }, free_TRUST_ANCHOR);

    anchor->kind = 7;
    const Anchor copy(dup_TRUST_ANCHOR(anchor.get()));
    EXPECT_EQ(copy->kind, 7U);
    clean_TRUST_ANCHOR(copy.get());
    EXPECT_EQ(copy->kind, 0U);
    EXPECT_EQ(copy->name, nullptr);
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
    for (const TRUST_ANCHOR *each : {other.get(), empty.get(), static_cast<TRUST_ANCHOR *>(nullptr)})
        EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), each), -1);
    EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(nullptr, other.get()), -1);
    EXPECT_EQ(add_TRUST_ANCHORS(nullptr, other.get()), 1U);
    EXPECT_EQ(add_TRUST_ANCHORS(anchors.get(), nullptr), 1U);
    EXPECT_EQ(get_TRUST_ANCHORS_count(nullptr), 0U);
    free_TRUST_ANCHORS(nullptr);
}

}  // namespace
}  // namespace tlx_test
