// Typed primitive values: encoders, decoders, string records by type name, BIT STRINGs.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

using StringDecoder = ASN1_STRING *(*)(const std::uint8_t *);

TEST(Ber, EncodersWriteUnderAnyIdentifierAndFailWithTheirCode) {
    const std::uint8_t octet = 0x01;
    const Number number = number_of("0123");
    const String string = string_of(4, hex("AB CD"), 3);
    const String oid = string_of(6, "2.999");
    using Call = std::uint32_t (*)(ASN1_UNIT *, std::uint32_t, const void *, std::int32_t, std::int32_t);
    struct Case {
        const char *name;
        Call call;
        const void *value;
        std::int32_t len;
        const char *short_form, *long_form;
        std::uint32_t code;
        std::int32_t refused_len;
        bool value_needed;
    };
#define AS(type, function)                                                                           \
    [](ASN1_UNIT *node, std::uint32_t tag, const void *value, std::int32_t len, std::int32_t form) { \
        return function(node, tag, static_cast<const type *>(value), len, form);                     \
    }
    const Case cases[] = {
        {"Boolean", AS(std::uint8_t, encodeToBERBoolean), &octet, 1, "81 01 01", "81 81 01 01", 0x42010101, 2,
         true},
        {"Integer", AS(BIGINT, encodeToBERInteger), number.get(), 3, "81 03 00 01 23", "81 81 03 00 01 23",
         0x42020101, 0, true},
        {"BitString", AS(BIT_STRING, encodeToBERBitString), string.get(), 2, "81 03 03 AB CD",
         "81 81 03 03 AB CD", 0x42030101, 3, true},
        {"Null", AS(void, encodeToBERNull), nullptr, 0, "81 00", "81 81 00", 0x42040101, 1, false},
        {"ObjectIdentifier", AS(OBJECT_IDENTIFIER, encodeToBERObjectIdentifier), oid.get(), 5, "81 02 88 37",
         "81 81 02 88 37", 0x42050101, 0, true},
        {"GENERALIZEDTime", AS(GENERALIZED_TIME, encodeToBERGENERALIZEDTime), string.get(), 1, "81 01 AB",
         "81 81 01 AB", 0x42060101, 0, true},
        {"UTCTime", AS(UTC_TIME, encodeToBERUTCTime), string.get(), 1, "81 01 AB", "81 81 01 AB", 0x42070101,
         0, true},
        {"ASN1String", AS(ASN1_STRING, encodeToBERASN1String), string.get(), 2, "81 02 AB CD",
         "81 81 02 AB CD", 0x42080101, 3, true},
    };
#undef AS
    for (const Case &c : cases) {
        SCOPED_TRACE(c.name);
        const LeakCheck leaks;
        const Node node = new_node();
        EXPECT_EQ(c.call(node.get(), 0x81, c.value, c.len, 0), 0U);
        EXPECT_EQ(hex_of(node.get()), c.short_form);
        EXPECT_EQ(c.call(node.get(), 0x81, c.value, c.len, 1), 0U);
        EXPECT_EQ(hex_of(node.get()), c.long_form);
        const auto refused = [&](std::uint32_t tag, const void *value, std::int32_t len, std::int32_t form) {
            const Node filled = node_of("04 01 AA");
            EXPECT_EQ(c.call(filled.get(), tag, value, len, form), c.code)
                << "len " << len << " form " << form;
            EXPECT_EQ(hex_of(filled.get()), "empty");
        };
        refused(0x81, c.value, c.len, 2);
        refused(0xA1, c.value, c.len, 2);
        refused(0x81, c.value, c.len, -1);
        refused(0x81, c.value, -1, 0);
        refused(0x81, c.value, c.refused_len, 0);
        refused(0x181, c.value, c.len, 0);
        if (c.value_needed) refused(0x81, nullptr, c.len, 0);
        EXPECT_EQ(c.call(nullptr, 0x81, c.value, c.len, 0), c.code);
        EXPECT_GT(sweep_failing_allocations([&] {
                      const Node fresh = new_node();
                      if (fresh == nullptr) return false;
                      const std::uint32_t status = c.call(fresh.get(), 0x81, c.value, c.len, 0);
                      EXPECT_TRUE(status == 0 || status == c.code) << std::hex << status;
                      return status == 0;
                  }),
                  3U);
    }
    const LeakCheck leaks;
    const Node node = new_node();
    EXPECT_EQ(encodeToBERInteger(node.get(), 2, number.get(), 1, 0), 0x42020101U)
        << "two octets do not fit in one";
    const String long_string = string_of(4, std::string(128, 'x'));
    EXPECT_EQ(encodeToBERBitString(node.get(), 3, long_string.get(), 126, 0), 0U);
    EXPECT_EQ(encodeToBERBitString(node.get(), 3, long_string.get(), 127, 0), 0x42030101U);
    EXPECT_EQ(encodeToBERASN1String(node.get(), 4, long_string.get(), 128, 0), 0x42080101U);
    EXPECT_EQ(encodeToBERASN1String(node.get(), 4, long_string.get(), 128, 1), 0U);
    EXPECT_EQ(hex_of(node.get()).substr(0, 11), "04 81 80 78");
    const Number zero = number_of("00");
    EXPECT_EQ(encodeToBERInteger(node.get(), 2, zero.get(), 2, 0), 0U);
    EXPECT_EQ(hex_of(node.get()), "02 02 00 00");
}

