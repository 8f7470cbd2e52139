// Signature values of ECDSA and KCDSA.
#include <gtest/gtest.h>
#include <tlxpki/x509_sign.h>

#include <string>

#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/octets.hpp"

namespace {

using tlx_test::hex;
using tlx_test::hex_of;
using tlx_test::node_of;
using tlx_test::Octets;

std::int32_t size_of(const Octets &octets) {
    return static_cast<std::int32_t>(octets.size());
}

/// The octets, which are freed; the status for none.
std::string taken(std::uint8_t *octets, std::uint32_t size, std::uint32_t status) {
    char code[16];
    std::snprintf(code, sizeof code, "%08X", status);
    const std::string text = octets != nullptr ? hex_of(octets, size) : code;
    tlx_free(octets);
    return text;
}

std::string encode_ecdsa(const Octets &r, const Octets &s) {
    std::uint8_t *out = nullptr;
    std::uint32_t len = 0;
    const std::uint32_t status =
        encode_ECDSASignatureValue(&out, &len, r.data(), size_of(r), s.data(), size_of(s));
    EXPECT_EQ(out != nullptr, status == 0);
    return taken(out, len, status);
}

using KcdsaEncoder = decltype(&encode_KCDSASignatureValue);
using Decoder = decltype(&decode_KCDSASignatureValue);

std::string encode_kcdsa(KcdsaEncoder encode, const Octets &r, const Octets &s) {
    std::uint8_t *out = nullptr;
    const std::uint32_t len = encode(&out, r.data(), size_of(r), s.data(), size_of(s));
    return taken(out, len, len);
}

/// "r, s", or the status.
std::string decode(Decoder decoder, const ASN1_UNIT *node) {
    std::uint8_t *r = nullptr;
    std::uint8_t *s = nullptr;
    std::uint32_t r_len = 0;
    std::uint32_t s_len = 0;
    const std::uint32_t status = decoder(&r, &r_len, &s, &s_len, node);
    EXPECT_EQ(r != nullptr && s != nullptr, status == 0);
    const std::string first = taken(r, r_len, status);
    const std::string second = taken(s, s_len, status);
    return status == 0 ? first + ", " + second : first;
}

class SignatureValue : public ::testing::Test {
    tlx_test::LeakCheck leaks_;
};

TEST_F(SignatureValue, HasNumbersOfTheirLengthAndASignBit) {
    const struct {
        const char *r, *s, *ecdsa, *ecdsa_numbers, *kcdsa, *kcdsa_numbers;
    } cases[] = {
        {"01", "7F", "30 06 02 01 01 02 01 7F", "01, 7F", "30 07 03 02 00 01 02 01 7F", "01, 7F"},
        {"80", "FF FF", "30 09 02 02 00 80 02 03 00 FF FF", "00 80, 00 FF FF",
         "30 09 03 02 00 80 02 03 00 FF FF", "80, 00 FF FF"},
        {"00", "00", "30 06 02 01 00 02 01 00", "00, 00", "30 07 03 02 00 00 02 01 00", "00, 00"},
        {"00 00 12", "00 00 34", "30 06 02 01 12 02 01 34", "12, 34", "30 09 03 04 00 00 00 12 02 01 34",
         "00 00 12, 34"},
    };
    for (const auto &each : cases) {
        EXPECT_EQ(encode_ecdsa(hex(each.r), hex(each.s)), each.ecdsa);
        EXPECT_EQ(decode(decode_ECDSASignatureValue, node_of(each.ecdsa).get()), each.ecdsa_numbers);
        EXPECT_EQ(encode_kcdsa(encode_KCDSASignatureValue, hex(each.r), hex(each.s)), each.kcdsa);
        EXPECT_EQ(encode_kcdsa(encode_KCDSASignatrueValue, hex(each.r), hex(each.s)), each.kcdsa);
        EXPECT_EQ(decode(decode_KCDSASignatureValue, node_of(each.kcdsa).get()), each.kcdsa_numbers);
        EXPECT_EQ(decode(decode_KCDSASignatrueValue, node_of(each.kcdsa).get()), each.kcdsa_numbers);
    }
}

TEST_F(SignatureValue, IsReadInOneOfTwoFormsOrRefused) {
    const struct {
        const char *what, *der, *ecdsa, *kcdsa;
    } cases[] = {
        {"an ECDSA signature", "30 06 02 01 01 02 01 02", "01, 02", "00000001"},
        {"a KCDSA signature", "30 07 03 02 00 01 02 01 02", "462F0104", "01, 02"},
        {"unused bits, which do not count", "30 07 03 02 07 80 02 01 02", "462F0104", "80, 02"},
        {"r without octets", "30 06 03 01 00 02 01 02", "462F0104", ", 02"},
        {"an empty BIT STRING", "30 05 03 00 02 01 02", "462F0104", "00000001"},
        {"three members", "30 09 02 01 01 02 01 02 02 01 03", "01, 02", "00000001"},
        {"one INTEGER", "30 03 02 01 01", "462F0104", "00000001"},
        {"r alone", "30 04 03 02 00 01", "462F0104", "00000001"},
        {"an empty INTEGER", "30 05 02 01 01 02 00", "462F0104", "00000001"},
        {"a second member cut short", "30 07 03 02 00 01 02 02 02", "462F0104", "00000001"},
        {"a SET", "31 06 02 01 01 02 01 02", "462F0104", "00000001"},
        {"a SET of a BIT STRING", "31 07 03 02 00 01 02 01 02", "462F0104", "00000001"},
        {"nothing", "30 00", "462F0104", "00000001"},
    };
    for (const auto &each : cases) {
        EXPECT_EQ(decode(decode_ECDSASignatureValue, node_of(each.der).get()), each.ecdsa) << each.what;
        EXPECT_EQ(decode(decode_KCDSASignatureValue, node_of(each.der).get()), each.kcdsa) << each.what;
    }
    EXPECT_EQ(decode(decode_ECDSASignatureValue, nullptr), "462F0049");
    EXPECT_EQ(decode(decode_KCDSASignatureValue, nullptr), "00000001");
    EXPECT_EQ(decode(decode_KCDSASignatureValue, tlx_test::new_node().get()), "00000001");

    EXPECT_EQ(encode_ecdsa({}, {1}), "462E0049");
    EXPECT_EQ(encode_ecdsa({1}, {}), "462E0049");
    EXPECT_EQ(encode_kcdsa(encode_KCDSASignatureValue, {}, {1}), "4F00002B");
    EXPECT_EQ(encode_kcdsa(encode_KCDSASignatrueValue, {1}, {}), "4F00002B");
    std::uint8_t *out = nullptr;
    const std::uint8_t octet = 1;
    EXPECT_EQ(encode_KCDSASignatureValue(&out, &octet, -1, &octet, 1), 0x4F00002BU);
}

TEST_F(SignatureValue, OfOpensslIsTheSame) {
    const tlx_test::CommandFolder folder;
    folder.run("openssl ecparam -name prime256v1 -genkey -noout -out key.pem");
    for (int i = 0; i < 8; ++i) {
        folder.run("openssl dgst -sha256 -sign key.pem -out signature key.pem");
        const std::string der = folder.read("signature");
        const std::string text = hex_of(reinterpret_cast<const std::uint8_t *>(der.data()), der.size());
        const std::string numbers = decode(decode_ECDSASignatureValue, node_of(text).get());
        const std::size_t comma = numbers.find(", ");
        ASSERT_NE(comma, std::string::npos) << numbers;
        EXPECT_EQ(encode_ecdsa(hex(numbers.substr(0, comma)), hex(numbers.substr(comma + 2))), text);
    }
}

TEST_F(SignatureValue, MemoryMayRunOutAnywhere) {
    const Octets number = hex("8F 01");
    const tlx_test::Node ecdsa = node_of("30 06 02 01 01 02 01 02");
    const tlx_test::Node kcdsa = node_of("30 07 03 02 00 01 02 01 02");
    const auto sweep = [](auto run, const std::string &failures) {
        return tlx_test::sweep_failing_allocations([&] {
            const std::string result = run();
            const bool failed = result.find(' ') == std::string::npos;
            EXPECT_TRUE(!failed || failures.find(result) != std::string::npos) << result;
            return !failed;
        });
    };
    EXPECT_EQ(sweep([&] { return encode_ecdsa(number, number); }, "462E003C 462E0104"), 3U);
    EXPECT_EQ(sweep([&] { return encode_kcdsa(encode_KCDSASignatureValue, number, number); }, "4F00003C"),
              2U);
    EXPECT_EQ(sweep([&] { return decode(decode_ECDSASignatureValue, ecdsa.get()); }, "462F0104"), 4U);
    EXPECT_EQ(sweep([&] { return decode(decode_KCDSASignatureValue, kcdsa.get()); }, "00000001"), 3U);
}

}  // namespace
