// Typed primitive values: encoders, decoders, string records by type name, BIT STRINGs.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/octets.hpp"

namespace tlx_test {
namespace {

class Ber : public ::testing::Test {
    LeakCheck leaks_;
};

TEST_F(Ber, EncodersWriteUnderAnyIdentifierAndFailWithTheirCode) {
    const std::uint8_t octet = 0x01;
    const Number number = number_of("0123");
    const String string = string_of(4, hex("AB CD"), 3);
    const String oid = string_of(6, "2.999");
    const std::string text(128, 'x');
    const String longest = string_of(4, text);
    struct Case {
        std::uint32_t (*call)(ASN1_UNIT *, std::uint32_t, const void *, std::int32_t, std::int32_t);
        std::uint32_t code;
        const void *value;
        std::int32_t len, refused_len;
        const char *contents;
    };
#define ENCODER(type, name)                                                                          \
    [](ASN1_UNIT *node, std::uint32_t tag, const void *value, std::int32_t len, std::int32_t form) { \
        return encodeToBER##name(node, tag, static_cast<const type *>(value), len, form);            \
    }
    const Case cases[] = {
        {ENCODER(std::uint8_t, Boolean), 0x42010101, &octet, 1, 2, "01 01"},
        {ENCODER(BIGINT, Integer), 0x42020101, number.get(), 3, 1, "03 00 01 23"},
        {ENCODER(BIT_STRING, BitString), 0x42030101, string.get(), 2, 3, "03 03 AB CD"},
        {ENCODER(void, Null), 0x42040101, nullptr, 0, 1, "00"},
        {ENCODER(OBJECT_IDENTIFIER, ObjectIdentifier), 0x42050101, oid.get(), 5, 0, "02 88 37"},
        {ENCODER(GENERALIZED_TIME, GENERALIZEDTime), 0x42060101, string.get(), 1, 0, "01 AB"},
        {ENCODER(UTC_TIME, UTCTime), 0x42070101, string.get(), 1, 0, "01 AB"},
        {ENCODER(ASN1_STRING, ASN1String), 0x42080101, string.get(), 2, 3, "02 AB CD"},
        // A length of one octet holds no more than 127.
        {ENCODER(BIT_STRING, BitString), 0x42030101, longest.get(), 0, 127, "01 00"},
        {ENCODER(ASN1_STRING, ASN1String), 0x42080101, longest.get(), 0, 128, "00"},
    };
#undef ENCODER
    const Node node = new_node();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.code);
        const auto refused = [&](std::uint32_t tag, const void *value, std::int32_t len, std::int32_t form) {
            EXPECT_EQ(c.call(node.get(), 0x81, c.value, c.len, 0), 0U);
            EXPECT_EQ(c.call(node.get(), tag, value, len, form), c.code) << len << ", form " << form;
            EXPECT_EQ(hex_of(node.get()), "empty");
        };
        for (const std::int32_t form : {0, 1}) {
            EXPECT_EQ(c.call(node.get(), 0x81, c.value, c.len, form), 0U);
            EXPECT_EQ(hex_of(node.get()), (form == 0 ? "81 " : "81 81 ") + std::string(c.contents));
        }
        refused(0xA1, c.value, c.len, 2);
        refused(0x81, c.value, c.len, -1);
        refused(0x81, c.value, -1, 0);
        refused(0x81, c.value, c.refused_len, 0);
        refused(0x181, c.value, c.len, 0);
        refused(0x81, nullptr, 1, 0);
        EXPECT_EQ(c.call(nullptr, 0x81, c.value, c.len, 0), c.code);
    }
    EXPECT_EQ(encodeToBERInteger(node.get(), 2, number_of("00").get(), 2, 0), 0U);
    EXPECT_EQ(hex_of(node.get()), "02 02 00 00");
}

