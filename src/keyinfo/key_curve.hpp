// The curves of keys that are computed with, by their identifiers.
#pragma once

#include <string_view>

#include "der/types.hpp"

namespace tlx {

struct KeyCurve {
    std::string_view oid;  ///< the contents octets: of the curve for TLX_KEY_ECDSA, else of the algorithm
    u32 kind;              ///< TLX_KEY_ECDSA, TLX_KEY_EDDSA or TLX_KEY_XDH
    u32 id;                ///< TLX_CURVE_
    u32 length;            ///< octets of a private key
};

/// id-ecPublicKey, 1.2.840.10045.2.1, as contents octets.
inline constexpr std::string_view kEcPublicKeyOid = "\x2A\x86\x48\xCE\x3D\x02\x01";

[[nodiscard]] inline Bytes octets_of_oid(std::string_view oid) noexcept {
    return {reinterpret_cast<const u8 *>(oid.data()), oid.size()};
}

/// The curve that parameters of id-ecPublicKey name; null for an unknown one.
[[nodiscard]] const KeyCurve *find_named_curve(Bytes oid) noexcept;
/// The curve of an algorithm of RFC 8410; null for any other algorithm.
[[nodiscard]] const KeyCurve *find_algorithm_curve(Bytes oid) noexcept;
/// The curve of a key; null for an unknown one.
[[nodiscard]] const KeyCurve *find_key_curve(u32 kind, u32 id) noexcept;

}  // namespace tlx
