// What a verification starts from besides its store, with the budgets.
#pragma once

#include <tlxpki/verify.h>

#include <cstdint>

#include "verify/certificate_view.hpp"

namespace tlx {

/// Which algorithms and key sizes are strong enough.
enum class Profile : u8 { current, korean_legacy, any };

enum class Purpose : u8 {
    any,
    tls_server,
    tls_client,
    email,
    code,
    time_stamping,
    ocsp_signing,
    signing,         ///< digitalSignature or nonRepudiation, as Korean certificates to sign with have
    key_management,  ///< keyEncipherment or keyAgreement
};

/// What counts of an anchor's certificate besides its name and key.
enum AnchorRule : u32 { kAnchorValidity = 1, kAnchorConstraints = 2 };

/// Which certificates need an answer that they are not revoked.
enum class RevocationMode : u8 { off, present, target, path };

/// How much one verification may do. Each figure is far above what real paths need.
struct Budget {
    u32 signatures = 100;           ///< as Go's crypto/x509 after CVE-2018-16875
    u32 candidates = 20000;         ///< certificates tried as issuers; a candidate costs about a microsecond
    u32 path_length = 64;           ///< certificates of a path; the longest of PKITS has 8
    u32 policy_nodes = 10000;       ///< a path of 20 certificates with 500 policies each
    u32 name_comparisons = 250000;  ///< as Go's crypto/x509
    u32 fetches = 16;               ///< what a path of five certificates needs, three times
};

struct Settings {
    std::int64_t time = 0;  ///< seconds since 1970
    Profile profile = Profile::current;
    u32 least_rsa_bits = 0;  ///< 0: those of the profile
    u32 accepted = 0;        ///< of AcceptedFault
    u32 anchor_rules = kAnchorValidity | kAnchorConstraints;
    Bytes user_policies;  ///< OBJECT IDENTIFIERs, one after the other; none: any policy
    bool explicit_policy = false;
    bool inhibit_mapping = false;
    bool inhibit_any_policy = false;
    Purpose purpose = Purpose::any;
    Bytes host;     ///< what the target has to be; empty: nothing
    Bytes address;  ///< of 4 or 16 octets
    Bytes mailbox;
    Budget budget;
    RevocationMode revocation = RevocationMode::off;
    std::int64_t response_age = 0;  ///< seconds that a response without nextUpdate holds
    VERIFY_FETCH fetch = nullptr;
    void *fetch_context = nullptr;
};

}  // namespace tlx
