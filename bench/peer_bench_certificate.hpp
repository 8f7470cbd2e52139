// libcrypto's certificates, behind plain types.
#pragma once

#include <cstddef>
#include <cstdint>

bool peer_decode_and_free(const std::uint8_t *der, std::size_t len);
void *peer_decode(const std::uint8_t *der, std::size_t len);
/// Encodes the to-be-signed part anew, not from the octets that libcrypto keeps; its length.
int peer_encode_tbs(void *cert);
void peer_free(void *cert);
