// libcrypto's paths and its bare RSA verification, behind plain types.
#pragma once

#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

/// Certificates of a path, the target first and the anchor last, with keys of one kind ("RSA" of 2048 bits or
/// "EC" of P-256) and SHA-256. With RSA each has about 1100 octets.
std::vector<Octets> peer_chain(const char *kind, unsigned length);

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

/// A certificate's signature, with key, context, message and its digest ready.
class PeerSignature {
  public:
    PeerSignature(const Octets &cert, const Octets &issuer);
    ~PeerSignature();
    PeerSignature(const PeerSignature &) = delete;
    PeerSignature &operator=(const PeerSignature &) = delete;

    /// Of RSA, by the bare operation.
    [[nodiscard]] bool verify() const;
    /// From the message, with nothing but the key ready.
    [[nodiscard]] bool verify_message() const;
    /// Makes the key from its numbers first.
    [[nodiscard]] bool verify_with_new_key() const;

    [[nodiscard]] const Octets &message() const { return message_; }
    /// The octets of an RSA signature; r and s of ECDSA.
    [[nodiscard]] std::vector<Octets> signature() const;
    /// The modulus and the exponent of an RSA key; the point of one of ECDSA.
    [[nodiscard]] std::vector<Octets> key() const;

  private:
    [[nodiscard]] bool verify_message(void *key) const;

    void *key_ = nullptr;
    void *params_ = nullptr;
    void *context_ = nullptr;
    Octets message_;
    Octets digest_;
    Octets signature_;
};
