// Which certificates a revocation list is for, and which lists belong together.
#include <tlxpki/objects.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509v3.h>

#include <algorithm>

#include "x509/crl_extension.hpp"
#include "x509/crl_records.hpp"
#include "x509/extension_records.hpp"

using namespace tlx;

namespace {

using OwnedPoints = std::unique_ptr<CRL_DIST_POINTS, FreeWith<free_CRL_DIST_POINTS>>;

/// Reads an extension, if it is there. False for one that cannot be read and when memory runs out.
template <typename T, typename Free>
bool read_record(const X509_EXTENSIONS *extensions, i32 oid_index, u32 (*decoder)(const ASN1_UNIT *, T **),
                 std::unique_ptr<T, Free> &record) noexcept {
    constexpr u32 kNotThere = 0x473F0047;
    void *made = nullptr;
    const u32 status = decode_X509_EXTENSION_by_OID_index(extensions, oid_index, TLX_DECODER(decoder), &made);
    record.reset(static_cast<T *>(made));
    return status == 0 || status == kNotThere;
}

/// By hand because a SEQUENCE without cA, which is no CA's, is no BASIC_CONSTRAINTS.
bool read_is_ca(const X509_EXTENSIONS *extensions, bool &is_ca) noexcept {
    Element constraints;
    Element flag;
    if (!read_extension(extensions, TLX_OID_BASIC_CONSTRAINTS, kSequence, constraints)) return false;
    is_ca = Cursor(constraints).next(flag) && flag.tag == TLX_TAG_BOOLEAN && flag.contents.size() == 1 &&
            flag.contents[0] != 0;
    return true;
}

template <typename Kind>
bool same_encoding(const typename Kind::type *a, const typename Kind::type *b) noexcept {
    Encoder first;
    Encoder second;
    Kind::encode(first, a, Kind::tag);
    Kind::encode(second, b, Kind::tag);
    return first.ok() && second.ok() && std::ranges::equal(first.bytes(), second.bytes());
}

bool share_a_name(const GENERAL_NAMES *a, const GENERAL_NAMES *b) noexcept {
    for (u32 i = 0; i < get_STACK_count(a); ++i) {
        for (u32 k = 0; k < get_STACK_count(b); ++k) {
            const auto *first = static_cast<const GENERAL_NAME *>(get_STACK_value(a, i));
            const auto *second = static_cast<const GENERAL_NAME *>(get_STACK_value(b, k));
            if (same_encoding<Choice<GENERAL_NAME>>(first, second)) return true;
        }
    }
    return false;
}

/// Whether a distribution point of a certificate is that of a list (RFC 5280, section 6.3.3, b) 2) i)).
bool is_point(const DIST_POINT &point, const DIST_POINT_NAME &list) noexcept {
    const bool list_is_full = list.choice == TLX_DIST_POINT_FULL_NAME;
    if (point.distributionPoint == nullptr) {
        return list_is_full && share_a_name(point.cRLIssuer, list.value.fullName);
    }
    const DIST_POINT_NAME &own = *point.distributionPoint;
    if (own.choice != list.choice) return false;
    return list_is_full ? share_a_name(own.value.fullName, list.value.fullName)
                        : same_encoding<Choice<DIST_POINT_NAME>>(&own, &list);
}

/// Whether a distribution point names the issuer of an indirect list.
bool names_crl_issuer(const DIST_POINT &point, const X509_NAME *issuer) noexcept {
    for (i32 at = -1;;) {
        at = get_GENERAL_NAMES_index_by_choice(point.cRLIssuer, TLX_GENERAL_NAME_DIRECTORY_NAME, at);
        if (at < 0) return false;
        const GENERAL_NAME *name = get_GENERAL_NAMES_child(point.cRLIssuer, at);
        if (cmp_X509_NAME(name->value.directoryName, issuer) == 0) return true;
    }
}

template <typename Fits>
bool has_point(const CRL_DIST_POINTS *points, Fits fits) noexcept {
    for (u32 i = 0; i < get_STACK_count(points); ++i) {
        if (fits(*static_cast<const DIST_POINT *>(get_STACK_value(points, i)))) return true;
    }
    return false;
}

/// Whether the restrictions of a list leave out a certificate.
bool leaves_out(const issuing_DIST_POINT &list, bool is_ca, const CRL_DIST_POINTS *points) noexcept {
    if (list.onlyContainsAttributeCerts != 0 || list.onlySomeReasons != nullptr) return true;
    if ((is_ca ? list.onlyContainsUserCerts : list.onlyContainsCACerts) != 0) return true;
    return list.distributionPoint != nullptr && !has_point(points, [&](const DIST_POINT &point) {
               return is_point(point, *list.distributionPoint);
           });
}

bool same_extension(const X509_CRL &a, const X509_CRL &b, i32 oid_index) noexcept {
    return std::ranges::equal(extension_octets(a.extensions, oid_index),
                              extension_octets(b.extensions, oid_index));
}

Owned<BIGINT> number_of(const X509_CRL &crl, i32 oid_index) noexcept {
    BIGINT *number = nullptr;
    static_cast<void>(decode_X509_CRL_number(&crl, oid_index, &number));
    return Owned<BIGINT>(number);
}

}  // namespace

