// libcrypto's revocation lists, behind plain types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

using Octets = std::vector<std::uint8_t>;

class PeerCrl {
  public:
    explicit PeerCrl(const Octets &der);
    ~PeerCrl();
    PeerCrl(const PeerCrl &) = delete;
    PeerCrl &operator=(const PeerCrl &) = delete;

    /// Whether the list has an entry with this serial number. The first search sorts the entries.
    [[nodiscard]] bool find(std::uint32_t serial) const;

  private:
    void *crl_;
};

/// A certificate of "CA" for itself or, with another serial number, for "User", by the key of a file.
Octets peer_certificate(const char *key_file, bool is_ca);

/// The octets that the C library has given out.
std::size_t allocated_octets();
