// Passwords (RFC 3211): PBKDF2 makes a key of a password, and PWRI-KEK wraps the content key under it.
#include <tlxcrypto/kdf.h>
#include <tlxcrypto/random.h>

#include <algorithm>

#include "message/cms_key_wrap.hpp"

using namespace tlx;

namespace {

constexpr std::string_view kPbkdf2 = "1.2.840.113549.1.5.12";
constexpr std::string_view kPwriKek = "1.2.840.113549.1.9.16.3.9";

constexpr u32 kIterations = 600'000;
constexpr u32 kMostIterations = 10'000'000;
constexpr u32 kSaltLength = 16;

// A key is wrapped with its length and the complement of its first octets in front, and random octets behind.
constexpr u32 kCheckLength = 3;
constexpr u32 kHeaderLength = 1 + kCheckLength;
constexpr u32 kMostKey = 255;
constexpr u32 kMostWrapped = 272;  ///< in whole blocks

/// A cipher under a key that a password gave.
struct PasswordKey {
    u32 cipher_id;
    const u8 *iv;
    u8 key[TLX_CIPHER_MAX_KEY_LENGTH];

    ~PasswordKey() { tlx_wipe(key, sizeof key); }

    [[nodiscard]] u32 block() const noexcept { return get_BlockLength(cipher_id); }
    [[nodiscard]] bool derive(u32 digest_id, Bytes password, Bytes salt, u32 iterations) noexcept {
        return compute_PBKDF2(digest_id, password.data(), size_of(password), salt.data(), size_of(salt),
                              iterations, key, get_KeyLength(cipher_id)) == 0;
    }
    [[nodiscard]] bool run(Direction direction, const u8 *from_iv, Bytes in, u8 *out) const noexcept {
        return run_cbc(direction, cipher_id, key, from_iv, in, out);
    }
};

// ---- Opening ----

/// The parameters of a derivation by PBKDF2; null for another derivation and for broken parameters.
Owned<CMS_PBKDF2_PARAM> read_derivation(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    CMS_PBKDF2_PARAM *param = nullptr;
    if (algorithm == nullptr || text_of(algorithm->algorithm) != kPbkdf2) return nullptr;
    static_cast<void>(Seq_to_CMS_PBKDF2_PARAM(algorithm->parameters, &param));
    return Owned<CMS_PBKDF2_PARAM>(param);
}

/// The cipher in the parameters of PWRI-KEK; null when there is none.
Owned<X509_ALGO_IDENTIFIER> read_cipher(const X509_ALGO_IDENTIFIER &algorithm) noexcept {
    X509_ALGO_IDENTIFIER *cipher = nullptr;
    if (text_of(algorithm.algorithm) != kPwriKek) return nullptr;
    static_cast<void>(Seq_to_X509_ALGO_IDENTIFIER(algorithm.parameters, &cipher));
    return Owned<X509_ALGO_IDENTIFIER>(cipher);
}

/// RFC 3211, section 2.3.2. The last block of the outer encryption gives its IV: that of the blocks before is
/// the last block of the inner one.
u32 unwrap(const PasswordKey &key, Bytes wrapped, OpenedKey &out) noexcept {
    const std::size_t block = key.block();
    if (wrapped.size() < 2 * block || wrapped.size() > kMostWrapped || wrapped.size() % block != 0) {
        return 0x52B10012;
    }
    SecretBytes inner(kMostWrapped);
    SecretBytes plain(kMostWrapped);
    if (!inner || !plain) return 0x52B1003C;
    const Bytes before = wrapped.first(wrapped.size() - block);
    u8 *last = inner.data() + before.size();
    const bool done = key.run(Direction::decrypt, before.last(block).data(), wrapped.last(block), last) &&
                      key.run(Direction::decrypt, last, before, inner.data()) &&
                      key.run(Direction::decrypt, key.iv, inner.bytes().first(wrapped.size()), plain.data());
    if (!done) return 0x52B1003C;
    const u8 *octets = plain.data();
    const u32 len = octets[0];
    u8 wrong = 0;
    for (u32 i = 1; i <= kCheckLength; ++i) {
        wrong = static_cast<u8>(wrong | (octets[i] ^ octets[i + kCheckLength] ^ 0xFF));
    }
    if (wrong != 0 || len < kCheckLength || len + kHeaderLength > wrapped.size()) return 0x52B10012;
    std::memcpy(out.octets, octets + kHeaderLength, len);
    out.len = len;
    return 0;
}

// ---- Making ----

/// RFC 3211, section 2.3.1: encrypted twice, without a new IV. Null when memory or random octets run out.
OCTET_STRING *wrap(const PasswordKey &key, Bytes content_key) noexcept {
    const u32 block = key.block();
    const u32 blocks = (kHeaderLength + size_of(content_key) + block - 1) / block;
    const u32 size = std::max(2 * block, blocks * block);
    SecretBytes plain(size);
    SecretBytes inner(size);
    u8 outer[kMostWrapped];
    if (!plain || !inner || RAND_BYTES(plain.data(), size) != 0) return nullptr;
    u8 *octets = plain.data();
    octets[0] = static_cast<u8>(content_key.size());
    std::memcpy(octets + kHeaderLength, content_key.data(), content_key.size());
    for (u32 i = 0; i < kCheckLength; ++i) {
        octets[1 + i] = static_cast<u8>(~content_key[i]);
    }
    const bool done = key.run(Direction::encrypt, key.iv, plain.bytes(), inner.data()) &&
                      key.run(Direction::encrypt, inner.data() + size - block, inner.bytes(), outer);
    return done ? make_octets({outer, size}) : nullptr;
}

/// A function of PBKDF2 to write; null for a digest without one.
const Prf *find_prf_of(u32 digest_id) noexcept {
    const auto all = prfs();
    const auto found = std::ranges::find(all, digest_id, &Prf::digest_id);
    return found == all.end() || found->name.empty() ? nullptr : &*found;
}

/// Null when memory runs out.
Owned<X509_ALGO_IDENTIFIER> make_derivation(const Prf &prf, Bytes salt, u32 iterations) noexcept {
    const Owned<CMS_PBKDF2_PARAM> param(new_CMS_PBKDF2_PARAM());
    ASN1_UNIT *node = nullptr;
    if (!param) return nullptr;
    param->salt = make_octets(salt);
    param->iterationCount = iterations;
    // HMAC with SHA-1 is the default, which is not written.
    if (prf.digest_id != TLX_DIGEST_SHA1) {
        param->prf = make_algorithm(prf.dotted, nullptr).release();
        if (set_X509_ALGO_IDENTIFIER_null(param->prf) != 0) return nullptr;
    }
    if (CMS_PBKDF2_PARAM_to_Seq(param.get(), &node) != 0) return nullptr;
    return make_algorithm(kPbkdf2, node);
}

/// Null when memory runs out.
Owned<X509_ALGO_IDENTIFIER> make_encryption(const ContentCipher &cipher, const u8 *iv) noexcept {
    const Owned<X509_ALGO_IDENTIFIER> inner(make_content_algorithm(cipher, iv));
    ASN1_UNIT *node = nullptr;
    if (!inner || X509_ALGO_IDENTIFIER_to_Seq(inner.get(), &node) != 0) return nullptr;
    return make_algorithm(kPwriKek, node);
}

}  // namespace

