#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/strings.hpp"
#include "support/x509_records.hpp"
#include "x509/certificate_records.hpp"

namespace tlx_test {
namespace {

const RecordType kPubkey = TLX_RECORD_TYPE(X509_PUBKEY, 0x46140049, 0x46130049);

using Pubkey = tlx::Owned<X509_PUBKEY>;
using Key = tlx::Owned<ASYMMETRIC_KEY>;

// n = 15 and e = 3; p = 23, q = 11, g = 4 and y = 200; the base point of P-256, uncompressed and compressed.
const char kRsa[] = "30{30{06:2A864886F70D010101 05:} 03:00300602010F020103}";
const char kKcdsa[] = "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:04}} 03:00020200C8}";
const char kEcc[] =
    "30{30{06:2A8648CE3D0201 06:2A8648CE3D030107}"
    " 03:00046B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296"
    "4FE342E2FE1A7F9B8EE7EB4A7C0F9E162BCE33576B315ECECBB6406837BF51F5}";
const char kEccCompressed[] =
    "30{30{06:2A8648CE3D0201 06:2A8648CE3D030107}"
    " 03:00036B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296}";

Pubkey pubkey_of(std::string_view text) {
    return Pubkey(decoded(Seq_to_X509_PUBKEY, text));
}

std::uint32_t kind_of(const Pubkey &pubkey) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(pubkey.get());
    return key == nullptr ? 0 : key->kind;
}

TEST(PublicKey, KnownKindsAreDecoded) {
    expect_come_back(kPubkey, {kRsa, kKcdsa, kEcc, kEccCompressed});
    const Pubkey rsa = pubkey_of(kRsa);
    ASSERT_EQ(kind_of(rsa), 1U);
    const auto *rsa_unit = static_cast<const RSA_UNIT *>(rsa->key->key);
    EXPECT_EQ(get_BIGINT_word(get_RSA_UNIT_number(rsa_unit, TLX_RSA_N)), 15U);
    EXPECT_EQ(get_BIGINT_word(get_RSA_UNIT_number(rsa_unit, TLX_RSA_E)), 3U);
    EXPECT_EQ(get_RSA_UNIT_kind(rsa_unit), TLX_RSA_PUBLIC);
    EXPECT_EQ(octets(get_X509_PUBKEY_algorithm(rsa.get())), "1.2.840.113549.1.1.1");

    const Pubkey kcdsa = pubkey_of(kKcdsa);
    ASSERT_EQ(kind_of(kcdsa), 2U);
    const std::pair<TLX_KCDSA_NUMBER, std::uint32_t> numbers[] = {
        {TLX_KCDSA_P, 23}, {TLX_KCDSA_Q, 11}, {TLX_KCDSA_G, 4}, {TLX_KCDSA_Y, 200}};
    for (const auto &[which, value] : numbers)
        EXPECT_EQ(get_BIGINT_word(get_KCDSA_number(static_cast<const KCDSA *>(kcdsa->key->key), which)),
                  value);

    for (const char *text : {kEcc, kEccCompressed}) {
        const Pubkey ecc = pubkey_of(text);
        ASSERT_EQ(kind_of(ecc), 3U);
        const auto *key = static_cast<const ECC_KEY *>(ecc->key->key);
        EXPECT_STREQ(key->curve->name, "prime256v1");
        EXPECT_EQ(cmp_BIGINT(key->public_point->x, key->curve->base->x), 0);
        EXPECT_EQ(cmp_BIGINT(key->public_point->y, key->curve->base->y), 0);
    }
}

TEST(PublicKey, OthersComeBackWithoutAKey) {
    for (const char *text : {
             "30{30{06:2B6570} 03:000102}",                               // Ed25519
             "30{30{06:2A864886F70D01010A 30{}} 03:00300602010F020103}",  // id-RSASSA-PSS
             "30{30{06:2A8648CE3D0201 06:2B81040022} 03:000401}",         // secp384r1
             "30{30{06:2A8648CE3D0201} 03:000401}",
             "30{30{06:2A8648CE3D0201 06:2A8648CE3D030107} 03:00}",
             "30{30{06:2A8648CE3D0201 06:2A8648CE3D030107} 03:000401}",
             "30{30{06:2A8648CE3D0201 05:} 03:000401}",
             "30{30{06:2A864886F70D010101 05:} 03:00}",
             "30{30{06:2A864886F70D010101 05:} 03:0030060201}",
             "30{30{06:2A864886F70D010101 05:} 03:00300302010F}",
             "30{30{06:2A864886F70D010101 05:} 03:00300502010F0200}",
             "30{30{06:2A864886F70D010101 05:} 03:00300602010F0201030500}",
             "30{30{06:2A864886F70D010101 05:} 03:00300902010F020103020101}",
             "30{30{06:2A864886F70D010101 05:} 03:00310602010F020103}",
             "30{30{06:2A864886F70D010101 05:} 03:04300602010F020103}",  // unused bits
             "30{30{06:2A831A8C9A440115 05:} 03:00020105}",
             "30{30{06:2A831A8C9A440115} 03:00020105}",
             "30{30{06:2A831A8C9A440115 30{02:17 02:0B}} 03:00020105}",
             "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:04 02:05}} 03:00020105}",
             "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:}} 03:00020105}",
             "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:04}} 03:0005}",
         }) {
        expect_come_back(kPubkey, {text});
        EXPECT_EQ(kind_of(pubkey_of(text)), 0U) << text;
    }
    // Parameters of rsaEncryption are not looked at, but kept.
    for (const char *text : {"30{30{06:2A864886F70D010101} 03:00300602010F020103}",
                             "30{30{06:2A864886F70D010101 30{02:05}} 03:00300602010F020103}"}) {
        expect_come_back(kPubkey, {text});
        EXPECT_EQ(kind_of(pubkey_of(text)), 1U) << text;
    }
}

TEST(PublicKey, RefusedEncodings) {
    expect_refused(
        kPubkey, 0x46140104,
        {"30{}", "30{30{06:2B6570}}", "30{03:00 30{06:2B6570}}", "30{30{06:2B6570} 04:00}",
         "30{30{06:2B6570} 03:}", "30{30{} 03:00}", "30{30{05:} 03:00}", "30{30{06:2B6570 05: 05:} 03:00}",
         "30{30{06:2B6570} 03:00 05:}", "30{31{06:2B6570} 03:00}", "30:3005"});
    expect_null_arguments_refused(kPubkey);

    const LeakCheck leaks;
    const Pubkey pubkey = pubkey_of(kRsa);
    X509_PUBKEY *out = pubkey.get();
    EXPECT_EQ(Seq_to_X509_PUBKEY(der_node("30{30{06:2B6570} 03:}").get(), &out), 0x46140104U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, out), hex_of_text(kRsa)) << "a failure leaves the record alone";
    EXPECT_EQ(kind_of(pubkey), 1U);
    EXPECT_EQ(Seq_to_X509_PUBKEY(der_node("30{30{06:2B6570} 03:0001}").get(), &out), 0U);
    EXPECT_EQ(kind_of(pubkey), 0U) << "a key of an unknown kind takes the known one's place";
}

