#include "keys/pbe.hpp"

#include <tlxcrypto/digest.h>
#include <tlxcrypto/random.h>
#include <tlxcrypto/rc4.h>
#include <tlxpki/objects.h>

#include "keys/pbes2.hpp"
#include "keys/pkcs12_derivation.hpp"

using namespace tlx;

namespace {

constexpr u32 kSaltLength = 8;

using OwnedRc4 = std::unique_ptr<RC4_UNIT, FreeWith<free_RC4_UNIT>>;

/// The schemes of PKCS #12 with RC4, which has neither IV nor padding.
PbeOutcome run_rc4(const PbeInput &input, u32 key_len, u32 digest_id, CipherJob job) noexcept {
    constexpr u32 kMostKey = 16;
    u8 key[kMostKey];
    const Pkcs12Derivation derivation = {digest_id, input.password, input.salt, input.iterations};
    const OwnedRc4 unit(new_RC4_UNIT());
    const auto size = static_cast<u32>(job.in.size());
    const bool done = unit != nullptr && derivation.derive(TLX_PKCS12_KEY, {key, key_len}) &&
                      init_RC4(unit.get(), key, key_len) == 0 &&
                      update_RC4(unit.get(), job.out, job.in.data(), size) == 0;
    tlx_wipe(key, sizeof key);
    job.out_len = done ? size : 0;
    return done ? PbeOutcome::done : PbeOutcome::no_memory;
}

/// Other programs take another constant IV with the identifier of SEED-CBC. Which one it was shows in the
/// first octet of a SEQUENCE, and changes the first block alone.
void correct_first_block(u8 *plain, u32 len) noexcept {
    static constexpr std::string_view kConstant = "5820463917582046";
    static constexpr std::string_view kInCirculation = "0123456789012345";
    if (len < kConstant.size() || plain[0] == kSequence) return;
    for (std::size_t i = 0; i < kConstant.size(); ++i) {
        plain[i] = static_cast<u8>(plain[i] ^ kConstant[i] ^ kInCirculation[i]);
    }
}

OBJECT_IDENTIFIER *make_identifier(std::string_view dotted) noexcept {
    return new_string(TLX_TAG_OBJECT_IDENTIFIER,
                      {reinterpret_cast<const u8 *>(dotted.data()), dotted.size()});
}

/// Runs any scheme but PBES2.
PbeOutcome run_scheme(const PbeAlgorithm &algorithm, const PbePassword &password, PbeInput input, KisaIv iv,
                      CipherJob job) noexcept {
    switch (algorithm.family) {
        case PbeFamily::kisa:
            return run_kisa(input, algorithm.cipher_id, algorithm.digest_id, KisaIv::hashed, job);
        case PbeFamily::seed_cbc:
            return run_kisa(input, algorithm.cipher_id, algorithm.digest_id, iv, job);
        case PbeFamily::pbes1:
            return run_pbes1(input, algorithm.cipher_id, algorithm.digest_id, job);
        case PbeFamily::gpki: {
            const PasswordUnits units(password.text, PasswordUnits::From::octets);
            input.password = units.bytes();
            if (!units) return PbeOutcome::no_memory;
            return run_pkcs12(input, algorithm.cipher_id, algorithm.digest_id, job);
        }
        case PbeFamily::pkcs12:
            input.password = password.units;
            return run_pkcs12(input, algorithm.cipher_id, algorithm.digest_id, job);
        case PbeFamily::pkcs12_rc4:
            input.password = password.units;
            return run_rc4(input, algorithm.cipher_id, algorithm.digest_id, job);
        default:
            return PbeOutcome::unsupported;
    }
}

/// How often the scheme applies the digest of its derivation for each iteration that it is asked for.
u32 derivations_of(PbeFamily family) noexcept {
    return family == PbeFamily::pkcs12 || family == PbeFamily::gpki ? 2 : 1;
}

PbeOutcome decrypt_by(const PbeAlgorithm &algorithm, const P5_PBE_PARAM &param, const PbePassword &password,
                      CipherJob job, WorkBudget &budget) noexcept {
    const u32 iterations = get_BIGINT_word(param.iterationCount);
    const bool is_pbes2 = algorithm.family == PbeFamily::pbes2;
    if (iterations == 0 || is_pbes2 != (param.encryptionScheme != nullptr)) return PbeOutcome::broken;
    for (u32 i = 0; i < derivations_of(algorithm.family); ++i) {
        if (!budget.take(iterations)) return PbeOutcome::too_much_work;
    }
    const PbeInput input = {password.text, octets_of(param.salt), iterations};
    return is_pbes2 ? decrypt_pbkdf2(param, input, job)
                    : run_scheme(algorithm, password, input, KisaIv::constant, job);
}

// ---- Writing ----

/// Identifier and NULL parameters.
X509_ALGO_IDENTIFIER *make_prf(const Prf &prf) noexcept {
    Owned<X509_ALGO_IDENTIFIER> made(new_X509_ALGO_IDENTIFIER());
    if (!made || set_X509_ALGO_IDENTIFIER_null(made.get()) != 0) return nullptr;
    made->algorithm = make_identifier(prf.dotted);
    return made->algorithm == nullptr ? nullptr : made.release();
}

/// Fills the identifier with the scheme and its parameters.
bool write_algorithm(const PbeChoice &choice, Bytes salt, const u8 *iv,
                     X509_ALGO_IDENTIFIER &algorithm) noexcept {
    const bool is_pbes2 = choice.algorithm.family == PbeFamily::pbes2;
    const Owned<X509_ALGO_IDENTIFIER> cipher(is_pbes2 ? make_content_algorithm(choice.cipher, iv) : nullptr);
    const Owned<P5_PBE_PARAM> param(new_P5_PBE_PARAM());
    if (!param || (is_pbes2 && !cipher)) return false;
    if (set_P5_PBE_PARAM(param.get(), salt.data(), static_cast<u32>(salt.size()), choice.iterations,
                         cipher.get()) != 0) {
        return false;
    }
    // HMAC with SHA-1 is the default, which is not written.
    if (is_pbes2 && choice.prf->digest_id != TLX_DIGEST_SHA1) {
        param->prf = make_prf(*choice.prf);
        if (param->prf == nullptr) return false;
    }
    algorithm.algorithm = make_identifier(choice.algorithm.dotted);
    return algorithm.algorithm != nullptr && P5_PBE_PARAM_to_Seq(param.get(), &algorithm.parameters) == 0;
}

}  // namespace

