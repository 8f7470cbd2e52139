// Private keys of every kind in PKCS #8, their public keys, and what they sign.
#include <tlxpki/signature.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Info = Held<free_P8_PRIV_KEY_INFO>;
using Key = Held<free_ASYMMETRIC_KEY>;
using Pubkey = Held<free_X509_PUBKEY>;
using Algorithm = Held<free_X509_ALGO_IDENTIFIER>;

constexpr std::uint32_t kNoMemory = 0x5502003C;

template <typename T>
std::uint32_t decode(std::uint32_t (*decoder)(const ASN1_UNIT *, T **), std::string_view text, T **out) {
    const Node node = der_node(text);
    return node == nullptr ? kNoMemory : decoder(node.get(), out);
}

/// The key of "rsa", "kcdsa" or of the text of a PrivateKeyInfo.
std::uint32_t read(const std::string &text, Key &key) {
    ASYMMETRIC_KEY *made = nullptr;
    P8_PRIV_KEY_INFO *info = nullptr;
    std::uint32_t status = 0;
    if (text == "rsa" || text == "kcdsa") {
        made = dup_ASYMMETRIC_KEY(signing_key(text == "rsa" ? 0 : kKcdsaKey));
        status = made == nullptr ? 0x4C09003CU : 0U;
    } else {
        status = decode(Seq_to_P8_PRIV_KEY_INFO, text, &info);
        const Info owner(info);
        if (status == 0) status = read_PRIV_KEY(info, &made);
    }
    key.reset(made);
    return status;
}

std::uint32_t public_of(const Key &key, Pubkey &pubkey) {
    pubkey.reset(new_X509_PUBKEY());
    return set_X509_PUBKEY_key(pubkey.get(), key.get());
}

/// The status, or the kind of the key and its public key. Writing the key gives what was read, or "
/// rewritten".
std::string read_row(const Row &row) {
    Key key;
    if (const std::uint32_t status = read(row[1], key); status != 0) return status_text(status);
    Pubkey pubkey;
    P8_PRIV_KEY_INFO *made = nullptr;
    if (public_of(key, pubkey) != 0) return "1";
    const std::uint32_t status = write_PRIV_KEY(key.get(), &made);
    const Info written(made);
    if (status != 0) return status_text(status);
    const std::string info = encoded<P8_PRIV_KEY_INFO>(P8_PRIV_KEY_INFO_to_Seq, made);
    const std::string spki = encoded<X509_PUBKEY>(X509_PUBKEY_to_Seq, pubkey.get());
    if (info.size() <= 8 || spki.size() <= 8) return "1";
    std::string digits = spki;
    std::erase(digits, ' ');
    std::string_view text = row[1];
    const Octets given = assemble(text);
    return std::to_string(key->kind) + " " + digits +
           (info == hex_of(given.data(), given.size()) ? "" : " rewritten");
}

std::string sec1_row(const Row &row) {
    const Octets octets = hex(row[1]);
    P8_PRIV_KEY_INFO *made = nullptr;
    const std::uint32_t status =
        decode_EC_PRIVATE_KEY(octets.data(), static_cast<std::uint32_t>(octets.size()), &made);
    const Info info(made);
    if (status != 0) return status_text(status);
    ASYMMETRIC_KEY *key = nullptr;
    const std::uint32_t read = read_PRIV_KEY(made, &key);
    const Key owner(key);
    return read == 0 ? "key" : "record " + status_text(read);
}