TEST(Ber, StringDecoders) {
    struct Case {
        const char *name;
        StringDecoder ber, der;
        const char *element, *result;
    };
    const Case cases[] = {
        {"BitString", decodeToBERBitString, decodeToDERBitString, "03 02 05 A0", "type 3 extra 5: A0"},
        {"BitString", decodeToBERBitString, decodeToDERBitString, "03 01 00", "type 3 extra 0: "},
        {"BitString", decodeToBERBitString, decodeToDERBitString, "03 02 FE A0", "type 3 extra 254: A0"},
        {"BitString", decodeToBERBitString, decodeToDERBitString, "03 00", "null"},
        {"OctetString", decodeToBEROctetString, decodeToDEROctetString, "04 00", "type 4 extra 0: "},
        {"OctetString", decodeToBEROctetString, decodeToDEROctetString, "24 80 04 01 AA 00 00",
         "type 4 extra 0: 04 01 AA"},
        {"OctetString", decodeToBEROctetString, decodeToDEROctetString, "04 84 FF FF FF FF", "null"},
        {"ObjectIdentifier", decodeToBERObjectIdentifier, decodeToDERObjectIdentifier, "06 01 2A",
         "type 6 extra 0: 31 2E 32"},
        {"ObjectIdentifier", decodeToBERObjectIdentifier, decodeToDERObjectIdentifier, "06 00", "null"},
        {"UTF8String", decodeToBERUTF8String, decodeToDERUTF8String, "0C 02 C3 28", "type 12 extra 0: C3 28"},
        {"PrintableString", decodeToBERPrintableString, decodeToDERPrintableString, "13 01 00",
         "type 19 extra 0: 00"},
        {"T61String", decodeToBERT61String, decodeToDERT61String, "14 01 41", "type 20 extra 0: 41"},
        {"IA5String", decodeToBERIA5String, decodeToDERIA5String, "16 01 FF", "type 22 extra 0: FF"},
        {"BMPString", decodeToBERBMPString, decodeToDERBMPString, "1E 03 00 41 00",
         "type 30 extra 0: 00 41 00"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "A1 81 01 05",
         "type 161 extra 0: A1 81 01 05"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "C1 80 05 00 00 00",
         "type 193 extra 0: C1 80 05 00 00 00"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "03 00", "null"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "06 02 2A 86", "null"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "0D 01 01", "null"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "31 02 05 00", "type 49 extra 0: 05 00"},
        {"ASN1String", decodeToBERASN1String, decodeToDERASN1String, "42 01 05", "type 66 extra 0: 05"},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.name) + " " + c.element);
        const LeakCheck leaks;
        const Octets element = hex(c.element);
        EXPECT_EQ(text_of(String(c.ber(element.data())).get()), c.result);
        EXPECT_EQ(text_of(String(c.der(element.data())).get()), c.result);
        EXPECT_EQ(c.ber(nullptr), nullptr);
        if (std::string(c.result) == "null") continue;
        EXPECT_GT(sweep_failing_allocations([&] { return String(c.ber(element.data())) != nullptr; }), 1U);
    }
}

