// Trust anchors and lists of them.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/chain_builder.hpp"
#include "support/x509_records.hpp"

namespace {

using tlx_test::RecordType;
using Anchor = tlx::Owned<TRUST_ANCHOR>;

const RecordType kType = TLX_RECORD_TYPE(TRUST_ANCHOR, 0x53040049, 0x53030049);
const char *const kEncoded =
    "30{30{31{30{06:550406 13:4B52}}} 30{30{06:2A864886F70D010101 05:} 03:003006020101020103}}";

TEST(TrustAnchor, GoesInAndOut) {
    tlx_test::expect_comes_back(kType, kEncoded);
    tlx_test::expect_null_arguments_refused(kType);
    for (const char *text : {"30{}", "30{30{}}", "30{30{} 30{30{06:2A03} 03:00} 05:}"})
        tlx_test::expect_refused(kType, text, 0x5304002B);
    for (const char *text : {"30{05: 05:}", "30{30{} 05:}", "30{30{05:} 30{30{06:2A03} 03:00}}"})
        tlx_test::expect_refused(kType, text, 0x53040104);
    const tlx_test::Node node = tlx_test::der_node(kEncoded);
    tlx_test::expect_allocations_may_fail(kType, node.get(), {0x53040104}, {0x53030103});
}

TEST(TrustAnchor, WithoutAMemberIsNotEncoded) {
    const Anchor anchor(new_TRUST_ANCHOR());
    ASN1_UNIT *node = nullptr;
    EXPECT_EQ(TRUST_ANCHOR_to_Seq(anchor.get(), &node), 0x53030049U);
    anchor->name = new_X509_NAME();
    EXPECT_EQ(TRUST_ANCHOR_to_Seq(anchor.get(), &node), 0x53030049U) << "no key";
    anchor->publicKey = new_X509_PUBKEY();
    EXPECT_EQ(TRUST_ANCHOR_to_Seq(anchor.get(), &node), 0x53030103U) << "an empty key";
    EXPECT_EQ(node, nullptr);
}

TEST(TrustAnchor, IsMadeOfACertificate) {
    const auto cert = tlx_test::valid_chain(1)[0].make();
    const tlx_test::LeakCheck leaks;
    const Anchor anchor(create_TRUST_ANCHOR_from_X509_CERT(cert.get()));
    ASSERT_NE(anchor, nullptr);
    EXPECT_EQ(anchor->kind, 0U);
    EXPECT_EQ(cmp_X509_NAME(anchor->name, get_X509_subject(cert.get())), 0);
    EXPECT_EQ(cmp_X509_PUBKEY(anchor->publicKey, get_X509_SPKI(cert.get())), 0);
    const tlx::Owned<X509_CERT> empty(new_X509_CERT());
    EXPECT_EQ(create_TRUST_ANCHOR_from_X509_CERT(empty.get()), nullptr);
    EXPECT_EQ(create_TRUST_ANCHOR_from_X509_CERT(nullptr), nullptr);
    tlx_test::sweep_failing_allocations([&] {
        const Anchor made(create_TRUST_ANCHOR_from_X509_CERT(cert.get()));
        return made != nullptr;
    });

    anchor->kind = 7;
    const Anchor copy(dup_TRUST_ANCHOR(anchor.get()));
    EXPECT_EQ(copy->kind, 7U);
    clean_TRUST_ANCHOR(copy.get());
    EXPECT_EQ(copy->kind, 0U);
    EXPECT_EQ(copy->name, nullptr);
    EXPECT_EQ(copy->publicKey, nullptr);
}

TEST(TrustAnchors, AreFoundByNameAndKey) {
    tlx_test::Chain chain = tlx_test::valid_chain(3);
    chain.push_back(chain[2]);
    chain[3].key = 3;
    const auto anchors = tlx_test::anchors_of(chain);
    const tlx_test::LeakCheck leaks;
    ASSERT_EQ(get_TRUST_ANCHORS_count(anchors.get()), 4U);
    for (std::int32_t i = 0; i < 4; ++i) {
        const TRUST_ANCHOR *each = get_TRUST_ANCHORS_child(anchors.get(), i);
        EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), each), i);
    }
    EXPECT_EQ(get_TRUST_ANCHORS_child(anchors.get(), 4), nullptr);
    EXPECT_EQ(get_TRUST_ANCHORS_child(anchors.get(), -1), nullptr);
    EXPECT_EQ(add_TRUST_ANCHORS(anchors.get(), get_TRUST_ANCHORS_child(anchors.get(), 1)), 0U);
    EXPECT_EQ(
        get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), get_TRUST_ANCHORS_child(anchors.get(), 4)), 1)
        << "the first of two";
    free_TRUST_ANCHOR(static_cast<TRUST_ANCHOR *>(remove_STACK_value(anchors.get(), 4)));

    chain[0].key = 3;
    const Anchor other(create_TRUST_ANCHOR_from_X509_CERT(chain[0].make().get()));
    const Anchor empty(new_TRUST_ANCHOR());
    EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), other.get()), -1);
    EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), empty.get()), -1);
    EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(anchors.get(), nullptr), -1);
    EXPECT_EQ(get_TRUST_ANCHORS_index_by_TRUST_ANCHOR(nullptr, other.get()), -1);
    EXPECT_EQ(add_TRUST_ANCHORS(nullptr, other.get()), 1U);
    EXPECT_EQ(add_TRUST_ANCHORS(anchors.get(), nullptr), 1U);
    EXPECT_EQ(get_TRUST_ANCHORS_count(nullptr), 0U);
    free_TRUST_ANCHORS(nullptr);
    free_TRUST_ANCHOR(nullptr);
    clean_TRUST_ANCHOR(nullptr);
    EXPECT_EQ(dup_TRUST_ANCHOR(nullptr), nullptr);
}

}  // namespace
