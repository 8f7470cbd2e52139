// Fields made of fields: an inner SEQUENCE, members in any order, a member that an identifier selects.
#pragma once

#include <string_view>
#include <tuple>

#include "der/fields.hpp"

namespace tlx {

/// What fields have in common with one field.
template <typename... Members>
struct Fields {
    std::tuple<Members...> fields;

    template <typename R>
    void clear(R &record) const noexcept {
        std::apply([&](const auto &...each) { (each.clear(record), ...); }, fields);
    }
    template <typename R>
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        return std::apply([&](const auto &...each) { return (each.copy(to, from) && ...); }, fields);
    }
    template <typename R>
    [[nodiscard]] bool absent(const R &record) const noexcept {
        return std::apply([&](const auto &...each) { return (each.absent(record) && ...); }, fields);
    }
    template <typename R>
    void write_all(Encoder &out, const R &record) const noexcept {
        std::apply([&](const auto &...each) { (each.write(out, record), ...); }, fields);
    }
    /// Reads one after the other; the first status that is not 0.
    template <typename R>
    [[nodiscard]] u32 read_all(Cursor &children, R &record) const noexcept {
        u32 status = 0;
        const auto next = [&](const auto &each) { return (status = each.read(children, record)) == 0; };
        std::apply([&](const auto &...each) { return (next(each) && ...); }, fields);
        return status;
    }
};

/// An inner SEQUENCE (or SET) whose members lie in the record around it. Elements after the last one are
/// ignored or refused.
template <typename... Members>
struct Group : Fields<Members...> {
    u8 tag;
    Presence presence;
    bool others_allowed;

    [[nodiscard]] constexpr Group exactly() const noexcept { return {*this, tag, presence, false}; }
    /// Absent only at the end, and not written when all of its members are absent.
    [[nodiscard]] constexpr Group trailing() const noexcept {
        return {*this, tag, Presence::trailing, others_allowed};
    }

    template <typename R>
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        this->clear(record);
        if (presence == Presence::trailing && children.at_end()) return 0;
        Element inner;
        if (!children.next(tag, inner)) return kFieldFailed;
        Cursor members(inner);
        if (const u32 status = this->read_all(members, record); status != 0) return status;
        return others_allowed || members.at_end() ? 0 : kFieldFailed;
    }
    template <typename R>
    void write(Encoder &out, const R &record) const noexcept {
        if (presence == Presence::trailing && this->absent(record)) return;
        const auto inner = out.nest(tag);
        this->write_all(out, record);
    }
};
template <typename... Members>
constexpr Group<Members...> group(u8 tag, Members... members) noexcept {
    return {{{members...}}, tag, Presence::mandatory, true};
}

/// Members in any order, up to the last child. Of repeated ones the last counts; a child that is none of them
/// is ignored, unless others() says what it means. Writing keeps the order of the description.
template <bool ByNumber, typename... Members>
struct AnyOrder : Fields<Members...> {
    u32 status_of_others = 0;

    /// The same members, where a child that is none of them ends the reading with a status.
    [[nodiscard]] constexpr AnyOrder others(u32 status) const noexcept { return {*this, status}; }

    template <typename R>
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        this->clear(record);
        Element child;
        while (!children.at_end()) {
            if (!children.next(child)) return kFieldFailed;
            u32 status = status_of_others;
            const auto take = [&](const auto &each) {
                const bool own = ByNumber ? child.number() == each.number : each.accepts(child);
                if (own) status = each.take(child, record);
                return own;
            };
            std::apply([&](const auto &...each) { return (take(each) || ...); }, this->fields);
            if (status != 0) return status;
        }
        return 0;
    }
    template <typename R>
    void write(Encoder &out, const R &record) const noexcept {
        this->write_all(out, record);
    }
};
/// Each field knows its elements by its tag.
template <typename... Members>
constexpr AnyOrder<false, Members...> by_tag(Members... members) noexcept {
    return {{{members...}}};
}
/// The tag number alone tells, whatever the class.
template <typename... Members>
constexpr AnyOrder<true, Members...> by_number(Members... members) noexcept {
    return {{{members...}}};
}

/// One alternative of a member DEFINED BY an identifier.
template <typename F>
struct When {
    std::string_view dotted;
    F field;
};
template <typename F>
constexpr When<F> when(std::string_view dotted, F field) noexcept {
    return {dotted, field};
}

/// ANY DEFINED BY an identifier of the same record: each alternative has a member of its own, and so has what
/// no alternative names.
template <typename R, typename Otherwise, typename... Alternatives>
struct DefinedBy {
    OBJECT_IDENTIFIER *R::*type;
    Otherwise otherwise;
    std::tuple<Alternatives...> alternatives;

    void clear(R &record) const noexcept {
        std::apply([&](const auto &...each) { (each.field.clear(record), ...); }, alternatives);
        otherwise.clear(record);
    }
    [[nodiscard]] bool copy(R &to, const R &from) const noexcept {
        return otherwise.copy(to, from) &&
               std::apply([&](const auto &...each) { return (each.field.copy(to, from) && ...); },
                          alternatives);
    }
    [[nodiscard]] bool absent(const R &record) const noexcept {
        bool result = false;
        select(record, [&](const auto &field) { result = field.absent(record); });
        return result;
    }
    [[nodiscard]] u32 read(Cursor &children, R &record) const noexcept {
        clear(record);
        u32 status = 0;
        select(record, [&](const auto &field) { status = field.read(children, record); });
        return status;
    }
    void write(Encoder &out, const R &record) const noexcept {
        select(record, [&](const auto &field) { field.write(out, record); });
    }

  private:
    /// Calls `use` with the field that the identifier names.
    template <typename Use>
    void select(const R &record, Use use) const noexcept {
        const std::string_view dotted = text_of(record.*type);
        const auto matches = [&](const auto &each) {
            if (dotted != each.dotted) return false;
            use(each.field);
            return true;
        };
        if (!std::apply([&](const auto &...each) { return (matches(each) || ...); }, alternatives)) {
            use(otherwise);
        }
    }
};
template <typename R, typename Otherwise, typename... F>
constexpr DefinedBy<R, Otherwise, When<F>...> defined_by(OBJECT_IDENTIFIER *R::*type, Otherwise otherwise,
                                                         When<F>... alternatives) noexcept {
    return {type, otherwise, {alternatives...}};
}

}  // namespace tlx