TEST(Ber, TimesTellTheirFormByLength) {
    const LeakCheck leaks;
    for (std::uint8_t length = 0; length < 24; ++length) {
        Octets element = {0x17, length};
        element.resize(2U + length, '0');
        const String utc(decodeToBERUTCTime(element.data()));
        const String generalized(decodeToBERGENERALIZEDTime(element.data()));
        ASSERT_NE(utc, nullptr);
        ASSERT_NE(generalized, nullptr);
        EXPECT_EQ(utc->type, 23);
        EXPECT_EQ(generalized->type, 24);
        EXPECT_EQ(utc->extra, length == 11 || length == 13 ? 1 : 0) << int{length};
        EXPECT_EQ(generalized->extra, length == 13 || length == 15 ? 1 : 0) << int{length};
    }
}

TEST(Ber, NumbersBooleansAndNull) {
    const LeakCheck leaks;
    struct Case {
        const char *element, *digits;
    };
    const Case numbers[] = {
        {"02 01 05", "05"}, {"02 02 00 FF", "FF"},
        {"02 01 FF", "FF"}, {"02 03 00 00 01", "01"},
        {"02 01 00", "00"}, {"02 09 80 00 00 00 00 00 00 00 01", "800000000000000001"},
        {"02 00", nullptr}, {"02 FF", nullptr},
    };
    for (const Case &c : numbers) {
        const Octets element = hex(c.element);
        using Decoder = BIGINT *(*)(const std::uint8_t *);
        for (const Decoder decode : {Decoder{decodeToBERInteger}, Decoder{decodeToDERInteger},
                                     Decoder{decodeToBEREnumerated}, Decoder{decodeToDEREnumerated}}) {
            const Number number(decode(element.data()));
            if (c.digits == nullptr) {
                EXPECT_EQ(number, nullptr) << c.element;
                continue;
            }
            const tlx::OwnedOctets<char> digits(BIGINT_to_hex(number.get()));
            EXPECT_STREQ(digits.get(), c.digits) << c.element;
        }
    }
    const tlx::OwnedOctets<std::uint8_t> octet(decodeToBERBoolean(hex("01 01 07").data()));
    ASSERT_NE(octet, nullptr);
    EXPECT_EQ(*octet, 0x07);
    for (const char *element : {"01 00", "01 02 FF FF", "01 80 00 00"})
        EXPECT_EQ(decodeToDERBoolean(hex(element).data()), nullptr) << element;
    const tlx::OwnedOctets<void> marker(decodeToBERNull(hex("05 00").data()));
    EXPECT_NE(marker, nullptr);
    EXPECT_EQ(decodeToDERNull(hex("05 85").data()), nullptr);
    EXPECT_EQ(decodeToBERNull(nullptr), nullptr);
    EXPECT_EQ(decodeToBERBoolean(nullptr), nullptr);
    EXPECT_EQ(decodeToBERInteger(nullptr), nullptr);
}

