// Records that stand for a CHOICE of context tags: { choice, value }, where the choice is the tag number and
// the value a union of pointers.
//
//     struct GeneralNameKinds {
//         /// Calls use(Kind{}) with the value kind of a choice; false for a choice that there is not.
//         template <typename Use>
//         static bool visit(u32 choice, Use use) noexcept;
//     };
//     constexpr ChoiceRecord<GENERAL_NAME, GeneralNameKinds> kGeneralName{codes(0x470B0000, 0x470C0000)};
//     TLX_DEFINE_RECORD(GENERAL_NAME, kGeneralName)
#pragma once

#include "der/record.hpp"

namespace tlx {

/// A description of such a record, with the members that TLX_DEFINE_RECORD asks for.
template <typename R, typename Kinds>
struct ChoiceRecord {
    Codes codes;

    void clean(R *record) const noexcept {
        if (record == nullptr) return;
        if (record->value.any != nullptr) {
            Kinds::visit(record->choice, [&](auto kind) {
                kind.free(static_cast<typename decltype(kind)::type *>(record->value.any));
            });
        }
        *record = R{};
    }
    void free(R *record) const noexcept {
        clean(record);
        tlx_free(record);
    }
    R *dup(const R *record, R *(*make)()) const noexcept {
        if (record == nullptr) return nullptr;
        R *copy = make();
        if (copy == nullptr) return nullptr;
        copy->choice = record->choice;
        if (record->value.any == nullptr) return copy;
        Kinds::visit(record->choice, [&](auto kind) {
            copy->value.any = kind.dup(static_cast<const typename decltype(kind)::type *>(record->value.any));
        });
        if (copy->value.any != nullptr) return copy;
        free(copy);
        return nullptr;
    }
    u32 decode(const Element &element, R **out, R *(*make)()) const noexcept {
        OutRecord<R> record(out, make);
        if (!record) return codes.decode.not_decoded;
        clean(record.get());
        record->choice = element.number();
        Kinds::visit(element.number(), [&](auto kind) {
            typename decltype(kind)::type *value = nullptr;
            if (kind.decode(element, &value) == 0) record->value.any = value;
        });
        if (record->value.any == nullptr) return codes.decode.not_decoded;
        record.commit();
        return 0;
    }
    /// The tag is that of the choice; another cannot take its place.
    void encode(Encoder &out, const R *record, u8 /*tag*/) const noexcept {
        if (record == nullptr || record->value.any == nullptr) return out.fail();
        const bool known = Kinds::visit(record->choice, [&](auto kind) {
            using Kind = decltype(kind);
            const auto tag = static_cast<u8>(kContextSpecific | (Kind::tag & kConstructed) | record->choice);
            kind.encode(out, static_cast<const typename Kind::type *>(record->value.any), tag);
        });
        if (!known) out.fail();
    }
};

/// [n] EXPLICIT around a value of another kind.
template <typename Kind>
struct Explicit {
    using type = typename Kind::type;
    static constexpr u8 tag = kSequence;
    static u32 decode(const Element &element, type **out) noexcept {
        Element inner;
        if (!only_child(element, inner) || !fits<Kind>(inner)) return kFieldFailed;
        return Kind::decode(inner, out);
    }
    static void encode(Encoder &out, const type *value, u8 as) noexcept {
        const auto wrapper = out.nest(as);
        Kind::encode(out, value, Kind::tag);
    }
    static type *dup(const type *value) noexcept { return Kind::dup(value); }
    static void free(type *value) noexcept { Kind::free(value); }
};

}  // namespace tlx
