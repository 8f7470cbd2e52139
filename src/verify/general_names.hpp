// Names of the forms of GeneralName, and whether they lie within a base (RFC 5280, section 4.2.1.10).
#pragma once

#include "verify/strict_cursor.hpp"

namespace tlx {

/// The forms, as GeneralName tags them.
enum class NameForm : u8 { other, rfc822, dns, x400, directory, edi_party, uri, ip, registered };

struct GeneralNameView {
    NameForm form = NameForm::other;
    Bytes value;  ///< of a directoryName the contents of the Name, else the contents of the element
};

/// Takes the next GeneralName. False for what is none, for texts that are not ASCII, and addresses of a wrong
/// length: `address_lengths` are those of IPv4 and IPv6, which are doubled in constraints.
[[nodiscard]] bool next_general_name(StrictCursor &in, std::size_t ipv4_length,
                                     GeneralNameView &name) noexcept;

/// Whether a form is one whose names can be compared.
[[nodiscard]] bool is_comparable(NameForm form) noexcept;

/// What a name is asked for: a wildcard counts as below an excluded base when any of its names is.
enum class Side : u8 { permitted, excluded };

/// Whether a name lies within a base of the same comparable form.
[[nodiscard]] bool is_within(const GeneralNameView &name, Bytes base, Side side) noexcept;

/// The host of a URI with an authority that is a DNS name; empty when there is none.
[[nodiscard]] Bytes host_of_uri(Bytes uri) noexcept;

/// Compares ASCII without regard to case.
[[nodiscard]] bool same_ignoring_case(Bytes a, Bytes b) noexcept;

}  // namespace tlx
