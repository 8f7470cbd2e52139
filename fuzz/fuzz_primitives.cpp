// Every primitive decoder over hostile contents, and the encoders over what they gave.
#include <cstring>

#include "values.hpp"

namespace {

using namespace fuzz;

bool same(const ASN1_STRING *a, const ASN1_STRING *b) {
    return a != nullptr && b != nullptr && a->type == b->type && a->extra == b->extra &&
           a->length == b->length &&
           std::memcmp(a->data, b->data, static_cast<std::size_t>(a->length) + 1) == 0;
}

using StringDecoder = ASN1_STRING *(*)(const std::uint8_t *);

/// What a decoder gives, encoded under its type, gives the same again.
void check_string(StringDecoder decode, const std::uint8_t *element) {
    const String value(decode(element));
    if (value == nullptr) return;
    require(value->data[value->length] == 0);
    const Node node(new_ASN1_UNIT());
    const auto form = getASN1LengthForm(static_cast<std::uint32_t>(value->type), value->length);
    const std::uint32_t status =
        encodeToBER(node.get(), static_cast<std::uint32_t>(value->type), value.get(), value->length, form);
    if (status != 0) {
        require(status == 0x42090101 && node->tag == nullptr);
        return;
    }
    const std::string encoding = octets_of(node.get());
    const String again(decode(reinterpret_cast<const std::uint8_t *>(encoding.data())));
    const bool narrowed = value->type == 3 && (value->extra & ~0xFF) != 0;
    require(narrowed || same(value.get(), again.get()));
}

void check_any(const std::uint8_t *element) {
    const String value(decodeToBERASN1String(element));
    if (value == nullptr) return;
    const Node seq(new_ASN1_UNIT());
    if (addToDERSequence(seq.get(), 32, value.get(), 0) != 0) return;
    const String again(static_cast<ASN1_STRING *>(getDERChildAt(seq.get(), 0, 32)));
    if (value->type == 16 || value->type == 17) value->type |= 0x20;  // written with the constructed bit
    // Numbers lose leading zeros and gain one before a set top bit.
    const bool number = value->type == 2 || value->type == 10;
    require(number || same(value.get(), again.get()));
}

void check_number(const std::uint8_t *element) {
    const Number value(decodeToBERInteger(element));
    if (value == nullptr) return;
    const Node seq(new_ASN1_UNIT());
    require(addToDERSequence(seq.get(), 2, value.get(), get_BIGINT_der_length(value.get())) == 0);
    const Number again(static_cast<BIGINT *>(getDERChildAt(seq.get(), 0, 2)));
    require(again != nullptr && cmp_BIGINT(value.get(), again.get()) == 0);
}

/// A dotted text that is accepted encodes to what decodes and encodes to the same.
void check_dotted_text(const std::string &text) {
    const String record = string_of(6, text);
    const Node node(new_ASN1_UNIT());
    if (encodeToBERObjectIdentifier(node.get(), 6, record.get(), record->length, 1) != 0) return;
    const std::string encoding = octets_of(node.get());
    const String decoded(
        decodeToBERObjectIdentifier(reinterpret_cast<const std::uint8_t *>(encoding.data())));
    if (decoded == nullptr) return;  // longer than 99 characters
    const Node again(new_ASN1_UNIT());
    require(encodeToBERObjectIdentifier(again.get(), 6, decoded.get(), decoded->length, 1) == 0);
    require(octets_of(again.get()) == encoding);
}

void check_bit_texts(const std::string &text) {
    const String bits(new_BIT_STRING(text.c_str(), static_cast<std::int32_t>(text.size())));
    if (bits != nullptr) {
        require(bits->length * 8 - bits->extra == static_cast<std::int32_t>(text.size()));
        require(addPadToBERBitString(bits.get(),
                                     std::string(static_cast<std::size_t>(bits->extra), '1').c_str()) == 0);
    }
    const String octets(hexToBIT_STRING(text.c_str()));
    require(octets == nullptr || static_cast<std::size_t>(octets->length) * 2 == std::strlen(text.c_str()));
}

void check_times(const std::uint8_t *element) {
    const String time(decodeToBERUTCTime(element));
    if (time == nullptr) return;
    auto len = static_cast<std::uint32_t>(time->length);
    const std::uint32_t status = checkDER(23, time.get(), &len);
    require(status == 0 || status == 0x43010101);
    require(len == static_cast<std::uint32_t>(time->length));
    require(status != 0 || (len != 11 && len != 15 && len != 17));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size < 2 || size > 4096) return 0;
    const std::string text(reinterpret_cast<const char *>(data), size);
    check_dotted_text(text);
    check_bit_texts(text);

    // The decoders know no length: they get elements that are complete, in a block of exactly their size.
    const Node node = node_of(data, size);
    if (node == nullptr) return 0;
    const std::string complete = octets_of(node.get());
    const Octets block(complete.begin(), complete.end());
    const std::uint8_t *octets = block.data();
    const auto before = tlx_live_blocks();
    for (const StringDecoder decode :
         {decodeToBERBitString, decodeToBEROctetString, decodeToBERObjectIdentifier, decodeToBERUTF8String,
          decodeToBERPrintableString, decodeToBERT61String, decodeToBERIA5String, decodeToBERBMPString,
          decodeToBERUTCTime, decodeToBERGENERALIZEDTime}) {
        check_string(decode, octets);
    }
    check_any(octets);
    check_number(octets);
    check_times(octets);
    const tlx::OwnedOctets<void> boolean(decodeToDERBoolean(octets));
    const tlx::OwnedOctets<void> null(decodeToDERNull(octets));
    require((null != nullptr) == (getASN1ValueLengthFromLO(octets + 1) != 0xFFFFFFFF));
    require(tlx_live_blocks() == before + (boolean != nullptr) + (null != nullptr));
    return 0;
}