TEST(PublicKey, MadeFromKeys) {
    const LeakCheck leaks;
    const Pubkey rsa = pubkey_of(kRsa);
    const Pubkey kcdsa = pubkey_of(kKcdsa);
    const Pubkey ecc = pubkey_of(kEccCompressed);
    const auto *curve_key = static_cast<const ECC_KEY *>(ecc->key->key);
    const Pubkey pubkey(new_X509_PUBKEY());
    EXPECT_EQ(set_X509_PUBKEY_rsa(pubkey.get(), static_cast<RSA_UNIT *>(rsa->key->key)), 0U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kRsa));
    EXPECT_NE(pubkey->key->key, rsa->key->key) << "a copy";
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(pubkey.get(), static_cast<KCDSA *>(kcdsa->key->key)), 0U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kKcdsa));
    EXPECT_EQ(set_X509_PUBKEY_ecc(pubkey.get(), curve_key), 0U);
    EXPECT_EQ(kind_of(pubkey), 3U);

    const Held<RSA_UNIT, free_RSA_UNIT> no_rsa(new_RSA_UNIT());
    const Held<KCDSA, free_KCDSA> no_kcdsa(new_KCDSA());
    const Held<ECC_KEY, free_ECC_KEY> no_ecc(new_ECC_KEY());
    const Held<ECC_KEY, free_ECC_KEY> unknown_curve(dup_ECC_KEY(curve_key));
    unknown_curve->curve->name[0] = 'q';
    EXPECT_EQ(set_X509_PUBKEY_rsa(pubkey.get(), no_rsa.get()), 1U);
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(pubkey.get(), no_kcdsa.get()), 1U);
    EXPECT_EQ(set_X509_PUBKEY_ecc(pubkey.get(), no_ecc.get()), 1U);
    EXPECT_EQ(set_X509_PUBKEY_ecc(pubkey.get(), unknown_curve.get()), 1U);
    EXPECT_EQ(set_X509_PUBKEY_rsa(pubkey.get(), nullptr), 1U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kEcc)) << "unchanged";
}

