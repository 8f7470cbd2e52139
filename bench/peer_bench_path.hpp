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

/// A certificate's RSA signature, with key, context, message and its digest ready.
class PeerSignature {
  public:
    PeerSignature(const Octets &cert, const Octets &issuer);
    ~PeerSignature();
    PeerSignature(const PeerSignature &) = delete;
    PeerSignature &operator=(const PeerSignature &) = delete;

    [[nodiscard]] bool verify() const;
    /// From the message, with nothing but the key ready.
    [[nodiscard]] bool verify_message() const;

  private:
    void *key_ = nullptr;
    void *context_ = nullptr;
    Octets message_;
    Octets digest_;
    Octets signature_;
};