Owned<ASN1_STRING> tlx::encrypt_pbe(const PbeChoice &choice, const PbePassword &password, Bytes in,
                                    X509_ALGO_IDENTIFIER &algorithm) noexcept {
    u8 random_salt[kSaltLength];
    u8 iv[TLX_CIPHER_MAX_BLOCK_LENGTH];
    if (RAND_BYTES(random_salt, sizeof random_salt) != 0 || RAND_BYTES(iv, sizeof iv) != 0) return nullptr;
    const Bytes salt = choice.salt.empty() ? Bytes(random_salt) : choice.salt;
    SecretBytes out(in.size() + TLX_CIPHER_MAX_BLOCK_LENGTH);
    if (!out) return nullptr;
    u32 len = 0;
    const CipherJob job = {Direction::encrypt, in, out.data(), len};
    const PbeInput input = {password.text, salt, choice.iterations};
    const PbeOutcome outcome = choice.algorithm.family == PbeFamily::pbes2
                                   ? run_pbes2(input, choice.cipher.cipher_id, choice.prf->digest_id, iv, job)
                                   : run_scheme(choice.algorithm, password, input, choice.iv, job);
    if (outcome != PbeOutcome::done || !write_algorithm(choice, salt, iv, algorithm)) return nullptr;
    return Owned<ASN1_STRING>(new_string(TLX_TAG_OCTET_STRING, {out.data(), len}));
}

PbeOutcome tlx::decrypt_pbe(const X509_ALGO_IDENTIFIER *algorithm, const PbePassword &password, Bytes in,
                            u8 *out, u32 &out_len, WorkBudget &budget) noexcept {
    if (algorithm == nullptr) return PbeOutcome::broken;
    const PbeAlgorithm *known = find_pbe_algorithm(text_of(algorithm->algorithm));
    if (known == nullptr) return PbeOutcome::unsupported;
    const Owned<P5_PBE_PARAM> param(get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(algorithm));
    if (param) return decrypt_pbe(*known, *param, password, in, out, out_len, budget);
    if (known->family != PbeFamily::pbes2) return PbeOutcome::broken;
    return decrypt_scrypt(*algorithm, password.text, {Direction::decrypt, in, out, out_len}, budget);
}

PbeOutcome tlx::decrypt_pbe(const PbeAlgorithm &algorithm, const P5_PBE_PARAM &param,
                            const PbePassword &password, Bytes in, u8 *out, u32 &out_len,
                            WorkBudget &budget) noexcept {
    out_len = 0;
    const PbeOutcome outcome =
        decrypt_by(algorithm, param, password, {Direction::decrypt, in, out, out_len}, budget);
    if (outcome == PbeOutcome::done && algorithm.family == PbeFamily::seed_cbc) {
        correct_first_block(out, out_len);
    }
    return outcome;
}
