// A responder of OCSP.
#pragma once

#include <mutex>

#include "commands.hpp"
#include "ocsp.hpp"
#include "revocation.hpp"
#include "token.hpp"

namespace tool {

/// Where answers come from: a list of the CA or a table.
class OcspStatuses {
  public:
    /// Throws Failure, also for a list that cannot be relied on.
    OcspStatuses(const OcspRespondOptions &options, const X509_CERT *issuer);

    /// What is known of a certificate of the CA.
    [[nodiscard]] TableEntry look_up(const BIGINT *serial) const;
    /// The list; null for a table.
    [[nodiscard]] const X509_CRL *list() const { return crl_.get(); }

  private:
    Crl crl_;
    StatusTable table_;
};

/// Answers requests, on several threads at once.
class OcspResponder {
  public:
    explicit OcspResponder(const OcspRespondOptions &options);

    /// A response about every certificate that the request asks for; one of another CA is unknown. Throws
    /// Failure when there is none that somebody would rely on.
    [[nodiscard]] OcspResponse answer(const OCSP_REQUEST *request) const;

  private:
    using ResponseData = Owned<OCSP_RESPONSE_DATA, free_OCSP_RESPONSE_DATA>;
    using BasicResponse = Owned<BASIC_OCSP_RESPONSE, free_BASIC_OCSP_RESPONSE>;

    [[nodiscard]] TableEntry look_up(const OCSP_CERT_ID *id) const;
    [[nodiscard]] ResponseData begin(const OCSP_REQUEST *request) const;
    [[nodiscard]] BasicResponse sign(ResponseData data) const;

    Tokens tokens_;
    Certificate issuer_;
    Certificate cert_;
    KeyInfo key_;
    OcspStatuses statuses_;
    uint32_t digest_;
    uint32_t days_;
    bool by_key_;
    bool is_on_token_;
    mutable std::mutex token_use_;  ///< a token signs for one thread at a time
};

}  // namespace tool
