// Records are described, not hand-coded: from one description of a SEQUENCE follow its six operations (new_,
// clean_, free_, dup_, Seq_to_ and _to_Seq). Its statuses come from the list of all records (records.inc).
//
//     // PolicyMapping ::= SEQUENCE {
//     //     issuerDomainPolicy OBJECT IDENTIFIER, subjectDomainPolicy OBJECT IDENTIFIER }
//     constexpr auto kPolicyMapping = record<POLICY_MAPPING>(
//         exactly(2), field<Oid>(&POLICY_MAPPING::issuerDomainPolicy),
//         field<Oid>(&POLICY_MAPPING::subjectDomainPolicy));
//     TLX_DEFINE_RECORD(POLICY_MAPPING, kPolicyMapping)
//
// A field says how a member is tagged and whether it may be absent:
//
//     field, optional, trailing, implicit(n), explicitly(n)     a member behind a pointer
//     boolean, default_false, flag(n), number, enumerated       a member held by value
//     embedded                                                  a described record inside this one
//     kept, kept_word                                           a member without an encoding
//     group, by_tag, by_number, defined_by                      fields made of fields (der/field_groups.hpp)
//
// and a value kind says what it holds:
//
//     Integer, String<tag>, Octets, Joined, Bits, NamedBits, Oid, AnyValue, Verbatim, Node     values
//     Nested<T>, Passing<T>, Choice<T>                                                         records
//     Explicit<kind>, Secret<kind>                                                             wrappers
//     List<kind>, OneOrMore<kind>, SetOf<kind>, PassingList<list, codes>                       lists
//
// A CHOICE is described with choice (der/choice.hpp). A field of another shape is a class with the five
// functions of Field.
#pragma once

#include <tuple>

#include "der/choice.hpp"
#include "der/field_groups.hpp"
#include "der/fields.hpp"
#include "der/list_kinds.hpp"
#include "der/record_codes.hpp"

namespace tlx {

/// What becomes of children that no field took.
enum class Rest : u8 {
    refused,
    ignored,  ///< but a broken one is refused
    unread,
};

/// How many children the SEQUENCE must have.
struct Count {
    u32 least;
    u32 most;
    Rest rest;
};
constexpr u32 kAnyNumber = 0xFFFFFFFF;
constexpr Count exactly(u32 count, Rest rest = Rest::refused) noexcept {
    return {count, count, rest};
}
constexpr Count between(u32 least, u32 most) noexcept {
    return {least, most, Rest::refused};
}
constexpr Count at_least(u32 least, Rest rest = Rest::ignored) noexcept {
    return {least, kAnyNumber, rest};
}
/// Any number of children; those that no field took are ignored.
constexpr Count any_count() noexcept {
    return {0, kAnyNumber, Rest::ignored};
}
/// The children that the fields take, and no others.
constexpr Count as_described() noexcept {
    return {0, kAnyNumber, Rest::refused};
}
/// The children that the fields take; what follows is not read.
constexpr Count beginning() noexcept {
    return {0, kAnyNumber, Rest::unread};
}

template <typename R, typename... Members>
struct Record : Fields<Members...> {
    using type = R;
    Count count;
    OnFailure on_failure;

    /// The same record, where a failed decoder leaves the caller's in another state.
    [[nodiscard]] constexpr Record but(OnFailure other) const noexcept { return {*this, count, other}; }

    [[nodiscard]] bool counts(const Element &element) const noexcept {
        if (count.least == 0 && count.most == kAnyNumber) return true;
        const u32 children = count_children(element.contents);
        return children >= count.least && children <= count.most;
    }
    /// Fills the record member by member; members are freed as others take their place.
    [[nodiscard]] u32 read(const Element &element, R &record) const noexcept {
        Cursor children(element);
        if (const u32 status = this->read_all(children, record); status != 0) return status;
        if (!ends_well(children)) return kFieldFailed;
        const auto receive = [&](const auto &each) {
            if constexpr (requires { each.receive(element, record); }) return each.receive(element, record);
            return true;
        };
        const bool received =
            std::apply([&](const auto &...each) { return (receive(each) && ...); }, this->fields);
        return received ? 0 : kFieldFailed;
    }
    void write(Encoder &out, const R &record, u8 tag = kSequence) const noexcept {
        const auto sequence = out.nest(tag);
        this->write_all(out, record);
    }

