// Names and public keys.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "asn1/oid_lookup.hpp"
#include "support/octets.hpp"
#include "support/openssl_peer.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using OwnedName = Held<free_X509_NAME>;

OwnedName name_of(std::string_view text) {
    return OwnedName(decoded(Seq_to_X509_NAME, text));
}

TEST(Name, StatusesOfTheEncoder) {
    const LeakCheck leaks;
    const OwnedName name = name_of("30{31{30{06:550403 0C:41}}}");
    const auto status_with_caller_node = [&name] {
        ASN1_UNIT *node = new_ASN1_UNIT();
        const std::uint32_t status = X509_NAME_to_Seq(name.get(), &node);
        EXPECT_EQ(node == nullptr, status != 0) << "the node of a failed encoding is freed";
        free_ASN1_UNIT(node);
        return status;
    };
    EXPECT_EQ(status_with_caller_node(), 0U);
    X509_NAME_CHILD *child = get_X509_NAME_CHILD(name.get(), 0);
    for (const std::int32_t type : {0, 0x100, 0x80}) {  // 0x80 would have to hold an element
        child->data->type = type;
        EXPECT_EQ(status_with_caller_node(), 0x461B0103U) << type;
    }
    child->data->type = 12;
    set_ASN1_STRING_value(child->type, 6, "cn", 2);
    EXPECT_EQ(status_with_caller_node(), 0x461B0103U);
    free_ASN1_STRING(std::exchange(child->data, nullptr));
    EXPECT_EQ(status_with_caller_node(), 0x461B0103U);
    EXPECT_EQ(dump_X509_NAME(name.get()), nullptr);
    push_STACK_value(name.get(), nullptr);
    EXPECT_EQ(status_with_caller_node(), 0x461B002BU);
}

std::string compare(const Row &row) {
    return std::to_string(cmp_X509_NAME(name_of(row[1]).get(), name_of(row[2]).get()));
}

std::string compare_made(const Row &row) {
    OwnedName names[2];
    for (std::size_t i = 0; i < 2; ++i) {
        names[i].reset(new_X509_NAME());
        EXPECT_EQ(add_X509_NAME_child_OID(names[i].get(), oid_of(row[3 * i + 1].c_str()).get(),
                                          static_cast<std::int32_t>(row.number(3 * i + 2)),
                                          row[3 * i + 3].c_str(), -1, -1),
                  0U);
    }
    return std::to_string(cmp_X509_NAME(names[0].get(), names[1].get()));
}

std::string next(const Row &row) {
    const OwnedName name = name_of(
        "30{31{30{06:55040B 0C:41}} 31{30{06:550403 0C:42}} 31{30{06:55040B 0C:43}} 31{30{06:55040B "
        "0C:44}}}");
    return std::to_string(get_X509_NAME_index_by_OID(name.get(), oid_of("2.5.4.11").get(),
                                                     static_cast<std::int32_t>(row.number(1))));
}

std::string text(const Row &row) {
    const tlx::OwnedOctets<char> text(dump_X509_NAME(name_of(row[1]).get()));
    return text.get();
}

TEST(Name, Rows) {
    expect_rows(
        "x509_name.txt",
        {{"compare", {compare}}, {"compare made", {compare_made}}, {"next", {next}}, {"text", {text}}});
}

