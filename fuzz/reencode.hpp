// The rule for every record that decodes: the record and its copy encode, and the encoding decodes to the
// same record.
#pragma once

#include <tlxpki.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace fuzz {

inline void require(bool holds) {
    if (!holds) std::abort();
}

template <typename T>
std::string encode(const T *record, std::uint32_t (*encoder)(const T *, ASN1_UNIT **)) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(record, TLX_ENCODER(encoder), &octets);
    require(size != 0xFFFFFFFF);
    std::string copy(reinterpret_cast<const char *>(octets), size);
    tlx_free(octets);
    return copy;
}

/// Null when the octets do not decode.
template <typename T>
T *decode(const std::uint8_t *octets, std::size_t size, std::uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    void *record = nullptr;
    const std::uint32_t status =
        readDER_from_Buffer(&record, TLX_DECODER(decoder), octets, static_cast<std::uint32_t>(size));
    require((status == 0) == (record != nullptr));
    return static_cast<T *>(record);
}

/// Checks a record that was decoded, and frees it.
template <typename T>
void check_reencoding(T *record, std::uint32_t (*decoder)(const ASN1_UNIT *, T **),
                      std::uint32_t (*encoder)(const T *, ASN1_UNIT **), T *(*dup)(const T *),
                      void (*free)(T *)) {
    const std::string encoding = encode(record, encoder);
    T *copy = dup(record);
    free(record);
    require(copy != nullptr && encode<T>(copy, encoder) == encoding);
    free(copy);
    T *again = decode(reinterpret_cast<const std::uint8_t *>(encoding.data()), encoding.size(), decoder);
    require(again != nullptr && encode<T>(again, encoder) == encoding);
    free(again);
}

}  // namespace fuzz

/// Decodes the octets as a record of the type, calls `look` and checks the rule.
#define TLX_FUZZ_LOOK(TYPE, look)                                                              \
    if (TYPE *record = fuzz::decode(data, size, Seq_to_##TYPE); record != nullptr) {           \
        look(record);                                                                          \
        fuzz::check_reencoding(record, Seq_to_##TYPE, TYPE##_to_Seq, dup_##TYPE, free_##TYPE); \
    }
#define TLX_FUZZ(TYPE) TLX_FUZZ_LOOK(TYPE, static_cast<void>)
