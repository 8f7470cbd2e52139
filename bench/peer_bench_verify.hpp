// libcrypto's verification, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// A public key, and a context that is ready to verify PKCS #1 v1.5 signatures of SHA-256 digests with it.
class PeerKey {
  public:
    PeerKey(const Octets &n, const Octets &e);
    ~PeerKey();
    PeerKey(const PeerKey &) = delete;
    PeerKey &operator=(const PeerKey &) = delete;
    [[nodiscard]] bool verify(const Octets &signature, const Octets &digest) const;
    /// The signature of a certificate under this key.
    [[nodiscard]] bool verify(void *cert) const;

  private:
    void *key_ = nullptr;
    void *context_ = nullptr;
};

/// A certificate of libcrypto.
class PeerCert {
  public:
    explicit PeerCert(const Octets &der);
    ~PeerCert();
    PeerCert(const PeerCert &) = delete;
    PeerCert &operator=(const PeerCert &) = delete;
    [[nodiscard]] void *get() const { return cert_; }

  private:
    void *cert_;
};