TEST(Name, ComparisonAndLookupWithoutNames) {
    const LeakCheck leaks;
    const OwnedName one = name_of("30{31{30{06:550403 13:4142}}}");
    const OwnedName none = name_of("30{}");
    expect_refuses_null(1, cmp_X509_NAME, one.get(), one.get());
    // A name that cannot be encoded is told only when the counts are the same.
    const OwnedName broken(new_X509_NAME());
    push_STACK_value(broken.get(), nullptr);
    EXPECT_EQ(cmp_X509_NAME(one.get(), broken.get()), 1);
    EXPECT_EQ(cmp_X509_NAME(none.get(), broken.get()), -1);
    EXPECT_EQ(get_X509_NAME_index_by_OID(one.get(), oid_of("2.5.4.33").get(), -1), -1);
    expect_refuses_null(-1, get_X509_NAME_index_by_OID, one.get(), oid_of("2.5.4.3").get(), -1);
    expect_refuses_null(nullptr, dump_X509_NAME, one.get());
    expect_refuses_null(nullptr, dump_X509_NAME_CHILD, get_X509_NAME_CHILD(one.get(), 0));
    const X509_NAME_CHILD no_members = {};
    EXPECT_EQ(dump_X509_NAME_CHILD(&no_members), nullptr);
    const tlx::OwnedOctets<char> entry(dump_X509_NAME_CHILD(get_X509_NAME_CHILD(one.get(), 0)));
    EXPECT_STREQ(entry.get(), "CN=AB");
}

TEST(Name, MadeFromTypesAndTexts) {
    const LeakCheck leaks;
    const OwnedName name = name_of("30{31{30{06:550403 0C:62}}}");
    const String oid = oid_of("2.5.4.3");
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_PRINTABLE_STRING, "axx", 1, 0), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID(name.get(), oid.get(), TLX_TAG_IA5_STRING, "d", -1, -7), 0U);
    EXPECT_EQ(add_X509_NAME_child_OID_index(name.get(), tlx::oid::kOrganizationName, 12, "c\0c", 3, 2), 0U);
    EXPECT_EQ(encoded(X509_NAME_to_Seq, name.get()),
              hex_of_text("30{31{30{06:550403 13:61}} 31{30{06:550403 0C:62}} 31{30{06:55040A 0C:630063}} "
                          "31{30{06:550403 16:64}}}"));
    expect_refuses_null(1, add_X509_NAME_child_OID, name.get(), oid.get(), 12, "a", 1, 0);
    EXPECT_EQ(add_X509_NAME_child_OID_index(name.get(), 33, 12, "a", 1, 0), 1U) << "without an identifier";
    const X509_NAME_CHILD *entry = get_X509_NAME_CHILD(name.get(), 2);
    EXPECT_EQ(octets(get_X509_NAME_CHILD_OID(entry)), "2.5.4.10");
    EXPECT_EQ(octets(get_X509_NAME_CHILD_data(entry)), std::string("c\0c", 3));
    sweep_failing_allocations([&] {
        const OwnedName made(new_X509_NAME());
        return made != nullptr && add_X509_NAME_child_OID(made.get(), oid.get(), 12, "a", 1, 0) == 0;
    });
}

TEST(Name, Hash) {
    const char *text = "30{31{30{06:550406 13:4B52}} 31{30{06:550403 0C:ED998D}}}";
    const OwnedName name = name_of(text);
    Octets digest(TLX_DIGEST_MAX_LENGTH);
    EXPECT_EQ(get_X509_NAME_hash(name.get(), 0x05000900, digest.data()), 0xFFFFFFFFU);
    expect_refuses_null(0xFFFFFFFF, get_X509_NAME_hash, name.get(), TLX_DIGEST_SHA1, digest.data());
    EXPECT_EQ(get_X509_NAME_hash(name_of("30{}").get(), TLX_DIGEST_SHA1, digest.data()), 0xFFFFFFFFU);
    ASSERT_EQ(get_X509_NAME_hash(name.get(), TLX_DIGEST_SHA1, digest.data()), 20U);
    digest.resize(20);
    EXPECT_EQ(digest, openssl::digest("SHA1", der(text)));
}

