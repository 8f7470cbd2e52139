// Trust anchors and lists of them.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/chain_builder.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

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