uint32_t check_X509_CRL_scope(const X509_CRL *crl, const X509_CERT *cert) {
    if (crl == nullptr || cert == nullptr) return 0x480E0049;
    const X509_EXTENSIONS *extensions = get_X509_extensions(cert);
    Owned<issuing_DIST_POINT> restriction;
    bool is_ca = false;
    OwnedPoints points;
    if (!read_record(crl->extensions, TLX_OID_ISSUING_DISTRIBUTION_POINT, Seq_to_issuing_DIST_POINT,
                     restriction) ||
        !read_is_ca(extensions, is_ca) ||
        !read_record(extensions, TLX_OID_CRL_DISTRIBUTION_POINTS, Seq_to_CRL_DIST_POINTS, points)) {
        return 0x480E0104;
    }
    const bool is_own = cmp_X509_NAME(get_X509_issuer(cert), crl->issuer) == 0;
    const bool is_indirect = restriction && restriction->indirectCRL != 0;
    const auto names_it = [&](const DIST_POINT &point) { return names_crl_issuer(point, crl->issuer); };
    if (!is_own && !(is_indirect && has_point(points.get(), names_it))) return 0x480E0106;
    const bool is_restricted = restriction && leaves_out(*restriction, is_ca, points.get());
    return is_restricted || is_delta(*crl) ? 0x480E0048 : 0;
}

uint32_t check_X509_CRL_delta(const X509_CRL *crl, const X509_CRL *delta) {
    if (crl == nullptr || delta == nullptr) return 0x480D0049;
    if (is_delta(*crl) || !is_delta(*delta)) return 0x480D0048;
    if (cmp_X509_NAME(crl->issuer, delta->issuer) != 0 ||
        !same_extension(*crl, *delta, TLX_OID_AUTHORITY_KEY_IDENTIFIER)) {
        return 0x480D0106;
    }
    if (!same_extension(*crl, *delta, TLX_OID_ISSUING_DISTRIBUTION_POINT)) return 0x480D005E;
    const Owned<BIGINT> number = number_of(*crl, TLX_OID_CRL_NUMBER);
    const Owned<BIGINT> delta_number = number_of(*delta, TLX_OID_CRL_NUMBER);
    const Owned<BIGINT> base = number_of(*delta, TLX_OID_DELTA_CRL_INDICATOR);
    if (!number || !delta_number || !base) return 0x480D0104;
    const bool fits =
        cmp_BIGINT(base.get(), number.get()) <= 0 && cmp_BIGINT(number.get(), delta_number.get()) <= 0;
    return fits ? 0 : 0x480D001C;
}
