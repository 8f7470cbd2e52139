// The statuses of every record, from the list of all records: codes::X509_CERT.decode.not_converted.
#pragma once

#include "der/types.hpp"

namespace tlx {

/// What one direction of a record answers.
struct Statuses {
    u32 missing_argument;
    u32 wrong_count;
    u32 not_converted;
};

struct Codes {
    Statuses decode;
    Statuses encode;
};

namespace codes {

inline constexpr u32 NONE = 0;
#define RECORD(type, decoder, decode_null, decode_count, undecodable, encoder, encode_null, encode_count, \
               unencodable)                                                                               \
    inline constexpr Codes type = {{decode_null, decode_count, undecodable},                              \
                                   {encode_null, encode_count, unencodable}};
#define LIST(type, item, ...) RECORD(type, __VA_ARGS__)
#include "records.inc"
#undef LIST
#undef RECORD

}  // namespace codes
}  // namespace tlx