TEST_F(Ber, StringDecoders) {
    struct Case {
        ASN1_STRING *(*ber)(const std::uint8_t *);
        ASN1_STRING *(*der)(const std::uint8_t *);
        const char *element, *result;
    };
#define DECODERS(name) decodeToBER##name, decodeToDER##name
    const Case cases[] = {
        {DECODERS(BitString), "03 01 00", "type 3 extra 0: "},
        {DECODERS(BitString), "03 02 FE A0", "type 3 extra 254: A0"},
        {DECODERS(BitString), "03 00", "null"},
        {DECODERS(OctetString), "04 00", "type 4 extra 0: "},
        {DECODERS(OctetString), "24 80 04 01 AA 00 00", "type 4 extra 0: 04 01 AA"},
        {DECODERS(OctetString), "04 84 FF FF FF FF", "null"},
        {DECODERS(ObjectIdentifier), "06 01 2A", "type 6 extra 0: 31 2E 32"},
        {DECODERS(ObjectIdentifier), "06 02 2A 86", "null"},  // the arc does not end
        {DECODERS(UTF8String), "0C 02 C3 28", "type 12 extra 0: C3 28"},
        {DECODERS(PrintableString), "13 01 00", "type 19 extra 0: 00"},
        {DECODERS(T61String), "14 01 41", "type 20 extra 0: 41"},
        {DECODERS(IA5String), "16 01 FF", "type 22 extra 0: FF"},
        {DECODERS(BMPString), "1E 03 00 41 00", "type 30 extra 0: 00 41 00"},
        {DECODERS(ASN1String), "A1 81 01 05", "type 161 extra 0: A1 81 01 05"},
        {DECODERS(ASN1String), "C1 80 05 00 00 00", "type 193 extra 0: C1 80 05 00 00 00"},
        {DECODERS(ASN1String), "03 00", "null"},
        {DECODERS(ASN1String), "06 01 2A", "type 6 extra 0: 31 2E 32"},
        {DECODERS(ASN1String), "0D 01 01", "null"},
        {DECODERS(ASN1String), "31 02 05 00", "type 49 extra 0: 05 00"},
        {DECODERS(ASN1String), "42 01 05", "type 66 extra 0: 05"},
    };
#undef DECODERS
    for (const Case &c : cases) {
        SCOPED_TRACE(c.element);
        const Octets element = hex(c.element);
        EXPECT_EQ(text_of(String(c.ber(element.data())).get()), c.result);
        EXPECT_EQ(text_of(String(c.der(element.data())).get()), c.result);
        EXPECT_EQ(c.ber(nullptr), nullptr);
        if (std::string(c.result) == "null") continue;
        EXPECT_GT(sweep_failing_allocations([&] { return String(c.ber(element.data())) != nullptr; }), 1U);
    }
}

TEST_F(Ber, TimesTellTheirFormByLength) {
    for (std::uint8_t length = 0; length < 24; ++length) {
        Octets element = {0x17, length};
        element.resize(2U + length, '0');
        const String utc(decodeToBERUTCTime(element.data()));
        const String generalized(decodeToBERGENERALIZEDTime(element.data()));
        EXPECT_EQ(text_of(utc.get()).substr(0, 15),
                  length == 11 || length == 13 ? "type 23 extra 1" : "type 23 extra 0");
        EXPECT_EQ(text_of(generalized.get()).substr(0, 15),
                  length == 13 || length == 15 ? "type 24 extra 1" : "type 24 extra 0");
    }
}

TEST_F(Ber, NumbersBooleansAndNull) {
    const std::pair<const char *, const char *> numbers[] = {
        {"02 01 05", "05"}, {"02 02 00 FF", "FF"},   {"02 01 FF", "FF"}, {"02 03 00 00 01", "01"},
        {"02 01 00", "00"}, {"02 02 80 01", "8001"}, {"02 00", nullptr}, {"02 FF", nullptr},
    };
    for (const auto decode :
         {decodeToBERInteger, decodeToDERInteger, decodeToBEREnumerated, decodeToDEREnumerated}) {
        for (const auto &[element, expected] : numbers) {
            const Number number(decode(hex(element).data()));
            const tlx::OwnedOctets<char> digits(BIGINT_to_hex(number.get()));
            EXPECT_STREQ(digits.get(), expected) << element;
        }
        EXPECT_EQ(decode(nullptr), nullptr);
    }
    const tlx::OwnedOctets<std::uint8_t> octet(decodeToBERBoolean(hex("01 01 07").data()));
    EXPECT_EQ(*octet, 0x07);
    for (const char *element : {"01 00", "01 02 FF FF", "01 80 00 00"})
        EXPECT_EQ(decodeToDERBoolean(hex(element).data()), nullptr) << element;
    EXPECT_NE(tlx::OwnedOctets<void>(decodeToBERNull(hex("05 00").data())), nullptr);
    EXPECT_EQ(decodeToDERNull(hex("05 85").data()), nullptr);
}

