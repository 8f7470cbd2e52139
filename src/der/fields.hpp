// Fields: how a member of a record is tagged, and whether it may be absent. Every field has the same
// functions: clear frees the member, copy duplicates it into an empty record, read takes it from the children
// that are left, write encodes it, absent says that write would write nothing.
#pragma once

#include <type_traits>

#include "der/received.hpp"
#include "der/value_kinds.hpp"

namespace tlx {

enum class Tagging : u8 {
    none,
    implicit,
    explicitly,    ///< [n] around exactly one element
    first_inside,  ///< [n] around the value, which is read as the first element in it; others are ignored
};

enum class Presence : u8 {
    mandatory,
    optional,  ///< absent when the next element is another one
    trailing,  ///< absent only at the end: another element in its place is refused
};

/// A member that owns its value through a pointer, null when it is absent.
template <typename R, typename Kind>
struct OwnedMember {
    using T = typename Kind::type;
    T *R::*member;

    void clear(R &record) const noexcept {
        if (record.*member != nullptr) Kind::free(record.*member);
        record.*member = nullptr;
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        if (from.*member == nullptr) return true;
        to.*member = Kind::dup(from.*member);
        return to.*member != nullptr;
    }
};

/// Such a member with its encoding.
template <typename R, typename Kind>
struct Field : OwnedMember<R, Kind> {
    using Base = OwnedMember<R, Kind>;
    using Base::member;
    using typename Base::T;
    Tagging tagging = Tagging::none;
    u8 number = 0;
    Presence presence = Presence::mandatory;
    bool any_class = false;

    /// The same field, mandatory; for those that are optional by themselves.
    [[nodiscard]] constexpr Field required() const noexcept {
        return {{member}, tagging, number, Presence::mandatory, any_class};
    }
    /// The same optional field, which also takes a context-specific element for its own.
    [[nodiscard]] constexpr Field of_any_class() const noexcept {
        return {{member}, tagging, number, presence, true};
    }

    [[nodiscard]] bool absent(const R &record) const noexcept { return record.*member == nullptr; }

    /// True for an element that this field takes for its own.
    [[nodiscard]] bool accepts(const Element &child) const noexcept {
        switch (tagging) {
            case Tagging::explicitly:
            case Tagging::first_inside:
                return child.tag == context(number);
            case Tagging::implicit:
                return child.context_specific() && child.number() == number;
            default:
                // Its universal tag tells an optional member without a tag of its own.
                if (presence == Presence::optional && !any_class && child.tag >= kContextSpecific) {
                    return false;
                }
                return may_hold<Kind>(child);
        }
    }
    /// Reads the value out of an element that is this field's own. The old value stays on failure.
    [[nodiscard]] u32 take(const Element &child, R &record) const noexcept {
        Element inner;
        if (tagging == Tagging::explicitly) {
            if (!only_child(child, inner)) return kFieldFailed;
        } else if (tagging == Tagging::first_inside) {
            if (!Cursor(child).next(inner)) return kFieldFailed;
        } else {
            inner = child;
        }
        if (tagging != Tagging::implicit && !may_hold<Kind>(inner)) return kFieldFailed;
        T *value = nullptr;
        if (const u32 status = Kind::decode(inner, &value); status != 0) return status;
        this->clear(record);
        record.*member = value;
        return 0;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        if (!ahead.next(child) || !accepts(child)) {
            this->clear(record);
            const bool may_lack =
                presence == Presence::optional || (presence == Presence::trailing && children.at_end());
            return may_lack ? 0 : kFieldFailed;
        }
        children = ahead;
        return take(child, record);
    }
    void write(Encoder &out, const R &record) const noexcept {
        const T *value = record.*member;
        if (value == nullptr) {
            if (presence == Presence::mandatory) out.fail();
            return;
        }
        if constexpr (requires { Kind::is_default(value); }) {
            if (Kind::is_default(value)) return;
        }
        if (tagging == Tagging::explicitly || tagging == Tagging::first_inside) {
            const auto wrapper = out.nest(context(number));
            Kind::encode(out, value, Kind::tag);
        } else if (tagging == Tagging::implicit) {
            Kind::encode(out, value, static_cast<u8>(kContextSpecific | (Kind::tag & kConstructed) | number));
        } else {
            Kind::encode(out, value, Kind::tag);
        }
    }
};

template <typename Kind, typename R>
constexpr Field<R, Kind> field(typename Kind::type *R::*member) noexcept {
    return {{member}};
}
template <typename Kind, typename R>
constexpr Field<R, Kind> optional(typename Kind::type *R::*member) noexcept {
    return {{member}, Tagging::none, 0, Presence::optional};
}
template <typename Kind, typename R>
constexpr Field<R, Kind> trailing(typename Kind::type *R::*member) noexcept {
    return {{member}, Tagging::none, 0, Presence::trailing};
}
/// [number] IMPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> implicit(u8 number, typename Kind::type *R::*member) noexcept {
    return {{member}, Tagging::implicit, number, Presence::optional};
}
/// [number] EXPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> explicitly(u8 number, typename Kind::type *R::*member) noexcept {
    return {{member}, Tagging::explicitly, number, Presence::optional};
}

