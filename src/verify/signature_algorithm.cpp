// The identifiers of signature algorithms, and the parameters of RSASSA-PSS.
#include "keyinfo/digest_identifier.hpp"
#include "verify/oid.hpp"
#include "verify/public_key.hpp"

namespace tlx {
namespace {

/// What an algorithm may have for parameters.
enum class Parameters : u8 {
    none,          ///< RFC 5758, section 3; RFC 8410, section 3
    null_or_none,  ///< RFC 4055, section 5 asks for NULL and for accepting none
    pss,
    any,  ///< KCDSA certificates repeat those of the key, have NULL or none
};

struct KnownAlgorithm {
    std::string_view oid;
    KeyKind kind;
    u32 digest_id;  ///< for EdDSA the curve
    Parameters parameters;
};

constexpr KnownAlgorithm kAlgorithms[] = {
    // 1.2.840.113549.1.1: RSA with SHA-2, SHA-1, and PSS (RFC 8017, appendix A.2)
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0B", KeyKind::rsa, TLX_DIGEST_SHA256, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0C", KeyKind::rsa, TLX_DIGEST_SHA384, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0D", KeyKind::rsa, TLX_DIGEST_SHA512, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0E", KeyKind::rsa, TLX_DIGEST_SHA224, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0F", KeyKind::rsa, TLX_DIGEST_SHA512_224, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x10", KeyKind::rsa, TLX_DIGEST_SHA512_256, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x05", KeyKind::rsa, TLX_DIGEST_SHA1, Parameters::null_or_none},
    {"\x2A\x86\x48\x86\xF7\x0D\x01\x01\x0A", KeyKind::rsa, 0, Parameters::pss},
    // 1.2.840.10045.4: ECDSA with SHA-2 and SHA-1 (RFC 5758, section 3.2)
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x02", KeyKind::ecdsa, TLX_DIGEST_SHA256, Parameters::none},
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x03", KeyKind::ecdsa, TLX_DIGEST_SHA384, Parameters::none},
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x04", KeyKind::ecdsa, TLX_DIGEST_SHA512, Parameters::none},
    {"\x2A\x86\x48\xCE\x3D\x04\x03\x01", KeyKind::ecdsa, TLX_DIGEST_SHA224, Parameters::none},
    {"\x2A\x86\x48\xCE\x3D\x04\x01", KeyKind::ecdsa, TLX_DIGEST_SHA1, Parameters::none},
    // 1.3.101: Ed25519 and Ed448 (RFC 8410, section 3)
    {"\x2B\x65\x70", KeyKind::eddsa, TLX_CURVE_ED25519, Parameters::none},
    {"\x2B\x65\x71", KeyKind::eddsa, TLX_CURVE_ED448, Parameters::none},
    // 1.2.410.200004.1: KCDSA with HAS-160 and SHA-1 (TTAS.KO-12.0001)
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x16", KeyKind::kcdsa, TLX_DIGEST_HAS160, Parameters::any},
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x17", KeyKind::kcdsa, TLX_DIGEST_SHA1, Parameters::any},
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x15", KeyKind::kcdsa, TLX_DIGEST_HAS160, Parameters::any},
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x08", KeyKind::kcdsa, TLX_DIGEST_HAS160, Parameters::any},
    {"\x2A\x83\x1A\x8C\x9A\x44\x01\x09", KeyKind::kcdsa, TLX_DIGEST_SHA1, Parameters::any},
    // 2.16.840.1.101.3.4.3: DSA with SHA-2, and SHA-3 with ECDSA and RSA (RFC 8692 and NIST's register)
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x01", KeyKind::dsa, TLX_DIGEST_SHA224, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x02", KeyKind::dsa, TLX_DIGEST_SHA256, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x03", KeyKind::dsa, TLX_DIGEST_SHA384, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x04", KeyKind::dsa, TLX_DIGEST_SHA512, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x09", KeyKind::ecdsa, TLX_DIGEST_SHA3_224, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0A", KeyKind::ecdsa, TLX_DIGEST_SHA3_256, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0B", KeyKind::ecdsa, TLX_DIGEST_SHA3_384, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0C", KeyKind::ecdsa, TLX_DIGEST_SHA3_512, Parameters::none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0D", KeyKind::rsa, TLX_DIGEST_SHA3_224, Parameters::null_or_none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0E", KeyKind::rsa, TLX_DIGEST_SHA3_256, Parameters::null_or_none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x0F", KeyKind::rsa, TLX_DIGEST_SHA3_384, Parameters::null_or_none},
    {"\x60\x86\x48\x01\x65\x03\x04\x03\x10", KeyKind::rsa, TLX_DIGEST_SHA3_512, Parameters::null_or_none},
    // 1.2.840.10040.4.3: DSA with SHA-1 (RFC 3279, section 2.2.2)
    {"\x2A\x86\x48\xCE\x38\x04\x03", KeyKind::dsa, TLX_DIGEST_SHA1, Parameters::none},
};

bool read_digest(StrictCursor &in, u32 &digest_id) noexcept {
    AlgorithmView view;
    return read_algorithm(in, view) && tlx::read_digest(view, digest_id);
}

/// 1.2.840.113549.1.1.8
constexpr std::string_view kMgf1 = "\x2A\x86\x48\x86\xF7\x0D\x01\x01\x08";

/// MGF1 with its digest.
bool read_mask(StrictCursor &in, u32 &digest_id) noexcept {
    AlgorithmView view;
    if (!read_algorithm(in, view) || !is_oid_of(view.oid, kMgf1)) {
        return false;
    }
    StrictCursor parameters(view.parameters);
    return read_digest(parameters, digest_id) && parameters.at_end();
}

/// Reads the member [number], if it is there, with a function of its contents.
template <typename Read>
bool read_member(StrictCursor &in, u8 number, Read read) noexcept {
    StrictCursor member;
    if (!in.is_next(id::context_constructed(number))) return true;
    return in.enter(id::context_constructed(number), member) && read(member) && member.at_end();
}

bool has_right_parameters(const AlgorithmView &view, Parameters parameters,
                          SignatureAlgorithm &algorithm) noexcept {
    switch (parameters) {
        case Parameters::none:
            return !view.has_parameters;
        case Parameters::null_or_none:
            return !view.has_parameters || has_null_parameters(view);
        case Parameters::pss:
            return read_pss_parameters(view.parameters, algorithm);
        default:
            return true;
    }
}

void write_oid(Encoder &out, std::string_view oid) noexcept {
    out.primitive(id::kOid, {reinterpret_cast<const u8 *>(oid.data()), oid.size()});
}

// RFC 4055, section 3.1: what is the default is left out.
void write_pss_parameters(Encoder &out, const SignatureAlgorithm &algorithm) noexcept {
    const auto parameters = out.sequence();
    if (algorithm.digest_id != TLX_DIGEST_SHA1) {
        const auto member = out.nest(context(0));
        write_digest(out, algorithm.digest_id);
    }
    if (algorithm.mgf_digest_id != TLX_DIGEST_SHA1) {
        const auto member = out.nest(context(1));
        const auto function = out.sequence();
        write_oid(out, kMgf1);
        write_digest(out, algorithm.mgf_digest_id);
    }
    if (algorithm.salt_length != TLX_RSA_PSS_DEFAULT_SALT_LENGTH) {
        const auto member = out.nest(context(2));
        out.small_integer(static_cast<u8>(algorithm.salt_length));
    }
}

}  // namespace

void write_digest(Encoder &out, u32 digest_id) noexcept {
    for (const DigestIdentifier &known : digest_identifiers()) {
        if (known.digest_id != digest_id || !known.is_current) continue;
        const auto algorithm = out.sequence();
        write_oid(out, known.oid);
        if (digest_id >> 16 != TLX_DIGEST_SHA3_256 >> 16) out.null();
        return;
    }
    out.fail();
}

void write_signature_algorithm(Encoder &out, const SignatureAlgorithm &algorithm) noexcept {
    const u32 wanted = algorithm.kind == KeyKind::eddsa ? algorithm.curve : algorithm.digest_id;
    for (const KnownAlgorithm &known : kAlgorithms) {
        const bool is_pss = known.parameters == Parameters::pss;
        if (known.kind != algorithm.kind || is_pss != algorithm.is_pss) continue;
        if (!is_pss && known.digest_id != wanted) continue;
        const auto sequence = out.sequence();
        write_oid(out, known.oid);
        if (known.parameters == Parameters::null_or_none) out.null();
        if (is_pss) write_pss_parameters(out, algorithm);
        return;
    }
    out.fail();
}

bool read_digest(const AlgorithmView &view, u32 &digest_id) noexcept {
    if (view.has_parameters && !has_null_parameters(view)) return false;
    for (const DigestIdentifier &known : digest_identifiers()) {
        if (!known.is_current || !is_oid_of(view.oid, known.oid)) continue;
        digest_id = known.digest_id;
        return true;
    }
    return false;
}

// RSASSA-PSS-params ::= SEQUENCE {
//   hashAlgorithm [0] HashAlgorithm DEFAULT sha1, maskGenAlgorithm [1] MaskGenAlgorithm DEFAULT mgf1SHA1,
//   saltLength [2] INTEGER DEFAULT 20, trailerField [3] TrailerField DEFAULT trailerFieldBC }
bool read_pss_parameters(Bytes element, SignatureAlgorithm &algorithm) noexcept {
    algorithm.is_pss = true;
    algorithm.digest_id = TLX_DIGEST_SHA1;
    algorithm.mgf_digest_id = TLX_DIGEST_SHA1;
    algorithm.salt_length = TLX_RSA_PSS_DEFAULT_SALT_LENGTH;
    u32 trailer = 1;
    const auto number_into = [](u32 &value) noexcept {
        return [&value](StrictCursor &in) noexcept {
            Bytes contents;
            return in.next(id::kInteger, contents) && read_count(contents, value);
        };
    };
    StrictCursor in;
    return open_whole(element, id::kSequence, in) &&
           read_member(
               in, 0,
               [&](StrictCursor &member) noexcept { return read_digest(member, algorithm.digest_id); }) &&
           read_member(
               in, 1,
               [&](StrictCursor &member) noexcept { return read_mask(member, algorithm.mgf_digest_id); }) &&
           read_member(in, 2, number_into(algorithm.salt_length)) &&
           read_member(in, 3, number_into(trailer)) && in.at_end() && trailer == 1 &&
           algorithm.salt_length <= 0xFFFF;
}

Rule read_signature_algorithm(const AlgorithmView &view, SignatureAlgorithm &algorithm) noexcept {
    for (const KnownAlgorithm &known : kAlgorithms) {
        if (!is_oid_of(view.oid, known.oid)) continue;
        algorithm = {};
        algorithm.kind = known.kind;
        (known.kind == KeyKind::eddsa ? algorithm.curve : algorithm.digest_id) = known.digest_id;
        return has_right_parameters(view, known.parameters, algorithm) ? Rule::kNone : Rule::kBadParameters;
    }
    return Rule::kUnknownAlgorithm;
}

}  // namespace tlx
