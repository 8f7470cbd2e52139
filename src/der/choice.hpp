// Records that are a CHOICE: a word tells which alternative, and a pointer, or a union of pointers with a
// member `any`, holds its value.
//
//     // Time ::= CHOICE { utcTime UTCTime, generalTime GeneralizedTime }
//     constexpr auto kTime = choice(&X509_TIME::form, &X509_TIME::time,
//                                   alternative<String<TLX_TAG_UTC_TIME>>(0),
//                                   alternative<String<TLX_TAG_GENERALIZED_TIME>>(1));
#pragma once

#include <tuple>

#include "der/value_kinds.hpp"

namespace tlx {

/// What a failed decoder leaves of a record that the caller gave it.
enum class OnFailure : u8 {
    as_filled,  ///< filled as far as decoding got
    unchanged,
    emptied,
    freed,  ///< freed, and the caller's pointer null
};

/// NULL as an alternative: it has no value, the word says all.
struct Null {
    static constexpr u8 tag = TLX_TAG_NULL;
};

template <typename Kind>
struct Alternative {
    using kind = Kind;
    u32 word;
    u8 tag;  ///< identifier octet
};
/// An alternative with the tag of its type.
template <typename Kind>
constexpr Alternative<Kind> alternative(u32 word) noexcept {
    return {word, Kind::tag};
}
/// [number] IMPLICIT, or EXPLICIT where the kind is Explicit<...>.
template <typename Kind>
constexpr Alternative<Kind> alternative(u32 word, u8 number) noexcept {
    return {word, static_cast<u8>(kContextSpecific | (Kind::tag & kConstructed) | number)};
}
/// The same where the word is the number of the tag.
template <typename Kind>
constexpr Alternative<Kind> tagged(u8 number) noexcept {
    return alternative<Kind>(number, number);
}

template <typename R, typename Value, typename... Alternatives>
struct ChoiceRecord {
    using type = R;
    static constexpr OnFailure on_failure = OnFailure::unchanged;
    u32 R::*word;
    Value R::*value;
    std::tuple<Alternatives...> alternatives;

    void clear(R &record) const noexcept {
        if (held(record) != nullptr) {
            with_value(record, [&](auto kind) {
                using Kind = decltype(kind);
                if constexpr (requires { typename Kind::type; }) {
                    Kind::free(static_cast<typename Kind::type *>(held(record)));
                }
            });
        }
        record = R{};
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        to.*word = from.*word;
        if (held(from) == nullptr) return true;
        with_value(from, [&](auto kind) {
            using Kind = decltype(kind);
            if constexpr (requires { typename Kind::type; }) {
                hold(to, Kind::dup(static_cast<const typename Kind::type *>(held(from))));
            }
        });
        return held(to) != nullptr;
    }
    [[nodiscard]] static bool counts(const Element & /*element*/) noexcept { return true; }
    /// Fills an empty record.
    [[nodiscard]] u32 read(const Element &element, R &record) const noexcept {
        u32 status = kFieldFailed;
        const auto take = [&](const auto &each) {
            using Kind = typename std::remove_cvref_t<decltype(each)>::kind;
            if (!matches(element, each.tag)) return false;
            record.*word = each.word;
            if constexpr (requires { typename Kind::type; }) {
                typename Kind::type *made = nullptr;
                status = Kind::decode(element, &made);
                if (status == 0) hold(record, made);
            } else {
                status = element.contents.empty() ? 0 : kFieldFailed;
            }
            return true;
        };
        std::apply([&](const auto &...each) { return (take(each) || ...); }, alternatives);
        return status;
    }
    /// Puts what the element holds in the place of what the record holds, which stays on failure.
    [[nodiscard]] u32 replace(const Element &element, R &record) const noexcept {
        R fresh{};
        const u32 status = read(element, fresh);
        if (status == 0) std::swap(record, fresh);
        clear(fresh);
        return status;
    }
    /// The tag is that of the alternative; another cannot take its place.
    void write(Encoder &out, const R &record, u8 /*tag*/ = 0) const noexcept {
        const bool known = with_word(record.*word, [&](auto kind, u8 tag) {
            using Kind = decltype(kind);
            if constexpr (requires { typename Kind::type; }) {
                if (held(record) == nullptr) return out.fail();
                Kind::encode(out, static_cast<const typename Kind::type *>(held(record)), tag);
            } else {
                out.primitive(tag, {});
            }
        });
        if (!known) out.fail();
    }

  private:
    static constexpr bool kIsPointer = std::is_pointer_v<Value>;

    [[nodiscard]] void *held(const R &record) const noexcept {
        if constexpr (kIsPointer) {
            return record.*value;
        } else {
            return (record.*value).any;
        }
    }
    void hold(R &record, void *pointer) const noexcept {
        if constexpr (kIsPointer) {
            record.*value = static_cast<Value>(pointer);
        } else {
            (record.*value).any = pointer;
        }
    }
    /// The number tells an alternative with a tag of its own, whatever the class.
    [[nodiscard]] static bool matches(const Element &element, u8 tag) noexcept {
        return tag >= kContextSpecific ? element.number() == (tag & kTagNumberMask) : element.matches(tag);
    }
    /// Calls use(kind) with the kind of the value. Values behind one pointer are all freed and copied as the
    /// first alternative says, whatever the word.
    template <typename Use>
    void with_value(const R &record, Use use) const noexcept {
        if constexpr (kIsPointer) {
            using First = typename std::tuple_element_t<0, std::tuple<Alternatives...>>::kind;
            static_assert(
                requires { typename First::type; }, "an alternative with a value comes first");
            use(First{});
        } else {
            with_word(record.*word, [&](auto kind, u8 /*tag*/) { use(kind); });
        }
    }
    /// Calls use(kind, tag) for the alternative of a word; false when there is none.
    template <typename Use>
    bool with_word(u32 wanted, Use use) const noexcept {
        const auto call = [&](const auto &each) {
            if (each.word != wanted) return false;
            use(typename std::remove_cvref_t<decltype(each)>::kind{}, each.tag);
            return true;
        };
        return std::apply([&](const auto &...each) { return (call(each) || ...); }, alternatives);
    }
};
template <typename R, typename Value, typename... Alternatives>
constexpr ChoiceRecord<R, Value, Alternatives...> choice(u32 R::*word, Value R::*value,
                                                         Alternatives... alternatives) noexcept {
    return {word, value, {alternatives...}};
}

}  // namespace tlx