/// A BOOLEAN held as its contents octet.
template <typename R>
struct BooleanField {
    u8 R::*member;
    Tagging tagging;
    u8 number;
    bool default_false;  ///< may be absent, and is written only when true

    void clear(R &record) const noexcept { record.*member = 0; }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*member = from.*member;
        return true;
    }
    [[nodiscard]] bool absent(const R &record) const noexcept { return default_false && record.*member == 0; }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool present = ahead.next(child) && accepts(child);
        clear(record);
        if (!present) return default_false ? 0 : kFieldFailed;
        if (child.contents.size() != 1) return kFieldFailed;
        children = ahead;
        record.*member = child.contents[0];
        return 0;
    }
    void write(Encoder &out, const R &record) const noexcept {
        if (absent(record)) return;
        const bool tagged = tagging == Tagging::implicit;
        out.boolean(record.*member != 0, tagged ? context_primitive(number) : u8{TLX_TAG_BOOLEAN});
    }

  private:
    [[nodiscard]] bool accepts(const Element &child) const noexcept {
        if (tagging == Tagging::implicit) return child.tag == context_primitive(number);
        return child.matches(TLX_TAG_BOOLEAN) && !(default_false && child.tag >= kContextSpecific);
    }
};
/// BOOLEAN
template <typename R>
constexpr BooleanField<R> boolean(u8 R::*member) noexcept {
    return {member, Tagging::none, 0, false};
}
/// BOOLEAN DEFAULT FALSE
template <typename R>
constexpr BooleanField<R> default_false(u8 R::*member) noexcept {
    return {member, Tagging::none, 0, true};
}
/// [number] IMPLICIT BOOLEAN DEFAULT FALSE
template <typename R>
constexpr BooleanField<R> flag(u8 number, u8 R::*member) noexcept {
    return {member, Tagging::implicit, number, true};
}

/// INTEGER by value. False for one that needs more octets than there are; without contents it is 0.
inline bool read_number(Bytes contents, u8 &value) noexcept {
    if (contents.size() > 1) return false;
    value = contents.empty() ? u8{0} : contents[0];
    return true;
}
inline bool read_number(Bytes contents, u32 &value) noexcept {
    if (contents.size() == 5 && contents[0] == 0) contents = contents.subspan(1);
    if (contents.size() > 4) return false;
    value = 0;
    for (const u8 octet : contents) {
        value = value << 8 | octet;
    }
    return true;
}
inline void write_number(Encoder &out, u8 value, u8 tag) noexcept {
    out.primitive(tag, {&value, 1});
}
inline void write_number(Encoder &out, u32 value, u8 tag) noexcept {
    u8 octets[5] = {0, static_cast<u8>(value >> 24), static_cast<u8>(value >> 16),
                    static_cast<u8>(value >> 8), static_cast<u8>(value)};
    std::size_t first = 0;
    while (first < 4 && octets[first] == 0 && octets[first + 1] < 0x80) {
        ++first;
    }
    out.primitive(tag, Bytes(octets).subspan(first));
}

/// A number held by value: in a word, or in an octet that stands for the contents octet as it is.
template <typename R, typename T, u8 Tag>
struct NumberField {
    static_assert(std::is_same_v<T, u32> || std::is_same_v<T, u8>);
    T R::*member;
    Tagging tagging = Tagging::none;
    u8 number = 0;
    bool has_default = false;
    T default_value = 0;

    /// The same number under [n] EXPLICIT, of which the first element counts.
    [[nodiscard]] constexpr NumberField in(u8 n) const noexcept {
        return {member, Tagging::first_inside, n, has_default, default_value};
    }
    /// The same number under [n] IMPLICIT.
    [[nodiscard]] constexpr NumberField as(u8 n) const noexcept {
        return {member, Tagging::implicit, n, has_default, default_value};
    }
    /// The same number, which is this value when it is absent, and is not written then.
    [[nodiscard]] constexpr NumberField or_else(T value) const noexcept {
        return {member, tagging, number, true, value};
    }

