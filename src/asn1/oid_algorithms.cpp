// Between identifiers and the numbers of the crypto library.
#include <tlxpki/objects.h>

#include <algorithm>
#include <iterator>

#include "asn1/oid_table.hpp"

namespace tlx::oid {
namespace {

/// The row that represents an identifier which several rows have.
struct Representative {
    u32 id;
    u32 row;
};

constexpr Representative kDigestRows[] = {
    {0x05000100U, 64},   // SHA1
    {0x05000200U, 671},  // RSA-SHA224
    {0x05000300U, 668},  // RSA-SHA256
    {0x05000400U, 669},  // RSA-SHA384
    {0x05000500U, 670},  // RSA-SHA512
    {0x06000100U, 4},    // MD5
    {0x07000100U, 781},  // HAS-160
    {0x08000100U, 95},   // MDC2
    {0x15000100U, 163},  // hmacWithSHA1
};

constexpr Representative kCipherRows[] = {
    {0x01000100U, 418},  // AES-128-ECB
    {0x01000120U, 419},  // AES-128-CBC
    {0x01000140U, 421},  // AES-128-CFB
    {0x01000160U, 420},  // AES-128-OFB
    {0x01000200U, 422},  // AES-192-ECB
    {0x01000220U, 423},  // AES-192-CBC
    {0x01000240U, 425},  // AES-192-CFB
    {0x01000260U, 424},  // AES-192-OFB
    {0x01000300U, 426},  // AES-256-ECB
    {0x01000320U, 427},  // AES-256-CBC
    {0x01000340U, 429},  // AES-256-CFB
    {0x01000360U, 428},  // AES-256-OFB
    {0x02000100U, 643},  // DES-CDMF
    {0x02000120U, 31},   // DES-CBC
    {0x02000140U, 30},   // DES-CFB
    {0x02000160U, 45},   // DES-OFB
    {0x02000200U, 32},   // DES-EDE
    {0x02000240U, 60},   // DES-EDE-CFB
    {0x02000260U, 62},   // DES-EDE-OFB
    {0x02001220U, 147},  // PBE-SHA1-2DES
    {0x02010200U, 33},   // DES-EDE3
    {0x02010220U, 44},   // DES-EDE3-CBC
    {0x02010240U, 61},   // DES-EDE3-CFB
    {0x02010260U, 63},   // DES-EDE3-OFB
    {0x03000120U, 824},  // ARIA-CBC
    {0x03000140U, 826},  // ARIA-CFB
    {0x03000160U, 825},  // ARIA-OFB
    {0x04000100U, 776},  // SEED-ECB
    {0x04000120U, 793},  // GPKIpbeWithSHA1AndSEED-CBC
    {0x04000140U, 779},  // SEED-CFB
    {0x04000160U, 778},  // SEED-OFB
    {0x05000100U, 121},  // RC5-ECB
    {0x05000120U, 120},  // RC5-CBC
    {0x05000140U, 122},  // RC5-CFB
    {0x05000160U, 123},  // RC5-OFB
    {0x06000100U, 92},   // BF-ECB
    {0x06000120U, 91},   // BF-CBC
    {0x06000140U, 93},   // BF-CFB
    {0x06000160U, 94},   // BF-OFB
    {0x07000120U, 148},  // PBE-SHA1-RC2-128
    {0x07000220U, 149},  // PBE-SHA1-RC2-40
    {0x20000000U, 19},   // RSA
    {0x20000001U, 7},    // RSA-MD2
    {0x20000002U, 835},  // id-RSASSA-PSS
    {0x20000008U, 644},  // rsaOAEPEncryptionSET
    {0x20000010U, 832},  // id-RSAES-OAEP
    {0x30000000U, 116},  // DSA
    {0x40000000U, 783},  // HAS160withKCDSA1
    {0x50000000U, 840},  // ecdsa-with-SHA256
};

/// Whether the identifiers ascend, each one of the table is there once, and its row has it.
template <std::size_t N>
constexpr bool represent(const Representative (&rows)[N], u32 Row::*id) noexcept {
    for (std::size_t i = 0; i < N; ++i) {
        if (i > 0 && rows[i - 1].id >= rows[i].id) return false;
        if (kTable[rows[i].row].*id != rows[i].id) return false;
    }
    return std::all_of(std::begin(kTable), std::end(kTable), [&](const Row &row) {
        return row.*id == 0 || std::ranges::binary_search(rows, row.*id, {}, &Representative::id);
    });
}
static_assert(represent(kDigestRows, &Row::digest_id));
static_assert(represent(kCipherRows, &Row::cipher_id));

template <std::size_t N>
OBJECT_IDENTIFIER *new_representative(const Representative (&rows)[N], u32 id) noexcept {
    const auto *const found = std::ranges::lower_bound(rows, id, {}, &Representative::id);
    if (found == std::end(rows) || found->id != id) return nullptr;
    return index_to_OBJECT_IDENTIFIER(static_cast<i32>(found->row));
}

const Row &row_of(const OBJECT_IDENTIFIER *oid) noexcept {
    return row_at(index_from_OBJECT_IDENTIFIER(oid));
}

}  // namespace
}  // namespace tlx::oid

uint32_t get_DigestID_from_OID(const OBJECT_IDENTIFIER *oid) {
    return tlx::oid::row_of(oid).digest_id;
}
uint32_t get_CipherID_from_OID(const OBJECT_IDENTIFIER *oid) {
    return tlx::oid::row_of(oid).cipher_id;
}
uint32_t get_AlgorType_from_OID(const OBJECT_IDENTIFIER *oid) {
    return tlx::oid::row_of(oid).algorithm_class;
}

OBJECT_IDENTIFIER *get_OID_from_DigestID(uint32_t digest_id) {
    return tlx::oid::new_representative(tlx::oid::kDigestRows, digest_id);
}

OBJECT_IDENTIFIER *get_OID_from_CipherID(uint32_t cipher_id) {
    return tlx::oid::new_representative(tlx::oid::kCipherRows, cipher_id);
}
