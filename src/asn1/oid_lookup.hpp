// The registry, for our own code: rows by name and from dotted texts.
#pragma once

#include <tlxpki/object_names.h>

#include <string_view>

#include "der/types.hpp"

namespace tlx::oid {

#define OID_NAME(constant, index, short_name) inline constexpr u32 constant = index;
#include "asn1/oid_names.inc"
#undef OID_NAME

}  // namespace tlx::oid

namespace tlx {

/// The first row with this dotted text, 0 when there is none.
u32 oid_index(std::string_view dotted) noexcept;
/// The first row with this short name, 0 when there is none. Case counts.
u32 oid_index_of_short_name(std::string_view name) noexcept;
/// The first row with this long name, 0 when there is none. Case counts.
u32 oid_index_of_long_name(std::string_view name) noexcept;

}  // namespace tlx