TEST_F(Ber, ObjectIdentifiers) {
    struct Case {
        const char *text, *contents;  // "": refused
        const char *back = nullptr;   // what is decoded, when it is not the text
    };
    const Case cases[] = {
        {"1.2.840.113549", "2A 86 48 86 F7 0D"},
        {"2.999", "88 37"},
        {"0.39", "27"},
        {"1.0", "28"},
        {"1.39", "4F"},
        {"2.0", "50"},
        {"1.2.0.127.128.16383.16384", "2A 00 7F 81 00 FF 7F 81 80 00"},
        {"1.2.2147483647", "2A 87 FF FF FF 7F"},
        {"1.2.-1", "2A 8F FF FF FF 7F"},  // arcs are printed as signed numbers
        {"1.2.4294967295", "2A 8F FF FF FF 7F", "1.2.-1"},
        {"2.-81", "8F FF FF FF 7F"},
        {"0.45", "2D", "1.5"},
        {"3.1", "79", "2.41"},
    };
    const Node node = new_node();
    for (const Case &c : cases) {
        SCOPED_TRACE(c.text);
        const String oid = string_of(6, c.text);
        EXPECT_EQ(encodeToBERObjectIdentifier(node.get(), 6, oid.get(), oid->length, 0), 0U);
        EXPECT_EQ(hex_of(node->value, getASN1ValueLength(node.get())), c.contents);
        const String decoded(
            static_cast<ASN1_STRING *>(decodeToBERObjectIdentifier(hex(hex_of(node.get())).data())));
        EXPECT_STREQ(reinterpret_cast<const char *>(decoded->data), c.back != nullptr ? c.back : c.text);
    }
    for (const char *text :
         {"1", "1.", "", ".1", "1..2", "1.2..3", "1.2,3", "1.2 .3", "one.two", "1.2.4294967296",
          "2.4294967216", "1.2.99999999999999999999", "1.2.+3", "1.2.-"}) {
        const String oid = string_of(6, text);
        EXPECT_EQ(encodeToBERObjectIdentifier(node.get(), 6, oid.get(), oid->length, 0), 0x42050101U) << text;
    }

    // 99 characters are the most: "1.2" and 48 arcs of two characters; one digit more is too long.
    Octets longest = hex("06 31 2A");
    longest.resize(2 + 49, 0x03);
    EXPECT_EQ(String(decodeToBERObjectIdentifier(longest.data()))->length, 99);
    longest.back() = 0x0A;
    EXPECT_EQ(decodeToBERObjectIdentifier(longest.data()), nullptr);
    // Padded and oversized arcs are taken as 32-bit numbers.
    EXPECT_EQ(text_of(String(decodeToBERObjectIdentifier(hex("06 03 2A 80 01").data())).get()),
              "type 6 extra 0: 31 2E 32 2E 31");
    EXPECT_EQ(text_of(String(decodeToBERObjectIdentifier(hex("06 07 2A 90 80 80 80 80 05").data())).get()),
              "type 6 extra 0: 31 2E 32 2E 35");
}

