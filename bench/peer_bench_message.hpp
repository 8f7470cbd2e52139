// libcrypto's CMS and PKCS #7 messages, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// A key of RSA-2048 with a certificate, and a message that was signed with it.
class PeerSigner {
  public:
    PeerSigner();
    ~PeerSigner();
    PeerSigner(const PeerSigner &) = delete;
    PeerSigner &operator=(const PeerSigner &) = delete;

    /// Signs content with SHA-256 and the usual attributes, and returns the message in DER.
    [[nodiscard]] Octets sign(const Octets &content) const;
    /// Decodes a message and verifies it with the certificate, without a path.
    [[nodiscard]] bool verify(const Octets &message) const;

  private:
    void *key_;
    void *cert_;
};

/// Decodes a message and frees it.
bool decode_cms_and_free(const Octets &message);
bool decode_pkcs7_and_free(const Octets &message);
