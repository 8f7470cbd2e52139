#include <tlxcrypto/random.h>

#include <openssl/rand.h>

#include <cstring>

#include "crypto/backend.hpp"

using namespace tlx;

extern "C" uint32_t RAND_BYTES(uint8_t *octets, uint32_t len) {
    if (octets == nullptr) return len == 0 ? 0 : 1;
    const ErrorScope errors;
    OSSL_LIB_CTX *context = backend();
    if (context != nullptr && RAND_bytes_ex(context, octets, len, 0) == 1) return 0;
    std::memset(octets, 0, len);
    return 1;
}
