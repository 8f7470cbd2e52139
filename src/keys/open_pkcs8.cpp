// Private keys in encrypted containers as other programs exchange them.
#include <tlxpki/pkcs5.h>

#include <algorithm>

#include "keys/key_encryption.hpp"

using namespace tlx;

namespace {

constexpr u32 kIterations = 600'000;
constexpr u32 kMostIterations = 10'000'000;

/// The row with a name; null for an unknown one.
template <typename Row>
const Row *find_name(std::span<const Row> rows, std::string_view name) noexcept {
    for (const Row &row : rows) {
        if (!name.empty() && row.name == name) return &row;
    }
    return nullptr;
}

std::string_view name_or(const char *name, std::string_view otherwise) noexcept {
    return name == nullptr ? otherwise : std::string_view(name);
}

/// Whether the octets are one SEQUENCE, which a wrong password hardly ever gives.
bool is_sequence(Bytes octets) noexcept {
    Element element;
    return read_element(octets, element) && element.tag == kSequence && element.whole.size() == octets.size();
}

/// Whether a password of the scheme may have been widened octet by octet, as older programs did.
bool may_be_widened(const X509_ALGO_IDENTIFIER *algorithm, Bytes password) noexcept {
    const PbeAlgorithm *known = find_pbe_algorithm(text_of(get_X509_ALGO_IDENTIFIER_OID(algorithm)));
    const bool takes_units =
        known != nullptr && (known->family == PbeFamily::pkcs12 || known->family == PbeFamily::pkcs12_rc4);
    return takes_units && std::ranges::any_of(password, [](u8 octet) { return octet >= 0x80; });
}

PbeOutcome decrypt_as(PasswordUnits::From from, const PKCS8 &container, Bytes password, u8 *out, u32 &len,
                      WorkBudget &budget) noexcept {
    const PasswordUnits units(password, from);
    if (!units) return PbeOutcome::no_memory;
    const PbeOutcome outcome = decrypt_pbe(container.encryptionAlgorithm, {password, units.bytes()},
                                           octets_of(container.encryptedData), out, len, budget);
    if (outcome == PbeOutcome::done && !is_sequence({out, len})) return PbeOutcome::wrong_password;
    return outcome;
}

u32 open_octets(const PKCS8 &container, Bytes password, u8 *out, u32 &len) noexcept {
    WorkBudget budget;
    PbeOutcome outcome = decrypt_as(PasswordUnits::From::utf8, container, password, out, len, budget);
    if (outcome == PbeOutcome::wrong_password && may_be_widened(container.encryptionAlgorithm, password)) {
        outcome = decrypt_as(PasswordUnits::From::octets, container, password, out, len, budget);
    }
    switch (outcome) {
        case PbeOutcome::done:
            return 0;
        case PbeOutcome::wrong_password:
            return 0x4A410012;
        case PbeOutcome::bad_length:
        case PbeOutcome::broken:
            return 0x4A41002B;
        case PbeOutcome::too_much_work:
            return 0x4A410047;
        case PbeOutcome::unsupported:
            return 0x4A410048;
        default:
            return 0x4A41003C;
    }
}

/// The names of a list as a function gives them out.
template <typename Row>
const char *name_at(std::span<const Row> rows, u32 index) noexcept {
    return index < rows.size() && !rows[index].name.empty() ? rows[index].name.data() : nullptr;
}

}  // namespace

bool tlx::choose_pbe(const char *scheme, const char *cipher, const char *prf, PbeChoice &choice) noexcept {
    const PbeAlgorithm *algorithm = find_name(pbe_algorithms(), name_or(scheme, "pbes2"));
    if (algorithm == nullptr) return false;
    choice.algorithm = *algorithm;
    choice.iv = KisaIv::in_circulation;
    if (algorithm->family != PbeFamily::pbes2) return true;
    const ContentCipher *known = find_content_cipher(name_or(cipher, "aes-256-cbc"));
    choice.prf = find_name(prfs(), name_or(prf, "sha256"));
    if (known == nullptr || choice.prf == nullptr) return false;
    choice.cipher = *known;
    return get_KeyLength(known->cipher_id) != 0;
}

const char *get_PKCS8_scheme_name(uint32_t index) {
    return name_at(pbe_algorithms(), index);
}

const char *get_PKCS8_prf_name(uint32_t index) {
    return name_at(prfs(), index);
}

uint32_t seal_PKCS8(const P8_PRIV_KEY_INFO *info, const char *scheme, const char *cipher, const char *prf,
                    uint32_t iterations, const char *password, uint32_t password_len,
                    P8_ENCRYPTED_KEY **out) {
    if (info == nullptr || password == nullptr || out == nullptr) return 0x4A400049;
    PbeChoice choice = {};
    if (!choose_pbe(scheme, cipher, prf, choice)) return 0x4A400048;
    if (iterations > kMostIterations) return 0x4A400047;
    choice.iterations = iterations == 0 ? kIterations : iterations;
    const Bytes text(reinterpret_cast<const u8 *>(password), password_len);
    const PasswordUnits units(text, PasswordUnits::From::utf8);
    if (!units) return 0x4A40003C;
    switch (encrypt_key_info(*info, choice, {text, units.bytes()}, out)) {
        case SealOutcome::done:
            return 0;
        case SealOutcome::not_encoded:
            return 0x4A400030;
        default:
            return 0x4A40003C;
    }
}

uint32_t open_PKCS8(const P8_ENCRYPTED_KEY *container, const char *password, uint32_t password_len,
                    P8_PRIV_KEY_INFO **out) {
    if (out == nullptr) return 0x4A410049;
    u8 *octets = nullptr;
    u32 len = 0;
    if (const u32 status = open_PKCS8_octets(container, password, password_len, &octets, &len); status != 0) {
        return status;
    }
    Element element;
    const bool decoded =
        read_element({octets, len}, element) && Codec<P8_PRIV_KEY_INFO>::decode(element, out) == 0;
    wipe_and_free(octets, len);
    return decoded ? 0 : 0x4A41004F;
}

uint32_t open_PKCS8_octets(const P8_ENCRYPTED_KEY *container, const char *password, uint32_t password_len,
                           uint8_t **octets, uint32_t *len) {
    if (container == nullptr || password == nullptr || octets == nullptr || len == nullptr) return 0x4A410049;
    const std::size_t size = octets_of(container->encryptedData).size();
    auto *plain = static_cast<u8 *>(TLX_ALLOCATE_ZEROED(1, size + 1));
    if (plain == nullptr) return 0x4A41003C;
    u32 plain_len = 0;
    const Bytes text(reinterpret_cast<const u8 *>(password), password_len);
    const u32 status = open_octets(*container, text, plain, plain_len);
    if (status != 0) {
        wipe_and_free(plain, size);
        return status;
    }
    *octets = plain;
    *len = plain_len;
    return 0;
}
