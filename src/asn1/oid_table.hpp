// The rows of the registry, as data of the program.
#pragma once

#include <tlxpki/objects.h>

#include <cstddef>
#include <string_view>

#include "der/types.hpp"

namespace tlx::oid {

/// What get_AlgorType_from_OID returns.
enum AlgorithmClass : u32 { kNoClass = 0, kDigest = 1, kCipher = 2, kPublicKey = 3, kPasswordBased = 4 };

struct Row {
    OID_ROW texts;
    u32 index;
    u32 digest_id;  // 0: none
    u32 cipher_id;  // 0: none
    AlgorithmClass algorithm_class;
};

#define OID_TABLE_ROW(index, short_name, long_name, dotted, digest, cipher, type) \
    {{short_name, long_name, dotted}, index, digest, cipher, type},
inline constexpr Row kTable[] = {
#include "asn1/oid_table.inc"
};
#undef OID_TABLE_ROW

inline constexpr u32 kCount = TLX_OID_COUNT;
static_assert(sizeof kTable / sizeof kTable[0] == kCount);

/// The row at an index; row 0 for every index that the table does not have.
constexpr const Row &row_at(u32 index) noexcept {
    return kTable[index < kCount ? index : 0];
}

}  // namespace tlx::oid
