// Anchors and intermediates for verification by RFC 5280.
#pragma once

#include <tlxpki/verify.h>

#include <string>
#include <vector>

#include "input.hpp"
#include "strict_arguments.hpp"

namespace tool {

/// A store that is filled from files and folders. What it cannot take becomes a warning.
class StrictStore {
  public:
    /// Adds what --anchor, --pool, --system-anchors, --crl and --ocsp name. Throws Failure for what cannot be
    /// read.
    StrictStore(const StrictOptions &options, const std::vector<std::string> &anchors,
                const std::vector<std::string> &pool);

    void add(const ReceivedCertificate &intermediate);

    [[nodiscard]] const VERIFY_STORE *get() const { return store_.get(); }
    [[nodiscard]] const std::vector<std::string> &warnings() const { return warnings_; }

  private:
    void add_anchor(const ReceivedCertificate &anchor);
    /// Adds what a file has under a label; says what the store refuses.
    template <typename Add, typename Refused>
    void add_blocks(const std::string &path, const char *label, Add add_to_store, Refused refused);
    void add_lists(const std::string &path);
    void add_responses(const std::string &path);
    void take(const ReceivedCertificate &certificate, uint32_t status);

    Owned<VERIFY_STORE, free_VERIFY_STORE> store_;
    uint32_t accepted_;
    std::vector<std::string> warnings_;
};

}  // namespace tool
