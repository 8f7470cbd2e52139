#include "verify/general_names.hpp"

#include <algorithm>

#include "verify/name_match.hpp"

namespace tlx {
namespace {

u8 lower(u8 octet) noexcept {
    return octet >= 'A' && octet <= 'Z' ? static_cast<u8>(octet + ('a' - 'A')) : octet;
}

bool is_ascii(Bytes text) noexcept {
    return std::all_of(text.begin(), text.end(),
                       [](u8 octet) noexcept { return octet != 0 && octet < 0x80; });
}

bool ends_with(Bytes text, Bytes tail) noexcept {
    return text.size() >= tail.size() && same_ignoring_case(text.last(tail.size()), tail);
}

/// The place of the last such octet; the size when there is none.
std::size_t last_of(Bytes text, u8 octet) noexcept {
    for (std::size_t i = text.size(); i-- > 0;) {
        if (text[i] == octet) return i;
    }
    return text.size();
}
std::size_t first_of(Bytes text, u8 octet) noexcept {
    return static_cast<std::size_t>(std::find(text.begin(), text.end(), octet) - text.begin());
}

Bytes without_last_dot(Bytes host) noexcept {
    return !host.empty() && host.back() == '.' ? host.first(host.size() - 1) : host;
}

bool is_subdomain(Bytes host, Bytes domain) noexcept {
    return host.size() > domain.size() && ends_with(host, domain) &&
           (domain.empty() || domain.front() == '.' || host[host.size() - domain.size() - 1] == '.');
}

// Adding labels to the left gives a name within. A base that begins with a dot has only such names.
bool is_dns_within(Bytes name, Bytes base, Side side) noexcept {
    name = without_last_dot(name);
    base = without_last_dot(base);
    if (base.empty() || is_subdomain(name, base) || same_ignoring_case(name, base)) return true;
    const bool is_wildcard = name.size() > 2 && name[0] == '*' && name[1] == '.';
    // *.example.com has a name within each base one label below example.com.
    return side == Side::excluded && is_wildcard && is_subdomain(base, name.subspan(2)) &&
           first_of(base, '.') + 1 == base.size() - (name.size() - 2);
}

/// A host of a base: equal, or below one that begins with a dot.
bool is_host_within(Bytes host, Bytes base) noexcept {
    if (!base.empty() && base.front() == '.') return is_subdomain(host, base);
    return same_ignoring_case(host, base);
}

// A base is a mailbox, a host or, with a dot in front, a domain.
bool is_mailbox_within(Bytes name, Bytes base) noexcept {
    const std::size_t at = last_of(name, '@');
    if (at == name.size()) return false;
    const Bytes host = name.subspan(at + 1);
    const std::size_t base_at = last_of(base, '@');
    if (base_at == base.size()) return is_host_within(host, base);
    return same(name.first(at), base.first(base_at)) && same_ignoring_case(host, base.subspan(base_at + 1));
}

bool is_address_within(Bytes address, Bytes base) noexcept {
    const std::size_t length = address.size();
    if (base.size() != 2 * length) return false;
    for (std::size_t i = 0; i < length; ++i) {
        if (((address[i] ^ base[i]) & base[length + i]) != 0) return false;
    }
    return true;
}

bool is_right_value(const GeneralNameView &name, std::size_t ipv4_length) noexcept {
    switch (name.form) {
        case NameForm::rfc822:
        case NameForm::dns:
        case NameForm::uri:
            return is_ascii(name.value);
        case NameForm::directory:
            return is_name(name.value);
        case NameForm::ip:
            return name.value.size() == ipv4_length || name.value.size() == 4 * ipv4_length;
        case NameForm::registered:
            return is_oid(name.value);
        default:
            return true;
    }
}

}  // namespace

bool same_ignoring_case(Bytes a, Bytes b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](u8 x, u8 y) noexcept { return lower(x) == lower(y); });
}

// GeneralName ::= CHOICE {
//   otherName [0] IMPLICIT OtherName, rfc822Name [1] IMPLICIT IA5String, dNSName [2] IMPLICIT IA5String,
//   x400Address [3] IMPLICIT ORAddress, directoryName [4] EXPLICIT Name, ediPartyName [5] IMPLICIT
//   EDIPartyName, uniformResourceIdentifier [6] IMPLICIT IA5String, iPAddress [7] IMPLICIT OCTET STRING,
//   registeredID [8] IMPLICIT OBJECT IDENTIFIER }
bool next_general_name(StrictCursor &in, std::size_t ipv4_length, GeneralNameView &name) noexcept {
    Element element;
    if (!in.any(element) || !element.context_specific() || element.number() > 8) return false;
    name = {static_cast<NameForm>(element.number()), element.contents};
    const bool is_constructed = name.form == NameForm::other || name.form == NameForm::x400 ||
                                name.form == NameForm::directory || name.form == NameForm::edi_party;
    if (element.constructed() != is_constructed) return false;
    if (name.form == NameForm::directory) {
        StrictCursor inner(element.contents);
        if (!inner.next(id::kSequence, name.value) || !inner.at_end()) return false;
    }
    return is_right_value(name, ipv4_length);
}

bool is_comparable(NameForm form) noexcept {
    return form == NameForm::rfc822 || form == NameForm::dns || form == NameForm::directory ||
           form == NameForm::uri || form == NameForm::ip;
}

Bytes host_of_uri(Bytes uri) noexcept {
    const std::size_t colon = first_of(uri, ':');
    if (uri.size() - colon < 3 || uri[colon + 1] != '/' || uri[colon + 2] != '/') return {};
    Bytes authority = uri.subspan(colon + 3);
    const auto is_end = [](u8 octet) noexcept { return octet == '/' || octet == '?' || octet == '#'; };
    const auto end = std::find_if(authority.begin(), authority.end(), is_end);
    authority = {authority.begin(), end};
    if (const std::size_t at = last_of(authority, '@'); at != authority.size()) {
        authority = authority.subspan(at + 1);
    }
    const Bytes host = authority.first(first_of(authority, ':'));
    const auto is_address_octet = [](u8 octet) noexcept {
        return octet == '.' || (octet >= '0' && octet <= '9');
    };
    const bool is_address =
        std::all_of(host.begin(), host.end(), is_address_octet) || (!host.empty() && host.front() == '[');
    return is_address ? Bytes() : without_last_dot(host);
}

bool is_within(const GeneralNameView &name, Bytes base, Side side) noexcept {
    switch (name.form) {
        case NameForm::rfc822:
            return is_mailbox_within(name.value, base);
        case NameForm::dns:
            return is_dns_within(name.value, base, side);
        case NameForm::directory:
            return is_name_within(name.value, base);
        case NameForm::uri: {
            const Bytes host = host_of_uri(name.value);
            // What has no host to compare lies within no permitted base, and within each excluded one.
            return host.empty() ? side == Side::excluded : is_host_within(host, base);
        }
        case NameForm::ip:
            return is_address_within(name.value, base);
        default:
            return false;
    }
}

}  // namespace tlx
