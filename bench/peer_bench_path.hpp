// libcrypto's paths and its bare RSA verification, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// A store that trusts one certificate. It is made once, so that libcrypto need not read the root's key anew.
class PeerStore {
  public:
    explicit PeerStore(const Octets &root);
    ~PeerStore();
    PeerStore(const PeerStore &) = delete;
    PeerStore &operator=(const PeerStore &) = delete;

    /// Decodes the certificates, verifies the first with the others to choose issuers from, and frees
    /// everything.
    [[nodiscard]] bool verify(const Octets *chain, unsigned count) const;

  private:
    void *store_;
};

/// A certificate's RSA signature, with key, context and digest ready.
class PeerSignature {
  public:
    PeerSignature(const Octets &cert, const Octets &issuer);
    ~PeerSignature();
    PeerSignature(const PeerSignature &) = delete;
    PeerSignature &operator=(const PeerSignature &) = delete;

    [[nodiscard]] bool verify() const;

  private:
    void *key_ = nullptr;
    void *context_ = nullptr;
    Octets digest_;
    Octets signature_;
};