    void clear(R &record) const noexcept { record.*member = default_value; }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*member = from.*member;
        return true;
    }
    [[nodiscard]] bool absent(const R &record) const noexcept {
        return has_default && record.*member == default_value;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        clear(record);
        if (!ahead.next(child) || !accepts(child)) return has_default ? 0 : kFieldFailed;
        if (tagging == Tagging::first_inside && !Cursor(child).next(Tag, child)) return kFieldFailed;
        children = ahead;
        return read_number(child.contents, record.*member) ? 0 : kFieldFailed;
    }
    void write(Encoder &out, const R &record) const noexcept {
        if (absent(record)) return;
        if (tagging == Tagging::first_inside) {
            const auto wrapper = out.nest(context(number));
            write_number(out, record.*member, Tag);
        } else {
            write_number(out, record.*member, tagging == Tagging::implicit ? context_primitive(number) : Tag);
        }
    }

  private:
    [[nodiscard]] bool accepts(const Element &child) const noexcept {
        if (tagging == Tagging::first_inside) return child.tag == context(number);
        if (tagging == Tagging::implicit) return child.tag == context_primitive(number);
        return child.matches(Tag) && !(has_default && child.tag >= kContextSpecific);
    }
};

template <typename R, typename T>
constexpr NumberField<R, T, TLX_TAG_INTEGER> number(T R::*member) noexcept {
    return {member};
}
template <typename R, typename T>
constexpr NumberField<R, T, TLX_TAG_ENUMERATED> enumerated(T R::*member) noexcept {
    return {member};
}

/// A member without an encoding: it is copied and freed with the record, and empty after reading.
template <typename R, typename Kind>
struct KeptField : OwnedMember<R, Kind> {
    [[nodiscard]] bool absent(const R & /*record*/) const noexcept { return true; }
    [[nodiscard]] u32 read(Cursor & /*children*/, R &record) const noexcept {
        this->clear(record);
        return 0;
    }
    void write(Encoder & /*out*/, const R & /*record*/) const noexcept {}
};
template <typename Kind, typename R>
constexpr KeptField<R, Kind> kept(typename Kind::type *R::*member) noexcept {
    return {{member}};
}

/// The same for a plain word.
template <typename R, typename T>
struct KeptWord {
    T R::*member;

    void clear(R &record) const noexcept { record.*member = T{}; }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*member = from.*member;
        return true;
    }
    [[nodiscard]] bool absent(const R & /*record*/) const noexcept { return true; }
    [[nodiscard]] u32 read(Cursor & /*children*/, R &record) const noexcept {
        clear(record);
        return 0;
    }
    void write(Encoder & /*out*/, const R & /*record*/) const noexcept {}
};
template <typename R, typename T>
constexpr KeptWord<R, T> kept_word(T R::*member) noexcept {
    return {member};
}

struct Received {
    using type = TLX_RECEIVED;
    static type *dup(const type *received) noexcept { return dup_received(received); }
    static void free(type *received) noexcept { free_received(received); }
};

/// The octets of the whole record as they were received.
template <typename R>
struct ReceivedField : KeptField<R, Received> {
    /// Called when every field has been read. False when memory runs out.
    [[nodiscard]] bool receive(const Element &element, R &record) const noexcept {
        record.*(this->member) = keep_received(element);
        return record.*(this->member) != nullptr;
    }
};
template <typename R>
constexpr ReceivedField<R> received(TLX_RECEIVED *R::*member) noexcept {
    return {{{member}}};
}

/// A described record that lies in this one, not behind a pointer.
template <typename R, typename T, typename Description>
struct EmbeddedField {
    T R::*member;
    Description description;

    void clear(R &record) const noexcept { description.clear(record.*member); }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        return description.copy(to.*member, from.*member);
    }
    [[nodiscard]] bool absent(const R & /*record*/) const noexcept { return false; }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        if (!children.next(child)) return kFieldFailed;
        return description.replace(child, record.*member);
    }
    void write(Encoder &out, const R &record) const noexcept { description.write(out, record.*member); }
};
template <typename R, typename T, typename Description>
constexpr EmbeddedField<R, T, Description> embedded(T R::*member, Description description) noexcept {
    return {member, description};
}

}  // namespace tlx
