#include "peer_bench_pkcs12.hpp"

#include <openssl/evp.h>
#include <openssl/pkcs12.h>

bool derive_mac_key(const char *digest, Octets &password, Octets &salt, int iterations, Octets &key) {
    const EVP_MD *const algorithm = EVP_get_digestbyname(digest);
    return PKCS12_key_gen_uni(password.data(), static_cast<int>(password.size()), salt.data(),
                              static_cast<int>(salt.size()), PKCS12_MAC_ID, iterations,
                              static_cast<int>(key.size()), key.data(), algorithm) == 1;
}
