// Fields: how a member of a record is tagged, and whether it may be absent.
#pragma once

#include "der/value_kinds.hpp"

namespace tlx {

/// The one element that a wrapper holds. False for none, for more, and for a broken one.
inline bool only_child(const Element &wrapper, Element &child) noexcept {
    Cursor children(wrapper);
    return children.next(child) && children.at_end();
}

enum class Tagging : u8 { none, implicit, explicitly };

template <typename R, typename Kind>
struct Field {
    using T = typename Kind::type;
    T *R::*member;
    Tagging tagging;
    u8 number;
    bool is_optional;

    /// The same field, mandatory; for those that are optional by themselves.
    [[nodiscard]] constexpr Field required() const noexcept { return {member, tagging, number, false}; }

    void clear(R &record) const noexcept {
        if (record.*member != nullptr) Kind::free(record.*member);
        record.*member = nullptr;
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        if (from.*member == nullptr) return true;
        to.*member = Kind::dup(from.*member);
        return to.*member != nullptr;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool present = ahead.next(child) && accepts(child);
        clear(record);
        if (!present) return is_optional ? 0 : kFieldFailed;
        children = ahead;
        if (tagging == Tagging::explicitly) {
            Element inner;
            if (!only_child(child, inner) || !fits<Kind>(inner)) return kFieldFailed;
            child = inner;
        }
        return Kind::decode(child, &(record.*member));
    }
    void write(Encoder &out, const R &record) const noexcept {
        const T *value = record.*member;
        if (value == nullptr) {
            if (!is_optional) out.fail();
            return;
        }
        if constexpr (requires { Kind::is_default(value); }) {
            if (Kind::is_default(value)) return;
        }
        if (tagging == Tagging::explicitly) {
            const auto wrapper = out.nest(context(number));
            Kind::encode(out, value, Kind::tag);
        } else if (tagging == Tagging::implicit) {
            Kind::encode(out, value, static_cast<u8>(kContextSpecific | (Kind::tag & kConstructed) | number));
        } else {
            Kind::encode(out, value, Kind::tag);
        }
    }

  private:
    [[nodiscard]] bool accepts(const Element &child) const noexcept {
        if (tagging == Tagging::explicitly) return child.tag == context(number);
        if (tagging == Tagging::implicit) return child.context_specific() && child.number() == number;
        // An optional member without a tag of its own is told apart by its universal tag.
        if (is_optional && child.tag >= kContextSpecific) return false;
        return fits<Kind>(child);
    }
};

template <typename Kind, typename R>
constexpr Field<R, Kind> field(typename Kind::type *R::*member) noexcept {
    return {member, Tagging::none, 0, false};
}
template <typename Kind, typename R>
constexpr Field<R, Kind> optional(typename Kind::type *R::*member) noexcept {
    return {member, Tagging::none, 0, true};
}
/// [number] IMPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> implicit(u8 number, typename Kind::type *R::*member) noexcept {
    return {member, Tagging::implicit, number, true};
}
/// [number] EXPLICIT ... OPTIONAL
template <typename Kind, typename R>
constexpr Field<R, Kind> explicitly(u8 number, typename Kind::type *R::*member) noexcept {
    return {member, Tagging::explicitly, number, true};
}

/// BOOLEAN held as its contents octet. With `number` it is a [number] IMPLICIT BOOLEAN DEFAULT FALSE, which
/// is written only when true; without it is mandatory, and written always.
template <typename R>
struct BooleanField {
    static constexpr u8 kUntagged = 0xFF;
    u8 R::*member;
    u8 number;

    void clear(R &record) const noexcept { record.*member = 0; }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*member = from.*member;
        return true;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        Element child;
        Cursor ahead = children;
        const bool tagged = number != kUntagged;
        const bool present = ahead.next(child) && (tagged ? child.tag == context_primitive(number)
                                                          : child.matches(TLX_TAG_BOOLEAN));
        clear(record);
        if (!present) return tagged ? 0 : kFieldFailed;
        if (child.contents.size() != 1) return kFieldFailed;
        children = ahead;
        record.*member = child.contents[0];
        return 0;
    }
    void write(Encoder &out, const R &record) const noexcept {
        const bool value = record.*member != 0;
        if (number == kUntagged) {
            out.boolean(value);
        } else if (value) {
            out.boolean(value, context_primitive(number));
        }
    }
};
template <typename R>
constexpr BooleanField<R> boolean(u8 R::*member) noexcept {
    return {member, BooleanField<R>::kUntagged};
}
/// [number] IMPLICIT BOOLEAN DEFAULT FALSE
template <typename R>
constexpr BooleanField<R> flag(u8 number, u8 R::*member) noexcept {
    return {member, number};
}

}  // namespace tlx
