// Asking the caller for what is missing.
#pragma once

#include "verify/object.hpp"
#include "verify/settings.hpp"
#include "verify/store.hpp"

namespace tlx {

class Fetcher {
  public:
    explicit Fetcher(const Settings &settings) noexcept
        : fetch_(settings.fetch), context_(settings.fetch_context), left_(settings.budget.fetches) {}
    ~Fetcher();
    Fetcher(const Fetcher &) = delete;
    Fetcher &operator=(const Fetcher &) = delete;

    /// Asks for one kind, TLX_FETCH_, that a certificate needs, unless it did so before or the certificate
    /// names no place. True when something came.
    /// @param issuer null for none
    [[nodiscard]] bool ask(u32 kind, const CertificateView &certificate,
                           const CertificateView *issuer) noexcept;

    /// What came; null when nothing was asked for.
    [[nodiscard]] const Store *store() const noexcept;

  private:
    struct Asked {
        u32 kind;
        const CertificateView *certificate;
    };

    [[nodiscard]] bool is_new(u32 kind, const CertificateView &certificate) noexcept;

    VERIFY_FETCH fetch_;
    void *context_;
    u32 left_;
    Array<Asked> asked_;
    VERIFY_STORE *fetched_ = nullptr;
};

}  // namespace tlx
