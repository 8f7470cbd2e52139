// Signature values of ECDSA and KCDSA.
#include <gtest/gtest.h>
#include <tlxpki/x509_sign.h>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

std::int32_t size_of(const Octets &octets) {
    return static_cast<std::int32_t>(octets.size());
}

/// The octets, which are freed; the status for none.
std::string taken(std::uint8_t *octets, std::uint32_t size, std::uint32_t status) {
    const tlx::OwnedOctets<std::uint8_t> owner(octets);
    return octets != nullptr ? hex_of(octets, size) : status_text(status);
}

/// Encodes r and s in hexadecimal.
template <typename Encode>
std::string encoded(const std::string &r_digits, const std::string &s_digits, Encode encode) {
    const Octets r = hex(r_digits);
    const Octets s = hex(s_digits);
    std::uint8_t *out = nullptr;
    std::uint32_t len = 0;
    const std::uint32_t status = encode(&out, &len, r.data(), size_of(r), s.data(), size_of(s));
    return taken(out, len, status);
}

Operation encode_kcdsa(decltype(&encode_KCDSASignatureValue) encode) {
    const auto with_status = [encode](std::uint8_t **out, std::uint32_t *len, auto... numbers) {
        return *len = encode(out, numbers...);
    };
    return {[with_status](const Row &row) { return encoded(row[1], row[2], with_status); }, {"4F00003C"}};
}

/// "r, s", or the status.
std::string decoded(decltype(&decode_KCDSASignatureValue) decode, const std::string &der) {
    const Node node = node_of(der);
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    const std::uint32_t status = decode(&r, &r_len, &s, &s_len, node.get());
    EXPECT_EQ(r != nullptr && s != nullptr, status == 0);
    const std::string first = taken(r, r_len, status);
    const std::string second = taken(s, s_len, status);
    return status == 0 ? first + ", " + second : first;
}

Operation decode(decltype(&decode_KCDSASignatureValue) function, const char *no_memory, const char *no_node) {
    return {[function](const Row &row) { return decoded(function, row[1]); }, {no_memory, no_node}};
}

TEST(SignatureValue, Rows) {
    const auto encode = [](const Row &row) { return encoded(row[1], row[2], encode_ECDSASignatureValue); };
    expect_rows("signature_value.txt",
                {{"encode ECDSA", {encode, {"462E003C", "462E0104"}}},
                 {"encode KCDSA", encode_kcdsa(encode_KCDSASignatureValue)},
                 {"encode KCDSA, old name", encode_kcdsa(encode_KCDSASignatrueValue)},
                 {"decode ECDSA", decode(decode_ECDSASignatureValue, "462F0104", "462F0049")},
                 {"decode KCDSA", decode(decode_KCDSASignatureValue, "00000001", "00000001")},
                 {"decode KCDSA, old name", decode(decode_KCDSASignatrueValue, "00000001", "00000001")}});
    std::uint8_t *out = nullptr;
    const std::uint8_t octet = 1;
    EXPECT_EQ(encode_KCDSASignatureValue(&out, &octet, -1, &octet, 1), 0x4F00002BU);
}

TEST(SignatureValue, OfOpensslIsTheSame) {
    const CommandFolder folder;
    folder.run("openssl ecparam -name prime256v1 -genkey -noout -out key.pem");
    for (int i = 0; i < 8; ++i) {
        folder.run("openssl dgst -sha256 -sign key.pem -out signature key.pem");
        const std::string der = folder.read("signature");
        const std::string text = hex_of(reinterpret_cast<const std::uint8_t *>(der.data()), der.size());
        const std::string numbers = decoded(decode_ECDSASignatureValue, text);
        const std::size_t comma = numbers.find(", ");
        ASSERT_NE(comma, std::string::npos) << numbers;
        EXPECT_EQ(encoded(numbers.substr(0, comma), numbers.substr(comma + 2), encode_ECDSASignatureValue),
                  text);
    }
}

}  // namespace
}  // namespace tlx_test