TEST(Ber, ObjectIdentifiers) {
    struct Case {
        const char *text, *contents;
    };
    const Case both_ways[] = {
        {"1.2.840.113549", "2A 86 48 86 F7 0D"},
        {"2.999", "88 37"},
        {"0.0", "00"},
        {"0.39", "27"},
        {"1.0", "28"},
        {"1.39", "4F"},
        {"2.0", "50"},
        {"2.5.4.3", "55 04 03"},
        {"1.2.0.127.128.16383.16384", "2A 00 7F 81 00 FF 7F 81 80 00"},
        {"1.2.2147483647", "2A 87 FF FF FF 7F"},
        {"1.2.-1", "2A 8F FF FF FF 7F"},  // arcs are printed as signed numbers
        {"1.2.410.200004.10.1.1.3", "2A 83 1A 8C 9A 44 0A 01 01 03"},
    };
    for (const Case &c : both_ways) {
        SCOPED_TRACE(c.text);
        const LeakCheck leaks;
        const String oid = string_of(6, c.text);
        const Node node = new_node();
        EXPECT_EQ(encodeToBERObjectIdentifier(node.get(), 6, oid.get(), oid->length, 0), 0U);
        EXPECT_EQ(hex_of(node->value, getASN1ValueLength(node.get())), c.contents);
        Octets element = hex(c.contents);
        element.insert(element.begin(), {0x06, static_cast<std::uint8_t>(element.size())});
        const String decoded(decodeToBERObjectIdentifier(element.data()));
        ASSERT_NE(decoded, nullptr);
        EXPECT_STREQ(reinterpret_cast<const char *>(decoded->data), c.text);
    }
    const Case one_way[] = {
        {"2.5.", "55"},
        {"1.2.4294967295", "2A 8F FF FF FF 7F"},
        {"0.45", "2D"},
        {"3.1", "79"},
        {"1", ""},
        {"1.", ""},
        {"", ""},
        {".1", ""},
        {"1..2", ""},
        {"1.2..3", ""},
        {"1.2,3", ""},
        {"1.2 .3", ""},
        {"one.two", ""},
        {"1.2.4294967296", ""},
        {"1.2.99999999999999999999", ""},
        {"1.2.+3", ""},
        {"1.2.-", ""},
    };
    for (const Case &c : one_way) {
        const String oid = string_of(6, c.text);
        const Node node = new_node();
        const bool refused = std::string(c.contents).empty();
        EXPECT_EQ(encodeToBERObjectIdentifier(node.get(), 6, oid.get(), oid->length, 0),
                  refused ? 0x42050101 : 0U)
            << c.text;
        EXPECT_EQ(hex_of(node->value, refused ? 0 : getASN1ValueLength(node.get())), c.contents) << c.text;
    }

    // 99 characters are the most: "1.2" and 48 arcs of two characters; one digit more is too long.
    Octets longest = hex("06 31 2A");
    longest.resize(2 + 49, 0x03);
    const String decoded(decodeToBERObjectIdentifier(longest.data()));
    ASSERT_NE(decoded, nullptr);
    EXPECT_EQ(decoded->length, 99);
    longest.back() = 0x0A;
    EXPECT_EQ(decodeToBERObjectIdentifier(longest.data()), nullptr);
    EXPECT_EQ(decodeToBERObjectIdentifier(hex("06 02 2A 86").data()), nullptr) << "the arc does not end";
    // Padded and oversized arcs are taken as 32-bit numbers.
    EXPECT_EQ(text_of(String(decodeToBERObjectIdentifier(hex("06 03 2A 80 01").data())).get()),
              "type 6 extra 0: 31 2E 32 2E 31");
    EXPECT_EQ(text_of(String(decodeToBERObjectIdentifier(hex("06 07 2A 90 80 80 80 80 05").data())).get()),
              "type 6 extra 0: 31 2E 32 2E 35");
}

TEST(BitString, FromTexts) {
    struct Case {
        const char *bits;
        std::int32_t count;
        const char *result;
    };
    const Case cases[] = {
        {"101", 3, "type 3 extra 5: A0"},
        {"", 0, "type 3 extra 0: "},
        {"00000001", 8, "type 3 extra 0: 01"},
        {"000000011", 9, "type 3 extra 7: 01 80"},
        {"1111111110", 9, "type 3 extra 7: FF 80"},  // only the first nine
        {"102", 3, "null"},
        {"10 ", 3, "null"},
        {"10", 3, "null"},  // ends before the third character
        {"10", -1, "null"},
        {nullptr, 0, "null"},
    };
    for (const Case &c : cases) {
        const LeakCheck leaks;
        EXPECT_EQ(text_of(String(new_BIT_STRING(c.bits, c.count)).get()), c.result) << c.count;
    }
    const LeakCheck leaks;
    const Octets octets = hex("AB CD");
    EXPECT_EQ(text_of(String(binaryToBIT_STRING(octets.data(), 2)).get()), "type 3 extra 0: AB CD");
    EXPECT_EQ(text_of(String(binaryToBIT_STRING(nullptr, 0)).get()), "type 3 extra 0: ");
    EXPECT_EQ(binaryToBIT_STRING(nullptr, 1), nullptr);
    EXPECT_EQ(binaryToBIT_STRING(octets.data(), 0x80000000), nullptr);
    EXPECT_EQ(text_of(String(hexToBIT_STRING("abCD")).get()), "type 3 extra 0: AB CD");
    EXPECT_EQ(text_of(String(hexToBIT_STRING("")).get()), "type 3 extra 0: ");
    for (const char *text : {"abc", "0g", "0x00", "AB CD"})
        EXPECT_EQ(hexToBIT_STRING(text), nullptr) << text;
    EXPECT_EQ(hexToBIT_STRING(nullptr), nullptr);
    EXPECT_EQ(sweep_failing_allocations([] { return String(new_BIT_STRING("1", 1)) != nullptr; }), 2U);
    EXPECT_EQ(sweep_failing_allocations([] { return String(hexToBIT_STRING("AB")) != nullptr; }), 3U);
}

