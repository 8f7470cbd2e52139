// ASN1_STRING records.
#include <tlxpki/asn1_io.h>
#include <tlxpki/string.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "der/encoder.hpp"
#include "der/memory.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

/// a - b, held within the type.
i32 difference(i32 a, i32 b) noexcept {
    const std::int64_t wide = std::int64_t{a} - b;
    constexpr std::int64_t kLeast = std::numeric_limits<i32>::min();
    constexpr std::int64_t kMost = std::numeric_limits<i32>::max();
    return static_cast<i32>(std::clamp(wide, kLeast, kMost));
}

/// A member that was read with a context-specific or private identifier holds its whole element.
bool holds_own_element(const ASN1_STRING *string) noexcept {
    const Bytes octets = octets_of(string);
    Element element;
    return string->type >= kContextSpecific && read_element(octets, element) && element.tag == string->type &&
           element.whole.size() == octets.size();
}

}  // namespace

ASN1_STRING *new_ASN1_STRING(void) {
    return TLX_NEW(ASN1_STRING);
}

void clean_ASN1_STRING(ASN1_STRING *string) {
    if (string == nullptr) return;
    tlx_free(string->data);
    *string = ASN1_STRING{};
}

void free_ASN1_STRING(ASN1_STRING *string) {
    clean_ASN1_STRING(string);
    tlx_free(string);
}

ASN1_STRING *dup_ASN1_STRING(const ASN1_STRING *string) {
    if (string == nullptr) return nullptr;
    Owned<ASN1_STRING> copy(static_cast<ASN1_STRING *>(TLX_ALLOCATE(sizeof(ASN1_STRING))));
    if (!copy) return nullptr;
    *copy = *string;
    copy->data = nullptr;
    if (string->data != nullptr) {
        copy->data = copy_terminated(octets_of(string));
        if (copy->data == nullptr) return nullptr;
    }
    return copy.release();
}

uint32_t set_ASN1_STRING_value(ASN1_STRING *string, int32_t type, const void *octets, uint32_t len) {
    const bool has_data = type != TLX_TAG_NULL;
    if (string == nullptr || len > kMaxLength || (has_data && octets == nullptr && len > 0)) {
        return 0x41010049;
    }

    // Copies before it frees the old data, because the new value may lie in it.
    u8 *data = has_data ? copy_terminated({static_cast<const u8 *>(octets), len}) : nullptr;
    clean_ASN1_STRING(string);
    if (has_data && data == nullptr) return 0x41010049;
    string->type = type;
    string->data = data;
    string->length = static_cast<i32>(len);
    return 0;
}

int32_t cmp_ASN1_STRING(const ASN1_STRING *a, const ASN1_STRING *b) {
    if (a == nullptr || b == nullptr) return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
    if (a->length != b->length) return difference(a->length, b->length);
    const Bytes left = octets_of(a);
    const Bytes right = octets_of(b);
    if (left.size() != right.size()) return difference(left.empty() ? 0 : 1, right.empty() ? 0 : 1);
    const int order = left.empty() ? 0 : std::memcmp(left.data(), right.data(), left.size());
    // Only the sign of memcmp's result is the same on every processor.
    if (order != 0) return order < 0 ? -1 : 1;
    return difference(a->type, b->type);
}

uint32_t ASN1_STRING_to_Seq(const ASN1_STRING *string, ASN1_UNIT **out) {
    if (string == nullptr || out == nullptr) return 0x41020049;
    Encoder encoder;
    if (holds_own_element(string)) {
        encoder.raw(octets_of(string));
    } else {
        encoder.any_string(string);
    }
    return hand_over(encoder, out) ? 0 : 0x41020103;
}

uint32_t ASN1_STRING_to_binary(const ASN1_STRING *string, uint8_t **out) {
    return writeDER_to_Binary(string, TLX_ENCODER(ASN1_STRING_to_Seq), out);
}
