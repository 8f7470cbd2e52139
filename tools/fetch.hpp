// Fetches issuers, revocation lists and OCSP responses from the addresses that certificates name.
#pragma once

#include <tlxpki/verify.h>

#include <string>
#include <vector>

namespace tool {

/// A callback of verifications, and what it could not fetch.
class Fetcher {
  public:
    /// @param accepted_faults TLX_ACCEPT_, of fetched certificates
    explicit Fetcher(uint32_t accepted_faults) : accepted_faults_(accepted_faults) {}

    /// Makes verifications with these settings call the fetcher, which has to outlive them.
    void serve(VERIFY_SETTINGS &settings);

    /// Why addresses gave nothing, since the last call.
    [[nodiscard]] std::vector<std::string> take_warnings();

  private:
    static uint32_t fetch(void *context, const VERIFY_REQUEST *request, VERIFY_STORE *fetched);
    /// Asks one address after the other, until one gives something.
    void ask(const VERIFY_REQUEST &request, VERIFY_STORE *fetched);
    void take(const VERIFY_REQUEST &request, const std::string &url, VERIFY_STORE *fetched) const;
    void add(uint32_t kind, const std::string &octets, VERIFY_STORE *fetched) const;
    void add_certificates(const std::string &octets, VERIFY_STORE *fetched) const;

    uint32_t accepted_faults_;
    std::vector<std::string> warnings_;
};

}  // namespace tool
