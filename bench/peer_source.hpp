// Content for libcrypto that takes no memory.
#pragma once

#include <openssl/bio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

/// Octets that are given out several times.
struct Source {
    const std::uint8_t *octets;
    std::uint32_t size;
    std::uint32_t times;
    std::uint32_t at = 0;
};

inline int read_source(BIO *bio, char *out, int len) {
    auto *source = static_cast<Source *>(BIO_get_data(bio));
    if (source->times == 0) return 0;
    const std::uint32_t size = std::min(static_cast<std::uint32_t>(len), source->size - source->at);
    std::memcpy(out, source->octets + source->at, size);
    source->at = (source->at + size) % source->size;
    if (source->at == 0) --source->times;
    return static_cast<int>(size);
}

/// What libcrypto reads them from.
inline BIO *new_source(Source &source) {
    static BIO_METHOD *const method = [] {
        BIO_METHOD *made = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "octets");
        BIO_meth_set_read(made, read_source);
        return made;
    }();
    BIO *bio = BIO_new(method);
    BIO_set_data(bio, &source);
    BIO_set_init(bio, 1);
    return bio;
}