  private:
    [[nodiscard]] bool ends_well(Cursor children) const noexcept {
        Element other;
        while (count.rest == Rest::ignored && children.next(other)) {
        }
        return count.rest == Rest::unread || children.at_end();
    }
};

template <typename R, typename... Members>
constexpr Record<R, Members...> record(Count count, Members... members) noexcept {
    return {{{members...}}, count, OnFailure::as_filled};
}

// ---- The operations of a description ----

template <typename Description, typename R>
void clean_record(const Description &description, R *record) noexcept {
    if (record != nullptr) description.clear(*record);
}

template <typename Description, typename R>
void free_record(const Description &description, R *record) noexcept {
    clean_record(description, record);
    tlx_free(record);
}

template <typename Description, typename R>
R *dup_record(const Description &description, const R *record) noexcept {
    if (record == nullptr) return nullptr;
    R *copy = TLX_NEW(R);
    if (copy == nullptr || description.copy(*copy, *record)) return copy;
    free_record(description, copy);
    return nullptr;
}

/// Reads into *out, or into a new record. 0, kFieldFailed, kWrongCount, or a status that a member passes up.
template <typename Description, typename R>
u32 read_record(const Description &description, const Element &element, R **out) noexcept {
    const OnFailure on_failure = description.on_failure;
    if (on_failure == OnFailure::emptied || on_failure == OnFailure::freed) clean_record(description, *out);
    R *made = nullptr;
    u32 status = description.counts(element) ? 0 : kWrongCount;
    if (status == 0 && *out == nullptr) {
        made = TLX_NEW(R);
        if (made == nullptr) return kFieldFailed;
    }
    if (status == 0 && on_failure == OnFailure::unchanged && made == nullptr) {
        R fresh{};
        status = description.read(element, fresh);
        if (status == 0) std::swap(**out, fresh);
        description.clear(fresh);
        return status;
    }
    if (status == 0) status = description.read(element, made != nullptr ? *made : **out);
    if (status == 0) {
        if (made != nullptr) *out = made;
        return 0;
    }
    if (made != nullptr) {
        free_record(description, made);
    } else if (on_failure == OnFailure::emptied) {
        clean_record(description, *out);
    } else if (on_failure == OnFailure::freed) {
        free_record(description, *out);
        *out = nullptr;
    }
    return status;
}

/// The same with the record's statuses.
template <typename Description, typename R>
u32 decode_record(const Description &description, const Element &element, R **out,
                  const Statuses &statuses) noexcept {
    const u32 status = read_record(description, element, out);
    if (status == kFieldFailed) return statuses.not_converted;
    return status == kWrongCount ? statuses.wrong_count : status;
}

/// Seq_to_<TYPE>: the checks of its arguments, then the decoder over a view of the node.
template <typename T>
u32 decode_node(const ASN1_UNIT *node, T **out, const Statuses &statuses) noexcept {
    if (node == nullptr || out == nullptr) return statuses.missing_argument;
    Element element;
    if (!view_container(node, element)) return statuses.not_converted;
    return Codec<T>::decode(element, out);
}

/// Gives the finished encoding to *out. 0, a status that a member passed up, or the record's own.
inline u32 hand_over(Encoder &encoder, ASN1_UNIT **out, const Statuses &statuses) noexcept {
    if (hand_over(encoder, out)) return 0;
    return encoder.blamed() != 0 ? encoder.blamed() : statuses.not_converted;
}

/// <TYPE>_to_Seq: the checks of its arguments, then the encoding as a node.
template <typename T>
u32 encode_node(const T *object, ASN1_UNIT **out, const Statuses &statuses) noexcept {
    if (object == nullptr || out == nullptr) return statuses.missing_argument;
    Encoder encoder;
    Codec<T>::encode(encoder, object);
    return hand_over(encoder, out, statuses);
}

/// Seq_to_<LIST>.
template <typename List>
u32 decode_list_node(const ASN1_UNIT *node, STACK **out, const Statuses &statuses) noexcept {
    if (node == nullptr || out == nullptr) return statuses.missing_argument;
    Element element;
    if (!view_container(node, element)) return statuses.not_converted;
    return decode_list<List>(element, out, statuses);
}

/// <LIST>_to_Seq.
template <typename List>
u32 encode_list_node(const STACK *list, ASN1_UNIT **out, const Statuses &statuses) noexcept {
    if (list == nullptr || out == nullptr) return statuses.missing_argument;
    if (get_STACK_count(list) < List::least) return statuses.wrong_count;
    Encoder encoder;
    List::encode(encoder, list, List::tag);
    return hand_over(encoder, out, statuses);
}

/// Seq_to_<TYPE> of a type that is one string.
template <typename Kind>
u32 decode_string_node(const ASN1_UNIT *node, ASN1_STRING **out, const Statuses &statuses) noexcept {
    if (node == nullptr || out == nullptr) return statuses.missing_argument;
    Element element;
    ASN1_STRING *value = nullptr;
    if (!view_node(node, element) || element.tag != Kind::tag || Kind::decode(element, &value) != 0) {
        return statuses.not_converted;
    }
    deliver(Owned<ASN1_STRING>(value), out);
    return 0;
}

/// <TYPE>_to_Seq of it.
template <typename Kind>
u32 encode_string_node(const ASN1_STRING *value, ASN1_UNIT **out, const Statuses &statuses) noexcept {
    if (value == nullptr || out == nullptr) return statuses.missing_argument;
    Encoder encoder;
    Kind::encode(encoder, value, Kind::tag);
    return hand_over(encoder, out) ? 0 : statuses.not_converted;
}

/// add_<LIST>_child: inserts a copy.
template <typename Kind>
u32 add_list_child(STACK *list, const typename Kind::type *value, i32 index) noexcept {
    if (list == nullptr || value == nullptr) return 1;
    auto *copy = Kind::dup(value);
    if (copy == nullptr) return 1;
    if (insert_STACK_value(list, copy, index) == 0) return 0;
    Kind::free(copy);
    return 1;
}

}  // namespace tlx

#include "der/define.hpp"