TEST(BitString, Padding) {
    struct Case {
        const char *data;
        std::int32_t extra;
        const char *bits;
        std::uint32_t status;
        const char *after;
    };
    const Case cases[] = {
        {"A0", 5, "10011", 0, "B3"},
        {"FF A0", 3, "001", 0, "FF A1"},
        {"A0", 0, "", 0, "A0"},
        {"B3", 5, "00000", 0, "B3"},
        {"", 0, "", 0, ""},
        {"A0", 5, "1001", 0x42120101, "A0"},
        {"A0", 5, "100111", 0x42120101, "A0"},
        {"A0", 5, "1002x", 0x42120101, "A0"},
        {"A0", 5, "10011x", 0x42120101, "A0"},
        {"A0", 5, nullptr, 0x42120101, "A0"},
        {"A0", 0, "1", 0x42120101, "A0"},
        {"A0", 8, "11111111", 0x42120101, "A0"},
        {"A0", -1, "", 0x42120101, "A0"},
        {"", 3, "111", 0x42120101, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(std::string(c.data) + ", " + std::to_string(c.extra) + " unused");
        const LeakCheck leaks;
        const String string = string_of(3, hex(c.data), c.extra);
        EXPECT_EQ(addPadToBERBitString(string.get(), c.bits), c.status);
        EXPECT_EQ(text_of(string.get()), "type 3 extra " + std::to_string(c.extra) + ": " + c.after);
    }
    EXPECT_EQ(addPadToBERBitString(nullptr, ""), 0x42120101U);
}

TEST(StringRecords, ByTypeName) {
    struct Case {
        std::int32_t type;
        ASN1_STRING *(*make)();
        void (*clean)(ASN1_STRING *);
        void (*free)(ASN1_STRING *);
    };
    const Case cases[] = {
        {3, nullptr, clean_BIT_STRING, free_BIT_STRING},
        {4, new_OCTET_STRING, clean_OCTET_STRING, free_OCTET_STRING},
        {6, new_OBJECT_IDENTIFIER, clean_OBJECT_IDENTIFIER, free_OBJECT_IDENTIFIER},
        {12, new_UTF8_STRING, clean_UTF8_STRING, free_UTF8_STRING},
        {19, new_PRINTABLE_STRING, clean_PRINTABLE_STRING, free_PRINTABLE_STRING},
        {20, new_T61_STRING, clean_T61_STRING, free_T61_STRING},
        {22, new_IA5_STRING, clean_IA5_STRING, free_IA5_STRING},
        {30, new_BMP_STRING, clean_BMP_STRING, free_BMP_STRING},
        {23, new_UTC_TIME, clean_UTC_TIME, free_UTC_TIME},
        {24, new_GENERALIZED_TIME, clean_GENERALIZED_TIME, free_GENERALIZED_TIME},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.type);
        const LeakCheck leaks;
        ASN1_STRING *string = c.make != nullptr ? c.make() : new_BIT_STRING("", 0);
        ASSERT_NE(string, nullptr);
        EXPECT_EQ(string->type, c.type);
        EXPECT_EQ(string->length, 0);
        EXPECT_EQ(set_ASN1_STRING_value(string, c.type, "AB", 2), 0U);
        c.clean(string);
        EXPECT_EQ(string->type, 0);
        EXPECT_EQ(string->data, nullptr);
        EXPECT_EQ(string->length, 0);
        EXPECT_EQ(set_ASN1_STRING_value(string, c.type, "AB", 2), 0U);
        c.free(string);
        c.clean(nullptr);
        c.free(nullptr);
    }
}

}  // namespace
}  // namespace tlx_test