u32 tlx::open_password(const CMS_PASSWORD_RECIPIENT &recipient, const CMS_KEY_HOLDER &holder, OpenedKey &key,
                       WorkBudget &budget) noexcept {
    if (recipient.keyEncryptionAlgorithm == nullptr || recipient.encryptedKey == nullptr) return 0x52B10049;
    if (holder.password == nullptr) return 0x52B10047;
    const Owned<CMS_PBKDF2_PARAM> param = read_derivation(recipient.keyDerivationAlgorithm);
    const Owned<X509_ALGO_IDENTIFIER> cipher = read_cipher(*recipient.keyEncryptionAlgorithm);
    const Prf *prf = param ? find_prf(param->prf) : nullptr;
    PasswordKey wrapping = {};
    if (prf == nullptr || !cipher || !read_content_algorithm(cipher.get(), wrapping.cipher_id, wrapping.iv)) {
        return 0x52B10048;
    }
    if (param->keyLength != 0 && param->keyLength != get_KeyLength(wrapping.cipher_id)) return 0x52B10048;
    if (!budget.take(param->iterationCount)) return 0x52B1001C;
    if (!wrapping.derive(prf->digest_id, {holder.password, holder.password_len}, octets_of(param->salt),
                         param->iterationCount)) {
        return 0x52B1003C;
    }
    return unwrap(wrapping, octets_of(recipient.encryptedKey), key);
}

u32 tlx::make_password(const CMS_RECIPIENT_SETTINGS &settings, Bytes key, CMS_RECIPIENT_INFO &out) noexcept {
    const Prf *prf = find_prf_of(settings.prf_digest_id != 0 ? settings.prf_digest_id : TLX_DIGEST_SHA256);
    const ContentCipher *cipher = find_content_cipher("aes-256-cbc");
    const u32 iterations = settings.iterations != 0 ? settings.iterations : kIterations;
    if (prf == nullptr || cipher == nullptr) return 0x52B00048;
    if (key.size() < kCheckLength || key.size() > kMostKey || iterations > kMostIterations) return 0x52B0001C;
    CMS_PASSWORD_RECIPIENT *made = new_CMS_PASSWORD_RECIPIENT();
    out.type = TLX_CMS_PASSWORD;
    out.value.pwri = made;
    u8 salt[kSaltLength];
    u8 iv[TLX_CIPHER_MAX_BLOCK_LENGTH];
    if (made == nullptr || RAND_BYTES(salt, sizeof salt) != 0 || RAND_BYTES(iv, sizeof iv) != 0) {
        return 0x52B0003C;
    }
    PasswordKey wrapping = {cipher->cipher_id, iv, {}};
    made->keyDerivationAlgorithm = make_derivation(*prf, salt, iterations).release();
    made->keyEncryptionAlgorithm = make_encryption(*cipher, iv).release();
    if (made->keyDerivationAlgorithm == nullptr || made->keyEncryptionAlgorithm == nullptr ||
        !wrapping.derive(prf->digest_id, {settings.password, settings.password_len}, salt, iterations)) {
        return 0x52B0003C;
    }
    made->encryptedKey = wrap(wrapping, key);
    return made->encryptedKey == nullptr ? 0x52B0003C : 0;
}