TEST(Name, EveryAllocationMayFail) {
    const char *text =
        "30{31{30{06:550406 13:4B52}} 31{30{06:55040A 0C:41}} 31{30{06:55040B 0C:42}} 31{30{06:55040B 0C:43}}"
        " 31{30{06:550403 1E:D64D}}}";
    const OwnedName name = name_of(text);
    const OwnedName same = name_of(text);
    sweep_failing_allocations([&] {
        const std::int32_t result = cmp_X509_NAME(name.get(), same.get());
        EXPECT_TRUE(result == 0 || result == 1);
        return result == 0;
    });
    const OwnedName korean = name_of("30{31{30{06:550403 13:C7D1B1B9}} 31{30{06:55042D 03:0560}}}");
    for (const X509_NAME *each : {name.get(), korean.get()})
        expect_making_may_fail([&] { return dump_X509_NAME(each); }, tlx_free);
}

using Pubkey = Held<free_X509_PUBKEY>;
using Key = Held<free_ASYMMETRIC_KEY>;

// n = 15 and e = 3; p = 23, q = 11, g = 4 and y = 200; the base point of P-256.
const char kRsa[] = "30{30{06:2A864886F70D010101 05:} 03:00300602010F020103}";
const char kKcdsa[] = "30{30{06:2A831A8C9A440115 30{02:17 02:0B 02:04}} 03:00020200C8}";
const char kEcc[] =
    "30{30{06:2A8648CE3D0201 06:2A8648CE3D030107}"
    " 03:00046B17D1F2E12C4247F8BCE6E563A440F277037D812DEB33A0F4A13945D898C296"
    "4FE342E2FE1A7F9B8EE7EB4A7C0F9E162BCE33576B315ECECBB6406837BF51F5}";

Pubkey pubkey_of(std::string_view text) {
    return Pubkey(decoded(Seq_to_X509_PUBKEY, text));
}

std::uint32_t kind_of(const Pubkey &pubkey) {
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(pubkey.get());
    return key == nullptr ? 0 : key->kind;
}

/// The kind and the numbers of the key in an encoding that comes back.
std::string key(const Row &row) {
    const Pubkey pubkey = pubkey_of(row[1]);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(row[1]));
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(pubkey.get());
    std::string text = "none";
    const auto add = [&text](const BIGINT *number) { text += " " + std::to_string(get_BIGINT_word(number)); };
    if (kind_of(pubkey) == TLX_KEY_RSA) {
        const auto *rsa = static_cast<const RSA_UNIT *>(key->key);
        text = get_RSA_UNIT_kind(rsa) == TLX_RSA_PUBLIC ? "RSA" : "private RSA";
        for (const auto which : {TLX_RSA_N, TLX_RSA_E})
            add(get_RSA_UNIT_number(rsa, which));
    } else if (kind_of(pubkey) == TLX_KEY_KCDSA) {
        text = "KCDSA";
        for (const auto which : {TLX_KCDSA_P, TLX_KCDSA_Q, TLX_KCDSA_G, TLX_KCDSA_Y})
            add(get_KCDSA_number(static_cast<const KCDSA *>(key->key), which));
    } else if (key != nullptr) {
        const auto *ecc = static_cast<const ECC_KEY *>(key->key);
        const ECPOINT *base = ecc->curve->base;
        const bool is_base =
            cmp_BIGINT(ecc->public_point->x, base->x) == 0 && cmp_BIGINT(ecc->public_point->y, base->y) == 0;
        text = ecc->curve->name + std::string(is_base ? " G" : "");
    }
    X509_PUBKEY *out = pubkey.get();
    EXPECT_EQ(Seq_to_X509_PUBKEY(der_node("30{30{06:2B6570} 03:0001}").get(), &out), 0U);
    EXPECT_EQ(kind_of(pubkey), 0U) << "filled with a key of an unknown kind";
    return text;
}

std::string compare_keys(const Row &row) {
    const Pubkey a = pubkey_of(row[1]);
    const Pubkey b = pubkey_of(row[2]);
    const std::int32_t result = cmp_X509_PUBKEY(a.get(), b.get());
    EXPECT_EQ(cmp_X509_PUBKEY(b.get(), a.get()), result);
    return std::to_string(result);
}

