#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

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

std::string compare(const Row &row) {
    const Pubkey a = pubkey_of(row[1]);
    const Pubkey b = pubkey_of(row[2]);
    const std::int32_t result = cmp_X509_PUBKEY(a.get(), b.get());
    EXPECT_EQ(cmp_X509_PUBKEY(b.get(), a.get()), result);
    return std::to_string(result);
}

TEST(PublicKey, Rows) {
    expect_rows("x509_pubkey.txt", {{"key", {key}}, {"compare", {compare}}});
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
    EXPECT_EQ(set_X509_PUBKEY_kcdsa(pubkey.get(), static_cast<KCDSA *>(kcdsa->key->key)), 0U);
    EXPECT_EQ(encoded(X509_PUBKEY_to_Seq, pubkey.get()), hex_of_text(kKcdsa));
    EXPECT_EQ(set_X509_PUBKEY_ecc(pubkey.get(), curve_key), 0U);
    EXPECT_EQ(kind_of(pubkey), 3U);

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
