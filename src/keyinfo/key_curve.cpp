#include "keyinfo/key_curve.hpp"

#include <tlxpki/x509_pubkey.h>

#include <algorithm>

namespace tlx {
namespace {

constexpr KeyCurve kCurves[] = {
    {"\x2A\x86\x48\xCE\x3D\x03\x01\x07", TLX_KEY_ECDSA, TLX_CURVE_P256, 32},  // 1.2.840.10045.3.1.7
    {{"\x2B\x81\x04\x00\x22", 5}, TLX_KEY_ECDSA, TLX_CURVE_P384, 48},         // 1.3.132.0.34
    {{"\x2B\x81\x04\x00\x23", 5}, TLX_KEY_ECDSA, TLX_CURVE_P521, 66},         // 1.3.132.0.35
    {"\x2B\x65\x70", TLX_KEY_EDDSA, TLX_CURVE_ED25519, 32},                   // 1.3.101.112
    {"\x2B\x65\x71", TLX_KEY_EDDSA, TLX_CURVE_ED448, 57},                     // 1.3.101.113
    {"\x2B\x65\x6E", TLX_KEY_XDH, TLX_CURVE_X25519, 32},                      // 1.3.101.110
    {"\x2B\x65\x6F", TLX_KEY_XDH, TLX_CURVE_X448, 56},                        // 1.3.101.111
};

const KeyCurve *find_oid(Bytes oid, bool is_named) noexcept {
    for (const KeyCurve &curve : kCurves) {
        if ((curve.kind == TLX_KEY_ECDSA) == is_named && std::ranges::equal(oid, octets_of_oid(curve.oid))) {
            return &curve;
        }
    }
    return nullptr;
}

}  // namespace

const KeyCurve *find_named_curve(Bytes oid) noexcept {
    return find_oid(oid, true);
}

const KeyCurve *find_algorithm_curve(Bytes oid) noexcept {
    return find_oid(oid, false);
}

const KeyCurve *find_key_curve(u32 kind, u32 id) noexcept {
    for (const KeyCurve &curve : kCurves) {
        if (curve.kind == kind && curve.id == id) return &curve;
    }
    return nullptr;
}

}  // namespace tlx
