// A record or list type behind one shape, so that one test serves many of them.
#pragma once

#include <tlxpki.h>

#include <cstdint>

namespace tlx_test {

struct RecordType {
    const char *name;
    void *(*make)();
    void (*clean)(void *);
    void (*free)(void *);
    void *(*dup)(const void *);
    ASN1_DECODER decode;
    ASN1_ENCODER encode;
    std::uint32_t decoder_code;  // of a null argument
    std::uint32_t encoder_code;
};

// clang-format off
#define TLX_RECORD_TYPE(type, decoder_code, encoder_code)                                                            \
    {                                                                                                                \
        #type,                                                                                                       \
        [] { return static_cast<void *>(new_##type()); },                                                            \
        [](void *record) { clean_##type(static_cast<type *>(record)); },                                             \
        [](void *record) { free_##type(static_cast<type *>(record)); },                                              \
        [](const void *record) { return static_cast<void *>(dup_##type(static_cast<const type *>(record))); },       \
        TLX_DECODER(Seq_to_##type), TLX_ENCODER(type##_to_Seq), decoder_code, encoder_code                           \
    }
// clang-format on

}  // namespace tlx_test
