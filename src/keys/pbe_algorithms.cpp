// The identifiers of password-based encryption.
#include <tlxcrypto/digest.h>

#include <algorithm>

#include "keys/pbe.hpp"

using namespace tlx;

namespace {

constexpr u32 kDes = TLX_CIPHER_DES | kCbc;
constexpr u32 kRc2With64 = TLX_CIPHER_RC2_64 | kCbc;

// RFC 8018, appendix A; RFC 7292, appendix C; KISA's and GPKI's own. MD2 of two schemes of PBES1 is not
// available.
constexpr PbeAlgorithm kAlgorithms[] = {
    {"pbes2", "1.2.840.113549.1.5.13", PbeFamily::pbes2, 0, 0},
    {"seed", "1.2.410.200004.1.15", PbeFamily::kisa, TLX_CIPHER_SEED, TLX_DIGEST_SHA1},
    {"aria", "1.2.410.100001.1.24", PbeFamily::kisa, TLX_CIPHER_ARIA, TLX_DIGEST_SHA1},
    {"seed-cbc", "1.2.410.200004.1.4", PbeFamily::seed_cbc, TLX_CIPHER_SEED, TLX_DIGEST_SHA1},
    {"gpki", "1.2.410.200004.1.4.2", PbeFamily::gpki, TLX_CIPHER_SEED | kCbc, TLX_DIGEST_SHA1},
    {"pbe-md5-des", "1.2.840.113549.1.5.3", PbeFamily::pbes1, kDes, TLX_DIGEST_MD5},
    {"pbe-md5-rc2-64", "1.2.840.113549.1.5.6", PbeFamily::pbes1, kRc2With64, TLX_DIGEST_MD5},
    {"pbe-sha1-des", "1.2.840.113549.1.5.10", PbeFamily::pbes1, kDes, TLX_DIGEST_SHA1},
    {"pbe-sha1-rc2-64", "1.2.840.113549.1.5.11", PbeFamily::pbes1, kRc2With64, TLX_DIGEST_SHA1},
    {"pbe-sha1-rc4-128", "1.2.840.113549.1.12.1.1", PbeFamily::pkcs12_rc4, 16, TLX_DIGEST_SHA1},
    {"pbe-sha1-rc4-40", "1.2.840.113549.1.12.1.2", PbeFamily::pkcs12_rc4, 5, TLX_DIGEST_SHA1},
    {"pbe-sha1-3des", "1.2.840.113549.1.12.1.3", PbeFamily::pkcs12, TLX_CIPHER_DES_EDE3 | kCbc,
     TLX_DIGEST_SHA1},
    {"pbe-sha1-2des", "1.2.840.113549.1.12.1.4", PbeFamily::pkcs12, TLX_CIPHER_DES_EDE_PBE | kCbc,
     TLX_DIGEST_SHA1},
    {"pbe-sha1-rc2-128", "1.2.840.113549.1.12.1.5", PbeFamily::pkcs12, TLX_CIPHER_RC2 | kCbc,
     TLX_DIGEST_SHA1},
    {"pbe-sha1-rc2-40", "1.2.840.113549.1.12.1.6", PbeFamily::pkcs12, TLX_CIPHER_RC2_40 | kCbc,
     TLX_DIGEST_SHA1},
};

// RFC 8018, appendix B.1; NIST's identifiers of HMAC with SHA-3; those that older programs wrote.
constexpr Prf kPrfs[] = {
    {"sha1", "1.2.840.113549.2.7", TLX_DIGEST_SHA1},
    {"sha224", "1.2.840.113549.2.8", TLX_DIGEST_SHA224},
    {"sha256", "1.2.840.113549.2.9", TLX_DIGEST_SHA256},
    {"sha384", "1.2.840.113549.2.10", TLX_DIGEST_SHA384},
    {"sha512", "1.2.840.113549.2.11", TLX_DIGEST_SHA512},
    {"sha512-224", "1.2.840.113549.2.12", TLX_DIGEST_SHA512_224},
    {"sha512-256", "1.2.840.113549.2.13", TLX_DIGEST_SHA512_256},
    {"sha3-224", "2.16.840.1.101.3.4.2.13", TLX_DIGEST_SHA3_224},
    {"sha3-256", "2.16.840.1.101.3.4.2.14", TLX_DIGEST_SHA3_256},
    {"sha3-384", "2.16.840.1.101.3.4.2.15", TLX_DIGEST_SHA3_384},
    {"sha3-512", "2.16.840.1.101.3.4.2.16", TLX_DIGEST_SHA3_512},
    {"", "1.2.840.113549.2.6", TLX_DIGEST_MD5},
    {"", "1.3.6.1.5.5.8.1.1", TLX_DIGEST_MD5},
    {"", "1.3.6.1.5.5.8.1.2", TLX_DIGEST_SHA1},
};

}  // namespace

std::span<const PbeAlgorithm> tlx::pbe_algorithms() noexcept {
    return kAlgorithms;
}

const PbeAlgorithm *tlx::find_pbe_algorithm(std::string_view dotted) noexcept {
    const auto *const found = std::ranges::find(kAlgorithms, dotted, &PbeAlgorithm::dotted);
    return found == std::end(kAlgorithms) ? nullptr : found;
}

std::span<const Prf> tlx::prfs() noexcept {
    return kPrfs;
}

const Prf *tlx::find_prf(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    if (algorithm == nullptr) return kPrfs;
    const auto *const found = std::ranges::find(kPrfs, text_of(algorithm->algorithm), &Prf::dotted);
    return found == std::end(kPrfs) ? nullptr : found;
}