TEST_F(Ber, BitStringsFromTextsAndOctets) {
    const auto text = [](BIT_STRING *bits) { return text_of(String(bits).get()); };
    EXPECT_EQ(text(new_BIT_STRING("101", 3)), "type 3 extra 5: A0");
    EXPECT_EQ(text(new_BIT_STRING("", 0)), "type 3 extra 0: ");
    EXPECT_EQ(text(new_BIT_STRING("1111111110", 9)), "type 3 extra 7: FF 80") << "only the first nine";
    EXPECT_EQ(text(new_BIT_STRING("102", 3)), "null");
    EXPECT_EQ(text(new_BIT_STRING("10", 3)), "null") << "ends before the third character";
    EXPECT_EQ(text(new_BIT_STRING("10", -1)), "null");
    EXPECT_EQ(text(new_BIT_STRING(nullptr, 0)), "null");
    const Octets octets = hex("AB CD");
    EXPECT_EQ(text(binaryToBIT_STRING(octets.data(), 2)), "type 3 extra 0: AB CD");
    EXPECT_EQ(text(binaryToBIT_STRING(nullptr, 0)), "type 3 extra 0: ");
    EXPECT_EQ(text(binaryToBIT_STRING(nullptr, 1)), "null");
    EXPECT_EQ(text(binaryToBIT_STRING(octets.data(), 0x80000000)), "null");
    EXPECT_EQ(text(hexToBIT_STRING("abCD")), "type 3 extra 0: AB CD");
    EXPECT_EQ(text(hexToBIT_STRING("")), "type 3 extra 0: ");
    for (const char *bad : {"abc", "0g", "0x00", static_cast<const char *>(nullptr)})
        EXPECT_EQ(text(hexToBIT_STRING(bad)), "null");
    EXPECT_EQ(sweep_failing_allocations([] { return String(new_BIT_STRING("1", 1)) != nullptr; }), 2U);
    EXPECT_EQ(sweep_failing_allocations([] { return String(hexToBIT_STRING("AB")) != nullptr; }), 3U);
}

TEST_F(Ber, BitStringPadding) {
    const auto padded = [](const char *data, std::int32_t extra, const char *bits) {
        const String string = string_of(3, hex(data), extra);
        const std::uint32_t status = addPadToBERBitString(string.get(), bits);
        const std::string after = hex_of(string->data, static_cast<std::size_t>(string->length));
        EXPECT_EQ(string->extra, extra);
        EXPECT_EQ(status, status == 0 ? 0 : 0x42120101);
        return status == 0 ? after : after == data ? "refused" : "refused and changed";
    };
    EXPECT_EQ(padded("FF A0", 3, "001"), "FF A1");
    EXPECT_EQ(padded("A0", 5, "10011"), "B3");
    EXPECT_EQ(padded("A0", 0, ""), "A0");
    EXPECT_EQ(padded("", 0, ""), "");
    for (const char *bits : {"1001", "100111", "1002x", static_cast<const char *>(nullptr)})
        EXPECT_EQ(padded("A0", 5, bits), "refused");
    EXPECT_EQ(padded("A0", 0, "1"), "refused");
    EXPECT_EQ(padded("A0", 8, "11111111"), "refused");
    EXPECT_EQ(padded("A0", -1, ""), "refused");
    EXPECT_EQ(padded("", 3, "111"), "refused");
    EXPECT_EQ(addPadToBERBitString(nullptr, ""), 0x42120101U);
}

TEST_F(Ber, StringRecordsByTypeName) {
    struct Case {
        std::int32_t type;
        ASN1_STRING *(*make)();
        void (*clean)(ASN1_STRING *);
        void (*free)(ASN1_STRING *);
    };
#define RECORD(name) new_##name, clean_##name, free_##name
    const Case cases[] = {
        {4, RECORD(OCTET_STRING)},
        {6, RECORD(OBJECT_IDENTIFIER)},
        {12, RECORD(UTF8_STRING)},
        {19, RECORD(PRINTABLE_STRING)},
        {20, RECORD(T61_STRING)},
        {22, RECORD(IA5_STRING)},
        {30, RECORD(BMP_STRING)},
        {23, RECORD(UTC_TIME)},
        {24, RECORD(GENERALIZED_TIME)},
        {3, [] { return new_BIT_STRING("", 0); }, clean_BIT_STRING, free_BIT_STRING},
    };
#undef RECORD
    for (const Case &c : cases) {
        ASN1_STRING *string = c.make();
        EXPECT_EQ(string->type, c.type);
        c.clean(string);
        EXPECT_EQ(string->type, 0) << c.type;
        set_ASN1_STRING_value(string, 1, "AB", 2);
        c.free(string);
    }
}

}  // namespace
}  // namespace tlx_test
