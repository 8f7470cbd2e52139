// The inside of RSA_UNIT.
#pragma once

#include <openssl/evp.h>
#include <tlxcrypto/rsa_external.h>

#include <atomic>
#include <memory>

#include "crypto/digest.hpp"
#include "crypto/key_numbers.hpp"
#include "crypto/memory.hpp"

namespace tlx {

using RsaNumbers = KeyNumbers<TLX_RSA_NUMBER_COUNT>;

inline constexpr u32 kMostRsaBits = 16384;
inline constexpr u32 kMostRsaOctets = kMostRsaBits / 8;

/// What was computed from the numbers of a unit. The first thread that needs a part fills it in. A unit and
/// its copies share it, until one of them gets other numbers, and the last of them frees it.
struct RsaCache {
    std::atomic<BN_MONT_CTX *> modulus = nullptr;  ///< prepared for multiplication
    std::atomic<EVP_PKEY *> key = nullptr;
    std::atomic<EVP_PKEY_CTX *> signer = nullptr;  ///< the context last used to sign with PKCS #1 v1.5
    std::atomic<u32> builds = 0;
    std::atomic<u32> references = 1;
};
struct ReleaseCache {
    void operator()(RsaCache *cache) const noexcept;
};
using OwnedCache = std::unique_ptr<RsaCache, ReleaseCache>;

/// The functions of a key that cannot be read. Copies of a unit share them, and the last frees the context.
struct RsaExternal {
    RSA_EXTERNAL_FUNCTIONS functions;
    void *context;
    std::atomic<u32> references = 1;
};
struct ReleaseExternal {
    void operator()(RsaExternal *external) const noexcept;
};
using OwnedExternal = std::unique_ptr<RsaExternal, ReleaseExternal>;

struct FreeLabel {
    void operator()(u8 *label) const noexcept { tlx_free(label); }
};

/// The parameters of RSAES-OAEP.
struct OaepSettings {
    u32 digest_id = TLX_DIGEST_SHA1;
    u32 mgf_digest_id = TLX_DIGEST_SHA1;
    std::unique_ptr<u8, FreeLabel> label;
    u32 label_length = 0;
};

/// What init_RSASSA or init_RSAES prepared a unit for.
enum class RsaTask : u32 { none, sign, verify, encrypt, decrypt };

}  // namespace tlx

struct RSA_UNIT {
    tlx::u32 kind = TLX_RSA_PUBLIC;
    tlx::RsaNumbers numbers;
    tlx::u32 pss_mgf_digest_id = TLX_DIGEST_SHA1;
    tlx::u32 pss_salt_length = TLX_RSA_PSS_DEFAULT_SALT_LENGTH;
    tlx::OwnedCache cache;        ///< there when the unit has numbers
    tlx::OwnedExternal external;  ///< there when the kind is TLX_RSA_EXTERNAL

    tlx::RsaTask signature = tlx::RsaTask::none;
    tlx::u32 signature_mode = 0;
    DIGEST_UNIT digest = {};

    tlx::RsaTask encryption = tlx::RsaTask::none;
    tlx::u32 encryption_mode = 0;
    tlx::OaepSettings oaep;

    RSA_UNIT() = default;
    RSA_UNIT(const RSA_UNIT &) = delete;
    RSA_UNIT &operator=(const RSA_UNIT &) = delete;
    ~RSA_UNIT() { tlx::clean_digest(digest); }
};

namespace tlx {

[[nodiscard]] bool is_usable_public_part(const RsaNumbers &numbers) noexcept;

/// Verifies a signature with PKCS #1 v1.5 padding. 0 or a TLX_RSA_ code; 1 when memory runs out.
u32 verify_pkcs1(const RSA_UNIT &unit, Bytes digest_info, Bytes signature) noexcept;

/// Verifies a PSS signature under the unit's PSS settings. Statuses likewise.
u32 verify_pss(const RSA_UNIT &unit, u32 digest_id, Bytes hash, Bytes signature) noexcept;

/// Fills in what is to be signed: the hash, and for PKCS #1 v1.5 its DigestInfo.
void prepare_signature(const RSA_UNIT &unit, u32 digest_id, u32 mode, Bytes hash,
                       RSA_SIGNATURE_INPUT &input) noexcept;

/// Have the functions of an external unit sign and decrypt. The signature has get_RSA_length() octets, and so
/// has the room for the message. 0, a status of the functions, 1, or TLX_RSA_BAD_KEY for results of another
/// length than they may have.
u32 sign_externally(const RSA_UNIT &unit, const RSA_SIGNATURE_INPUT &input, u8 *signature) noexcept;
u32 decrypt_externally(const RSA_UNIT &unit, u32 mode, Bytes ciphertext, u8 *message, u32 *length) noexcept;

/// Stores the backend's key of the unit, which stays in its cache. 0, TLX_RSA_BAD_KEY or 1.
u32 get_backend_key(const RSA_UNIT &unit, EVP_PKEY **key) noexcept;

}  // namespace tlx