TEST(PublicKey, Rows) {
    expect_rows("x509_pubkey.txt", {{"key", {key}}, {"compare", {compare_keys}}});
}

TEST(PublicKey, MadeFromKeys) {
    const LeakCheck leaks;
    const Pubkey rsa = pubkey_of(kRsa);
    const Pubkey kcdsa = pubkey_of(kKcdsa);
    const Pubkey ecc = pubkey_of(kEcc);
    const auto *curve_key = static_cast<const ECC_KEY *>(ecc->key->key);
    const Pubkey pubkey(new_X509_PUBKEY());
    EXPECT_EQ(set_X509_PUBKEY_rsa(pubkey.get(), static_cast<RSA_UNIT *>(rsa->key->key)), 0U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kRsa));
    EXPECT_NE(pubkey->key->key, rsa->key->key) << "a copy";
    const auto *kcdsa_unit = static_cast<const KCDSA *>(kcdsa->key->key);
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(pubkey.get(), kcdsa_unit), 0U);
    sweep_failing_allocations([&] { return set_X509_PUBKEY_kcdsa(pubkey.get(), kcdsa_unit) == 0; });
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kKcdsa));
    EXPECT_EQ(set_X509_PUBKEY_ecc(pubkey.get(), curve_key), 0U);
    EXPECT_EQ(kind_of(pubkey), 3U);
    sweep_failing_allocations([&] { return set_X509_PUBKEY_ecc(pubkey.get(), curve_key) == 0; });

    const Held<free_RSA_UNIT> no_rsa(new_RSA_UNIT());
    const Held<free_KCDSA> no_kcdsa(new_KCDSA());
    const Held<free_ECC_KEY> no_ecc(new_ECC_KEY());
    const Held<free_ECC_KEY> unknown_curve(dup_ECC_KEY(curve_key));
    unknown_curve->curve->name[0] = 'q';
    EXPECT_EQ(Statuses({set_X509_PUBKEY_rsa(pubkey.get(), no_rsa.get()),
                        set_X509_PUBKEY_kcdsa(pubkey.get(), no_kcdsa.get()),
                        set_X509_PUBKEY_ecc(pubkey.get(), no_ecc.get()),
                        set_X509_PUBKEY_ecc(pubkey.get(), unknown_curve.get()),
                        set_X509_PUBKEY_rsa(pubkey.get(), nullptr)}),
              Statuses{1});
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kEcc)) << "unchanged";
}

TEST(PublicKey, ComparisonWithoutMembers) {
    const Pubkey rsa = pubkey_of(kRsa);
    const Pubkey empty(new_X509_PUBKEY());
    expect_refuses_null(1, cmp_X509_PUBKEY, rsa.get(), rsa.get());
    EXPECT_EQ(cmp_X509_PUBKEY(rsa.get(), empty.get()), 1);
    EXPECT_EQ(cmp_X509_PUBKEY(empty.get(), empty.get()), 1);
    const Pubkey no_algorithm = pubkey_of(kRsa);
    free_OBJECT_IDENTIFIER(std::exchange(no_algorithm->algorithm, nullptr));
    EXPECT_EQ(cmp_X509_PUBKEY(rsa.get(), no_algorithm.get()), 1);
    EXPECT_EQ(cmp_X509_PUBKEY(no_algorithm.get(), rsa.get()), 1);
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
    expect_refuses_null(1, set_ASYMMETRIC_KEY, holder.get(), 1, holder->key);
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
    // An elliptic-curve key may also be left out when memory runs out.
    const Node node = der_node(kEcc);
    const unsigned failures = sweep_failing_allocations([&] {
        X509_PUBKEY *out = nullptr;
        const std::uint32_t status = Seq_to_X509_PUBKEY(node.get(), &out);
        const Pubkey pubkey(out);
        return status == 0 && kind_of(pubkey) == 3;
    });
    EXPECT_GT(failures, 20U);
}

}  // namespace
}  // namespace tlx_test