/// Signs under an algorithm and verifies: "good", when that of other data fails; or the status of signing.
std::string sign_row(const Row &row) {
    const Octets data = {1, 2, 3};
    Key key;
    X509_ALGO_IDENTIFIER *algorithm = nullptr;
    OCTET_STRING *made = nullptr;
    if (read(row[1], key) != 0) return status_text(kNoMemory);
    if (decode(Seq_to_X509_ALGO_IDENTIFIER, row[2], &algorithm) != 0) return status_text(kNoMemory);
    const Algorithm owner(algorithm);
    std::uint32_t status = make_SIGNATURE(key.get(), algorithm, data.data(), 3, &made);
    const String signature(made);
    if (status != 0) return status_text(status);
    Pubkey pubkey;
    if (public_of(key, pubkey) != 0) return status_text(kNoMemory);
    const auto size = static_cast<std::uint32_t>(signature->length);
    const auto verify = [&](std::uint32_t len) {
        return verify_SIGNATURE(pubkey.get(), algorithm, data.data(), len, signature->data, size);
    };
    status = verify(3);
    if (status != 0) return status_text(status);
    status = verify(2);
    if (status == kNoMemory) return status_text(status);
    EXPECT_EQ(status_text(status), "53100054");
    ++signature->data[size - 1];
    status = verify(3);
    if (status == kNoMemory) return status_text(status);
    EXPECT_EQ(status_text(status), "53100054");
    return "good";
}

class CurveKey : public LeakFreeTest {
  protected:
    static void SetUpTestSuite() { make_signing_keys(); }
};

TEST_F(CurveKey, Rows) {
    expect_rows("curve_key.txt", {{"read", {read_row, {"5502003C", "4C030104", "4C09003C", "4C0A003C", "1"}}},
                                  {"sec1", {sec1_row, {"4C0B003C", "record 4C09003C"}}},
                                  {"sign", {sign_row, {"5502003C", "4C09003C"}}}});
}

TEST_F(CurveKey, RefusesNullAndPublicKeys) {
    Key key;
    ASSERT_EQ(read(read_rows("curve_key.txt")[0][1], key), 0U);
    P8_PRIV_KEY_INFO *info = nullptr;
    ASYMMETRIC_KEY *out = nullptr;
    OCTET_STRING *signature = nullptr;
    const std::uint8_t octet = 1;
    expect_refuses_null(0x4C0A0049, write_PRIV_KEY, key.get(), &info);
    expect_refuses_null(0x4C0B0049, decode_EC_PRIVATE_KEY, &octet, 1, &info);
    EXPECT_EQ(read_PRIV_KEY(nullptr, &out), 0x4C090049U);
    EXPECT_EQ(set_X509_PUBKEY_key(nullptr, key.get()), 1U);
    const Info empty(new_P8_PRIV_KEY_INFO());
    EXPECT_EQ(read_PRIV_KEY(empty.get(), &out), 0x4C090048U);

    const Algorithm algorithm(decoded(Seq_to_X509_ALGO_IDENTIFIER, "30{06:2A8648CE3D040302}"));
    EXPECT_EQ(make_SIGNATURE(nullptr, algorithm.get(), &octet, 1, &signature), 0x550D0049U);
    EXPECT_EQ(make_SIGNATURE(key.get(), algorithm.get(), nullptr, 1, &signature), 0x550D0049U);
    EXPECT_EQ(verify_SIGNATURE(nullptr, algorithm.get(), &octet, 1, &octet, 1), 0x550E0049U);

    Octets point(TLX_ECDSA_MAX_POINT_LENGTH);
    std::uint32_t size = 0;
    ASSERT_EQ(get_ECDSA_KEY_point(static_cast<ECDSA_KEY *>(key->key), point.data(), &size), 0U);
    const Held<free_ECDSA_KEY> unit(binary_to_ECDSA_KEY(TLX_CURVE_P256, point.data(), size));
    const ASYMMETRIC_KEY other = {TLX_KEY_ECDSA, unit.get()};
    EXPECT_EQ(write_PRIV_KEY(&other, &info), 0x4C0A0048U);
    EXPECT_EQ(make_SIGNATURE(&other, algorithm.get(), &octet, 1, &signature), 0x55020205U);
    const Pubkey pubkey(new_X509_PUBKEY());
    EXPECT_EQ(set_X509_PUBKEY_key(pubkey.get(), &other), 0U) << "a public key has one";
}

}  // namespace
}  // namespace tlx_test
