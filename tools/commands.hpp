// The subcommands. Each prints to standard output and returns the exit status; unusable input is a Failure.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "strict_arguments.hpp"

namespace tool {

struct VerifyOptions {
    std::vector<std::string> anchors;
    std::vector<std::string> pool;
    std::vector<std::string> policies;
    std::vector<std::string> targets;
    std::string time;
    std::string rules = kStrict;
    StrictOptions strict;
    int32_t max_length = 0;  ///< of the compatible rules, as the next; 0 when not given
    bool explicit_policy = true;
    bool json = false;
};

struct ShowOptions {
    std::vector<std::string> files;
    std::string password_file;
    bool json = false;
};

struct Asn1Options {
    std::string file;
    bool full = false;
    bool json = false;
};

/// The texts that `oid` and `status` look up.
struct LookUpOptions {
    std::vector<std::string> texts;
    bool json = false;
};

/// For whom a message is encrypted, and how.
struct EnvelopeOptions {
    std::vector<std::string> recipients;
    std::string format;  ///< empty for PKCS #7 where it suffices
    std::string cipher = "aes-256-cbc";
    std::string scheme = "pkcs1";
    std::string password_file;
    bool password_recipient = false;

    [[nodiscard]] bool has_recipients() const { return !recipients.empty() || password_recipient; }
};

struct SignOptions {
    std::vector<std::string> certs;
    std::vector<std::string> keys;  ///< of the certificates, in their order
    std::vector<std::string> chain;
    std::string password_file;
    std::string pin_file;
    std::string digest;  ///< empty for the default
    std::string scheme = "pkcs1";
    EnvelopeOptions envelope;  ///< without recipients for a message that is not encrypted
    std::string content;
    std::string output = "-";
    bool detached = false;
    bool key_identifier = false;       ///< names signers by it
    bool signing_certificate = false;  ///< is signed as well
    bool der = false;
    bool json = false;
};

struct VerifyMessageOptions {
    std::vector<std::string> anchors;
    std::vector<std::string> pool;
    std::string time;
    std::string rules = kStrict;
    StrictOptions strict;
    std::string content;  ///< of a detached message
    std::string output;   ///< empty for none
    std::string message;
    bool unverified_output = false;
    bool json = false;
};

struct EncryptOptions {
    EnvelopeOptions envelope;
    std::string content;
    std::string output = "-";
    bool der = false;
    bool json = false;
};

struct DecryptOptions {
    std::string cert;
    std::string key;
    std::string password_file;
    std::string pin_file;
    std::string message;
    std::string output = "-";
    bool password_recipient = false;
    bool unverified_output = false;
    bool json = false;
};

struct ShowMessageOptions {
    std::string message;
    bool json = false;
};

struct Pkcs12Options {
    std::string file;
    std::string password_file;
    std::string mac_password_file;
    std::string folder;  ///< empty for none
    bool force = false;
    bool json = false;
};

struct Pkcs12MakeOptions {
    std::string key;
    std::string cert;
    std::vector<std::string> chain;
    std::string name;  ///< empty for none
    std::string password_file;
    std::string new_password_file;
    std::string scheme = "pbes2";
    std::string output;
    bool force = false;
    bool json = false;
};

/// Of the commands below tlxpki key.
struct KeyOptions {
    std::string input;
    std::string password_file;
    std::string new_password_file;
    std::string to = "pkcs8";
    std::string scheme = "pbes2";
    std::string type;
    uint32_t bits = 0;  ///< 0 for the default
    std::string output;
    bool der = false;
    bool force = false;
    bool json = false;
};

/// How many entries of a revocation list are shown unless more are asked for.
constexpr uint32_t kShownEntries = 20;

struct ShowCrlOptions {
    std::string file;
    uint32_t most_entries = kShownEntries;
    bool json = false;
};

struct CheckCrlOptions {
    std::string issuer;
    std::string crl;
    std::string delta;  ///< empty for none
    std::string time;
    std::vector<std::string> certs;
    bool json = false;
};

struct MakeCrlOptions {
    std::string issuer;
    std::string key;
    std::string password_file;
    std::string pin_file;
    std::string from;  ///< empty for none
    std::vector<std::string> revoke;
    std::string revoke_file;  ///< empty for none
    std::vector<std::string> release;
    uint32_t delta = 0;   ///< the number of the base; 0 when not given
    uint32_t number = 0;  ///< likewise
    uint32_t days = 30;
    std::string digest;  ///< empty for the default
    std::string output = "-";
    bool der = false;
    bool json = false;
};

struct IdentityOptions {
    std::string cert;
    std::string key;
    std::string password_file;
    std::string number_file;
    bool json = false;
};

/// Of the commands below tlxpki trustlist.
struct TrustListOptions {
    std::string file;
    std::vector<std::string> authorities;
    std::string time;
    StrictOptions strict;
    std::string output;
    std::vector<std::string> certificates;
    SignOptions signer;
    uint32_t number = 1;
    uint32_t days = 365;
    bool unverified = false;
    bool json = false;
};

/// Of the commands below tlxpki token.
struct TokenOptions {
    std::string name;  ///< a module, or a URI
    std::string pin_file;
    std::string output = "-";
    bool login = false;
    bool der = false;
    bool json = false;
};

struct OcspRequestOptions {
    std::string issuer;
    std::vector<std::string> certs;
    std::string digest = "sha1";
    std::string signer;  ///< empty for a request that is not signed
    std::string key;     ///< of the signer
    std::string password_file;
    std::string output = "-";
    bool nonce = false;
    bool json = false;
};

struct OcspRespondOptions {
    std::string issuer;
    std::string responder;
    std::string key;
    std::string password_file;
    std::string pin_file;
    std::string table;  ///< this or the list
    std::string crl;
    std::string digest = "sha256";
    std::string request;  ///< empty to serve
    std::string listen;   ///< address and port; empty to answer one request
    std::string output = "-";
    uint32_t days = 0;  ///< until the next answer; 0 announces none
    bool by_key = false;
    bool json = false;
};

struct OcspCheckOptions {
    std::string issuer;
    std::string response;  ///< empty to ask a responder
    std::string request;   ///< what the response answers; empty for none
    std::string url;       ///< of the responder; empty for the one that the certificate names
    std::string cert;
    std::string time;
    bool require_nonce = false;
    bool json = false;
};

struct TimestampRequestOptions {
    std::string message;  ///< empty to stamp the file
    std::string file;
    std::string digest = "sha256";
    std::string policy;  ///< empty for none
    std::string output = "-";
    uint32_t signer = 0;  ///< 0 for the only one
    bool no_nonce = false;
    bool no_certificate = false;
    bool json = false;
};

struct TimestampVerifyOptions {
    std::vector<std::string> anchors;
    std::vector<std::string> pool;
    std::string token;
    std::string message;  ///< empty, as the next two, for none
    std::string file;
    std::string request;
    std::string time;
    StrictOptions strict;
    uint32_t signer = 0;  ///< 0 for the one that the token is for
    bool json = false;
};

struct StampOptions {
    std::string token;
    std::string message;
    std::string output = "-";
    uint32_t signer = 0;  ///< 0 for the one that the token is for
    bool json = false;
};

/// What --type of keys takes.
[[nodiscard]] std::vector<std::string> key_types();
/// What --scheme of keys takes.
[[nodiscard]] std::vector<std::string> key_schemes();

/// What options of messages take; time stamps have the same digests.
[[nodiscard]] std::vector<std::string> digest_names();
[[nodiscard]] std::vector<std::string> signature_schemes();
[[nodiscard]] std::vector<std::string> cipher_names();
[[nodiscard]] std::vector<std::string> encryption_schemes();

int run_verify(const VerifyOptions &options);
int run_show(const ShowOptions &options);
int run_asn1(const Asn1Options &options);
int run_oid(const LookUpOptions &options);
int run_status(const LookUpOptions &options);
int run_sign(const SignOptions &options);
int run_verify_message(const VerifyMessageOptions &options);
int run_encrypt(const EncryptOptions &options);
int run_decrypt(const DecryptOptions &options);
int run_show_message(const ShowMessageOptions &options);
int run_pkcs12_open(const Pkcs12Options &options);
int run_pkcs12_show(const Pkcs12Options &options);
int run_pkcs12_make(const Pkcs12MakeOptions &options);
int run_key_show(const KeyOptions &options);
int run_key_convert(const KeyOptions &options);
int run_key_password(const KeyOptions &options);
int run_key_make(const KeyOptions &options);
int run_crl_show(const ShowCrlOptions &options);
int run_crl_check(const CheckCrlOptions &options);
int run_crl_make(const MakeCrlOptions &options);
int run_token_slots(const TokenOptions &options);
int run_token_objects(const TokenOptions &options);
int run_token_certificate(const TokenOptions &options);
int run_ocsp_request(const OcspRequestOptions &options);
int run_ocsp_respond(const OcspRespondOptions &options);
int run_ocsp_check(const OcspCheckOptions &options);
int run_timestamp_request(const TimestampRequestOptions &options);
int run_timestamp_verify(const TimestampVerifyOptions &options);
int run_stamp(const StampOptions &options);
int run_identity_check(const IdentityOptions &options);
int run_trust_list_show(const TrustListOptions &options);
int run_trust_list_import(const TrustListOptions &options);
int run_trust_list_make(const TrustListOptions &options);

}  // namespace tool
