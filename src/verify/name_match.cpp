#include "verify/name_match.hpp"

#include <tlxpki/types.h>

namespace tlx {
namespace {

bool is_space(u8 octet) noexcept {
    return octet == ' ' || (octet >= '\t' && octet <= '\r');
}

/// ASCII letters in small.
u8 folded(u8 octet) noexcept {
    return octet >= 'A' && octet <= 'Z' ? static_cast<u8>(octet + ('a' - 'A')) : octet;
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
            return folded(octet);
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

/// Whether each attribute has one of the others that equals it.
bool are_equal_sets(Bytes a, Bytes b) noexcept {
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

bool are_equal_relative_names(Bytes a, Bytes b) noexcept {
    if (same(a, b)) return true;
    StrictCursor left(a);
    StrictCursor right(b);
    AttributeView first_left;
    AttributeView first_right;
    next_attribute(left, first_left);
    next_attribute(right, first_right);
    const bool are_single = left.at_end() && right.at_end();
    return are_single ? are_equal_attributes(first_left, first_right) : are_equal_sets(a, b);
}

/// Collects what is hashed, because a hash takes much at once faster than octets one by one.
class HashInput {
  public:
    explicit HashInput(SipHash &hash) noexcept : hash_(hash) {}
    void add(u8 octet) noexcept {
        if (count_ == sizeof octets_) finish();
        octets_[count_++] = octet;
    }
    void add(Bytes octets) noexcept {
        for (const u8 octet : octets) {
            add(octet);
        }
    }
    void add_number(u64 number) noexcept {
        for (u32 shift = 0; shift < 64; shift += 8) {
            add(static_cast<u8>(number >> shift));
        }
    }
    void finish() noexcept {
        hash_.add({octets_, count_});
        count_ = 0;
    }

  private:
    SipHash &hash_;
    u8 octets_[128];
    std::size_t count_ = 0;
};

/// Adds a text as comparison sees it. Returns its octets.
u64 hash_text(HashInput &input, Bytes octets) noexcept {
    u64 size = 0;
    bool is_spaced = false;
    for (const u8 octet : octets) {
        if (is_space(octet)) {
            is_spaced = size != 0;
            continue;
        }
        if (is_spaced) input.add(' ');
        input.add(folded(octet));
        size += is_spaced ? 2 : 1;
        is_spaced = false;
    }
    return size;
}

/// Adds the type, the value and their sizes, without which other attributes could add the same octets.
void hash_attribute(HashInput &input, const AttributeView &attribute) noexcept {
    input.add(attribute.type);
    const u8 kind = text_class(attribute.value.tag);
    u64 size = attribute.value.whole.size();
    if (kind == 0) {
        input.add(attribute.value.whole);
    } else {
        size = hash_text(input, attribute.value.contents);
    }
    input.add_number(u64{kind} << 56 | u64{attribute.type.size()} << 32 | size);
}

u64 hash_of_attribute(const SipHash::Key &key, const AttributeView &attribute) noexcept {
    SipHash hash(key);
    HashInput input(hash);
    hash_attribute(input, attribute);
    input.finish();
    return hash.value();
}

/// Adds a relative name, whatever the order of its attributes.
void hash_relative_name(HashInput &input, const SipHash::Key &key, Bytes relative_name) noexcept {
    StrictCursor attributes(relative_name);
    AttributeView attribute;
    next_attribute(attributes, attribute);
    if (attributes.at_end()) {
        hash_attribute(input, attribute);
        return;
    }
    u64 sum = hash_of_attribute(key, attribute);
    while (!attributes.at_end()) {
        next_attribute(attributes, attribute);
        sum += hash_of_attribute(key, attribute);
    }
    input.add_number(sum);
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
    HashInput input(hash);
    StrictCursor names(name);
    Bytes relative_name;
    while (!names.at_end() && names.next(id::kSet, relative_name)) {
        hash_relative_name(input, key, relative_name);
    }
    input.finish();
}

}  // namespace tlx
