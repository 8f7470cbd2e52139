// Typed primitive values: encoders, decoders, string records by type name, BIT STRINGs.

#include "support/allocation.hpp"
#include "support/octets.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;

std::string shown(ASN1_STRING *string) {
    return text_of(String(string).get());
}
std::string shown(BIGINT *number) {
    const tlx::OwnedOctets<char> digits(BIGINT_to_hex(Number(number).get()));
    return digits != nullptr ? digits.get() : "null";
}
std::string shown(void *octet) {
    const tlx::OwnedOctets<std::uint8_t> owner(static_cast<std::uint8_t *>(octet));
    return octet != nullptr ? hex_of(owner.get(), 1) : "null";
}

using Decode = std::string (*)(const std::uint8_t *);
// clang-format off
#define DECODERS(name)                                                               \
    {#name, {[](const std::uint8_t *at) { return shown(decodeToBER##name(at)); },    \
             [](const std::uint8_t *at) { return shown(decodeToDER##name(at)); }}}
const std::map<std::string, std::pair<Decode, Decode>> kDecoders = {
    DECODERS(BitString), DECODERS(OctetString), DECODERS(ObjectIdentifier), DECODERS(UTF8String),
    DECODERS(PrintableString), DECODERS(T61String), DECODERS(IA5String), DECODERS(BMPString), DECODERS(ASN1String),
    DECODERS(UTCTime), DECODERS(GENERALIZEDTime), DECODERS(Integer), DECODERS(Enumerated), DECODERS(Boolean),
    DECODERS(Null),
};

using Encode = std::uint32_t (*)(ASN1_UNIT *, std::uint32_t, const void *, std::int32_t, std::int32_t);
#define ENCODER(name, type)                                                                                  \
    {#name, [](ASN1_UNIT *node, std::uint32_t tag, const void *value, std::int32_t len, std::int32_t form) { \
         return encodeToBER##name(node, tag, static_cast<const type *>(value), len, form);                   \
     }}
const std::map<std::string, Encode> kEncoders = {
    ENCODER(Boolean, std::uint8_t), ENCODER(Integer, BIGINT), ENCODER(BitString, BIT_STRING), ENCODER(Null, void),
    ENCODER(ObjectIdentifier, OBJECT_IDENTIFIER), ENCODER(UTCTime, UTC_TIME),
    ENCODER(GENERALIZEDTime, GENERALIZED_TIME), ENCODER(ASN1String, ASN1_STRING),
};
// clang-format on

std::string decode(const Row &row) {
    const auto &[ber, der] = kDecoders.at(row[1]);
    EXPECT_EQ(ber(nullptr), "null");
    const Octets element = hex(row[2]);
    const std::string result = ber(element.data());
    tlx_fail_allocation(0);
    EXPECT_EQ(der(element.data()), row[3]);
    return result;
}

std::string decode_identifier(const Row &row) {
    Octets element = hex(row[1]);
    element.insert(element.begin(), {0x06, static_cast<std::uint8_t>(element.size())});
    const String text(decodeToBERObjectIdentifier(element.data()));
    return text != nullptr ? reinterpret_cast<const char *>(text->data) : "null";
}

/// A node, or its encoder's status; on failure the node is empty.
std::string encoding(const Node &node, std::uint32_t status) {
    if (status == 0) return hex_of(node.get());
    EXPECT_EQ(node->tag, nullptr);
    return status_text(status);
}

std::string encode(const Row &row) {
    const Encode call = kEncoders.at(row[1]);
    const Octets octets = row[3] == "128 octets" ? Octets(128) : hex(row[3]);
    const String string = row[1] == "ObjectIdentifier" ? string_of(6, row[3]) : string_of(4, octets, 3);
    const Number number = number_of(row[3].c_str());
    const void *value = string.get();
    if (row[1] == "Integer") value = number.get();
    if (row[1] == "Boolean") value = octets.data();
    if (row[3] == "null") value = nullptr;
    const auto len = static_cast<std::int32_t>(row.number(4));
    const auto form = static_cast<std::int32_t>(row.number(5));
    const Node node = node_of("30 80 02 01 05 00 00");
    const std::uint32_t status = call(node.get(), row.number(2), value, len, form);
    return encoding(node, status);
}

std::string encode_identifier(const Row &row) {
    const String oid = string_of(6, row[1]);
    const Node node = new_node();
    const std::string result =
        encoding(node, encodeToBERObjectIdentifier(node.get(), 6, oid.get(), oid->length, 0));
    return node->tag != nullptr ? hex_of(node->value, getASN1ValueLength(node.get())) : result;
}

std::string pad(const Row &row) {
    const auto extra = static_cast<std::int32_t>(row.number(2));
    const String string = string_of(3, hex(row[1]), extra);
    const std::uint32_t status = addPadToBERBitString(string.get(), row[3].c_str());
    const std::string after = hex_of(string->data, static_cast<std::size_t>(string->length));
    EXPECT_EQ(string->extra, extra);
    if (status == 0) return after;
    EXPECT_EQ(after, row[1]) << "unchanged";
    return status_text(status);
}

using Ber = LeakFreeTest;

TEST_F(Ber, Rows) {
    const auto bits = [](const Row &row) {
        return shown(new_BIT_STRING(row[1].c_str(), static_cast<std::int32_t>(row.number(2))));
    };
    const auto bits_of_digits = [](const Row &row) { return shown(hexToBIT_STRING(row[1].c_str())); };
    expect_rows("ber.txt", {{"decode", {decode, {"null"}}},
                            {"decode identifier", {decode_identifier, {"null"}}},
                            {"encode", {encode}},
                            {"encode identifier", {encode_identifier}},
                            {"encode no node", {[](const Row &row) {
                                 return status_text(kEncoders.at(row[1])(nullptr, 5, "", 0, 0));
                             }}},
                            {"bits", {bits, {"null"}}},
                            {"bits of digits", {bits_of_digits, {"null"}}},
                            {"pad", {pad}}});
}

TEST_F(Ber, NullsAndOctetsOfBitStrings) {
    const Octets octets = hex("AB CD");
    EXPECT_EQ(shown(binaryToBIT_STRING(octets.data(), 2)), "type 3 extra 0: AB CD");
    EXPECT_EQ(shown(binaryToBIT_STRING(nullptr, 0)), "type 3 extra 0: ");
    EXPECT_EQ(binaryToBIT_STRING(nullptr, 1), nullptr);
    EXPECT_EQ(binaryToBIT_STRING(octets.data(), 0x80000000), nullptr);
    EXPECT_EQ(new_BIT_STRING(nullptr, 0), nullptr);
    EXPECT_EQ(hexToBIT_STRING(nullptr), nullptr);
    EXPECT_EQ(addPadToBERBitString(nullptr, ""), 0x42120101U);
    EXPECT_EQ(addPadToBERBitString(string_of(3, octets, 5).get(), nullptr), 0x42120101U);
}

TEST_F(Ber, StringRecordsByTypeName) {
    using Operation = void (*)(ASN1_STRING *);
#define RECORD(type, name) \
    { type, new_##name(), clean_##name, free_##name }
    const std::tuple<std::int32_t, ASN1_STRING *, Operation, Operation> cases[] = {
        RECORD(4, OCTET_STRING),      RECORD(6, OBJECT_IDENTIFIER),
        RECORD(12, UTF8_STRING),      RECORD(19, PRINTABLE_STRING),
        RECORD(20, T61_STRING),       RECORD(22, IA5_STRING),
        RECORD(30, BMP_STRING),       RECORD(23, UTC_TIME),
        RECORD(24, GENERALIZED_TIME), {3, new_BIT_STRING("", 0), clean_BIT_STRING, free_BIT_STRING},
    };
    for (const auto &[type, string, clean, free] : cases) {
        EXPECT_EQ(string->type, type);
        clean(string);
        EXPECT_EQ(string->type, 0) << type;
        set_ASN1_STRING_value(string, 1, "AB", 2);
        free(string);
    }
}

}  // namespace
