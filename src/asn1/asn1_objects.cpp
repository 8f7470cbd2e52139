#include <tlxpki/objects.h>
#include <tlxpki/string.h>

#include <cstring>

#include "asn1/oid_lookup.hpp"
#include "asn1/oid_table.hpp"
#include "der/oid_text.hpp"
#include "der/owned.hpp"
#include "der/values.hpp"

namespace {

using tlx::u32;
using tlx::u8;

/// A negative index becomes one past the table.
const OID_ROW &texts_at(int32_t index) noexcept {
    return tlx::oid::row_at(static_cast<u32>(index)).texts;
}

std::string_view view_of(const char *text, u32 len) noexcept {
    return text != nullptr ? std::string_view(text, len) : std::string_view();
}

}  // namespace

const OID_ROW *OID_LIST(int32_t index) {
    return &texts_at(index);
}
const char *sn_from_index(int32_t index) {
    return texts_at(index).short_name;
}
const char *ln_from_index(int32_t index) {
    return texts_at(index).long_name;
}

OBJECT_IDENTIFIER *index_to_OBJECT_IDENTIFIER(int32_t index) {
    const OID_ROW &row = texts_at(index);
    const std::string_view dotted = row.dotted;
    if (&row == OID_LIST(0) || dotted.empty()) return nullptr;
    return tlx::new_string(TLX_TAG_OBJECT_IDENTIFIER,
                           {reinterpret_cast<const u8 *>(dotted.data()), dotted.size()});
}

uint32_t index_from_sn(const char *text, uint32_t len) {
    return tlx::oid_index_of_short_name(view_of(text, len));
}

uint32_t index_from_ln(const char *text, uint32_t len) {
    return tlx::oid_index_of_long_name(view_of(text, len));
}

uint32_t index_from_oid_string(const char *text, uint32_t len) {
    return tlx::oid_index(view_of(text, len));
}

uint32_t index_from_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid) {
    return tlx::oid_index(tlx::text_of(oid));
}

OBJECT_IDENTIFIER *get_OBJECT_IDENTIFIER(const char *name, uint32_t index) {
    if (index == 0 && name != nullptr) {
        index = tlx::oid_index_of_short_name(name);
        if (index == 0) index = tlx::oid_index_of_long_name(name);
    }
    return index < tlx::oid::kCount ? index_to_OBJECT_IDENTIFIER(static_cast<int32_t>(index)) : nullptr;
}

OBJECT_IDENTIFIER *text_to_OBJECT_IDENTIFIER(const char *text) {
    if (text == nullptr) return nullptr;
    if (OBJECT_IDENTIFIER *const named = get_OBJECT_IDENTIFIER(text, 0); named != nullptr) return named;
    // What does not come back as it went in is another identifier, or none.
    tlx::Buffer contents;
    if (!tlx::text_to_oid(text, contents)) return nullptr;
    tlx::Owned<OBJECT_IDENTIFIER> oid(tlx::decode_oid(contents.bytes()));
    const bool same = oid && tlx::text_of(oid.get()) == text && std::strchr(text, '-') == nullptr;
    return same ? oid.release() : nullptr;
}

OBJECT_IDENTIFIER *dup_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *oid) {
    return dup_ASN1_STRING(oid);
}

int32_t cmp_OBJECT_IDENTIFIER(const OBJECT_IDENTIFIER *a, const OBJECT_IDENTIFIER *b) {
    const std::string_view left = tlx::text_of(a);
    const std::string_view right = tlx::text_of(b);
    if (left.size() != right.size()) return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}
