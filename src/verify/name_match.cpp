#include "verify/name_match.hpp"

#include <tlxpki/types.h>

namespace tlx {
namespace {

bool is_space(u8 octet) noexcept {
    return octet == ' ' || (octet >= '\t' && octet <= '\r');
}

/// The octets of a text one by one, without what comparison ignores.
class FoldedText {
  public:
    explicit FoldedText(Bytes text) noexcept : rest_(text) { skip_spaces(); }

    /// The next octet; -1 at the end.
    int next() noexcept {
        if (rest_.empty()) return -1;
        const u8 octet = rest_.front();
        if (!is_space(octet)) {
            rest_ = rest_.subspan(1);
            return octet >= 'A' && octet <= 'Z' ? octet + ('a' - 'A') : octet;
        }
        skip_spaces();
        return rest_.empty() ? -1 : ' ';
    }

  private:
    void skip_spaces() noexcept {
        while (!rest_.empty() && is_space(rest_.front())) {
            rest_ = rest_.subspan(1);
        }
    }
    Bytes rest_;
};

/// The type of a value for comparison; 0 for one that is compared octet by octet with its identifier.
u8 text_class(u8 identifier) noexcept {
    if (identifier == TLX_TAG_PRINTABLE_STRING) return TLX_TAG_UTF8_STRING;
    return identifier == TLX_TAG_UTF8_STRING || identifier == TLX_TAG_IA5_STRING ? identifier : 0;
}

bool are_equal_texts(Bytes a, Bytes b) noexcept {
    FoldedText left(a);
    FoldedText right(b);
    for (;;) {
        const int octet = left.next();
        if (octet != right.next()) return false;
        if (octet < 0) return true;
    }
}

bool are_equal_attributes(const AttributeView &a, const AttributeView &b) noexcept {
    if (!same(a.type, b.type)) return false;
    if (same(a.value.whole, b.value.whole)) return true;
    const u8 kind = text_class(a.value.tag);
    return kind != 0 && kind == text_class(b.value.tag) &&
           are_equal_texts(a.value.contents, b.value.contents);
}

u32 read_attributes(StrictCursor relative_name, AttributeView (&attributes)[kMostAttributes]) noexcept {
    u32 count = 0;
    while (!relative_name.at_end()) {
        next_attribute(relative_name, attributes[count++]);
    }
    return count;
}

bool are_equal_relative_names(Bytes a, Bytes b) noexcept {
    if (same(a, b)) return true;
    AttributeView left[kMostAttributes];
    AttributeView right[kMostAttributes];
    const u32 count = read_attributes(StrictCursor(a), left);
    if (read_attributes(StrictCursor(b), right) != count) return false;
    u32 matched = 0;  // a bit for each of the right
    for (u32 i = 0; i < count; ++i) {
        u32 j = 0;
        while (j < count && ((matched >> j & 1U) != 0 || !are_equal_attributes(left[i], right[j]))) {
            ++j;
        }
        if (j == count) return false;
        matched |= 1U << j;
    }
    return true;
}

u64 hash_of_attribute(const SipHash::Key &key, const AttributeView &attribute) noexcept {
    SipHash hash(key);
    hash.add(attribute.type);
    const u8 kind = text_class(attribute.value.tag);
    if (kind == 0) {
        hash.add(attribute.value.whole);
        return hash.value();
    }
    hash.add(kind);
    FoldedText text(attribute.value.contents);
    u8 folded[64];
    u32 count = 0;
    for (int octet = text.next(); octet >= 0; octet = text.next()) {
        folded[count++] = static_cast<u8>(octet);
        if (count < sizeof folded) continue;
        hash.add(folded);
        count = 0;
    }
    hash.add({folded, count});
    return hash.value();
}

}  // namespace

void next_attribute(StrictCursor &relative_name, AttributeView &attribute) noexcept {
    StrictCursor members;
    const bool read = relative_name.enter(id::kSequence, members) && members.next(id::kOid, attribute.type) &&
                      members.any(attribute.value);
    if (!read) relative_name = StrictCursor();
}

bool is_name(Bytes name) noexcept {
    StrictCursor names(name);
    while (!names.at_end()) {
        StrictCursor attributes;
        if (!names.enter(id::kSet, attributes) || attributes.at_end()) return false;
        for (u32 count = 0; !attributes.at_end(); ++count) {
            StrictCursor members;
            Bytes type;
            Element value;
            if (count == kMostAttributes || !attributes.enter(id::kSequence, members) ||
                !members.next(id::kOid, type) || !is_oid(type) || !members.any(value) || !members.at_end()) {
                return false;
            }
        }
    }
    return true;
}

bool is_name_within(Bytes name, Bytes base) noexcept {
    StrictCursor names(name);
    StrictCursor bases(base);
    while (!bases.at_end()) {
        Bytes a;
        Bytes b;
        if (!bases.next(id::kSet, b) || !names.next(id::kSet, a) || !are_equal_relative_names(a, b)) {
            return false;
        }
    }
    return true;
}

bool are_equal_names(Bytes a, Bytes b) noexcept {
    if (same(a, b)) return true;
    return is_name_within(a, b) && is_name_within(b, a);
}

void hash_name(SipHash &hash, const SipHash::Key &key, Bytes name) noexcept {
    StrictCursor names(name);
    Bytes relative_name;
    while (!names.at_end() && names.next(id::kSet, relative_name)) {
        u64 sum = 0;  // whatever the order of the attributes
        StrictCursor attributes(relative_name);
        while (!attributes.at_end()) {
            AttributeView attribute;
            next_attribute(attributes, attribute);
            sum += hash_of_attribute(key, attribute);
        }
        for (u32 shift = 0; shift < 64; shift += 8) {
            hash.add(static_cast<u8>(sum >> shift));
        }
    }
}

}  // namespace tlx