TEST(PublicKey, Comparison) {
    const struct {
        const char *a, *b;
        std::int32_t expected;
    } cases[] = {
        {kRsa, kRsa, 0},
        {kRsa, "30{30{06:2A864886F70D010101} 03:00300602010F020103}", 0},
        {kRsa, "30{30{06:2A864886F70D010101 30{}} 03:00300602010F020103}", -1},
        {kRsa, "30{30{06:2A864886F70D010101 05:} 03:00300602010F020105}", -1},
        {kRsa, "30{30{06:2A864886F70D010102 05:} 03:00300602010F020103}", -1},
        {kRsa, "30{30{06:2A864886F70D010101 05:} 03:01300602010F020103}", -1},
        {kKcdsa, "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:05}} 03:00020200C8}", -1},
        {kEcc, kEccCompressed, -1},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(cmp_X509_PUBKEY(pubkey_of(c.a).get(), pubkey_of(c.b).get()), c.expected)
            << c.a << " " << c.b;
        EXPECT_EQ(cmp_X509_PUBKEY(pubkey_of(c.b).get(), pubkey_of(c.a).get()), c.expected)
            << c.b << " " << c.a;
    }
    const Pubkey rsa = pubkey_of(kRsa);
    const Pubkey empty(new_X509_PUBKEY());
    EXPECT_EQ(cmp_X509_PUBKEY(rsa.get(), nullptr), 1);
    EXPECT_EQ(cmp_X509_PUBKEY(nullptr, rsa.get()), 1);
    EXPECT_EQ(cmp_X509_PUBKEY(rsa.get(), empty.get()), 1);
    EXPECT_EQ(cmp_X509_PUBKEY(empty.get(), empty.get()), 1);
}

TEST(PublicKey, Holders) {
    const LeakCheck leaks;
    const Key holder(new_ASYMMETRIC_KEY());
    for (const char *text : {kRsa, kKcdsa, kEcc}) {
        const Pubkey pubkey = pubkey_of(text);
        EXPECT_EQ(set_ASYMMETRIC_KEY(holder.get(), pubkey->key->kind, pubkey->key->key), 0U);
        const Key copy(dup_ASYMMETRIC_KEY(holder.get()));
        EXPECT_EQ(copy->kind, pubkey->key->kind);
        EXPECT_NE(copy->key, holder->key);
        EXPECT_NE(holder->key, pubkey->key->key) << "a copy";
    }
    EXPECT_EQ(set_ASYMMETRIC_KEY(holder.get(), 4, holder->key), 1U);
    EXPECT_EQ(set_ASYMMETRIC_KEY(holder.get(), 1, nullptr), 1U);
    EXPECT_EQ(set_ASYMMETRIC_KEY(nullptr, 3, holder->key), 1U);
    EXPECT_EQ(holder->kind, 3U) << "unchanged";
    clean_ASYMMETRIC_KEY(holder.get());
    EXPECT_EQ(holder->kind, 0U);
    EXPECT_NE(Key(dup_ASYMMETRIC_KEY(holder.get())), nullptr);
    EXPECT_EQ(dup_ASYMMETRIC_KEY(nullptr), nullptr);
    int stranger = 0;
    const ASYMMETRIC_KEY unknown = {9, &stranger};
    EXPECT_EQ(dup_ASYMMETRIC_KEY(&unknown), nullptr);
}

TEST(PublicKey, EveryAllocationMayFail) {
    for (const char *text : {kRsa, kKcdsa, kEcc, "30{30{06:2B6570} 03:0001}"})
        expect_allocations_may_fail(kPubkey, der_node(text).get(), {0x46140104}, {0x46130103});
    // An elliptic-curve key may also be left out when memory runs out.
    const Node node = der_node(kEcc);
    const unsigned failures = sweep_failing_allocations([&] {
        X509_PUBKEY *out = nullptr;
        const std::uint32_t status = Seq_to_X509_PUBKEY(node.get(), &out);
        const Pubkey pubkey(out);
        return status == 0 && kind_of(pubkey) == 3;
    });
    EXPECT_GT(failures, 20U);
    const Pubkey kcdsa = pubkey_of(kKcdsa);
    const Pubkey ecc = pubkey_of(kEcc);
    sweep_failing_allocations([&] {
        const Pubkey made(new_X509_PUBKEY());
        return made != nullptr &&
               set_X509_PUBKEY_kcdsa(made.get(), static_cast<KCDSA *>(kcdsa->key->key)) == 0 &&
               set_X509_PUBKEY_ecc(made.get(), static_cast<ECC_KEY *>(ecc->key->key)) == 0;
    });
}

}  // namespace
}  // namespace tlx_test
