// Private keys that compute on a token.
#include <tlxcrypto/rsa_external.h>
#include <tlxpki/x509.h>
#include <tlxpki/x509_pubkey.h>

#include <algorithm>
#include <new>

#include "keyinfo/key_records.hpp"
#include "keys/token.hpp"
#include "x509/certificate_records.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kMostNumberOctets = 2048;
constexpr std::size_t kMostIdOctets = 65536;

/// The context of a key.
struct TokenKey {
    TOKEN_SESSION *session;
    CK_OBJECT_HANDLE object;
    bool wants_login;  ///< before each use
    TOKEN_PIN_FUNCTION ask;
    void *context;
};

/// What the standard calls a digest.
struct DigestMechanism {
    u32 digest_id;
    CK_MECHANISM_TYPE mechanism;
    CK_RSA_PKCS_MGF_TYPE mgf;
};
constexpr DigestMechanism kDigests[] = {
    {TLX_DIGEST_SHA1, CKM_SHA_1, CKG_MGF1_SHA1},      {TLX_DIGEST_SHA224, CKM_SHA224, CKG_MGF1_SHA224},
    {TLX_DIGEST_SHA256, CKM_SHA256, CKG_MGF1_SHA256}, {TLX_DIGEST_SHA384, CKM_SHA384, CKG_MGF1_SHA384},
    {TLX_DIGEST_SHA512, CKM_SHA512, CKG_MGF1_SHA512},
};

const DigestMechanism *find_digest(u32 digest_id) noexcept {
    const auto *found = std::ranges::find(kDigests, digest_id, &DigestMechanism::digest_id);
    return found == std::end(kDigests) ? nullptr : found;
}

/// Logs in for the operation that was just begun.
u32 authenticate(const TokenKey &key) noexcept {
    if (!key.wants_login) return 0;
    const CK_USER_TYPE user = CKU_CONTEXT_SPECIFIC;
    if (key.session->has_pin_pad) {
        return status_of(call<&CK_FUNCTION_LIST::C_Login>(
            *key.session, user, static_cast<CK_UTF8CHAR_PTR>(nullptr), CK_ULONG{0}));
    }
    if (key.ask == nullptr) return status_of(CKR_USER_NOT_LOGGED_IN);
    char pin[256];
    u32 length = sizeof pin;
    u32 status = key.ask(key.context, pin, &length);
    if (status == 0) {
        status = status_of(call<&CK_FUNCTION_LIST::C_Login>(*key.session, user,
                                                            reinterpret_cast<CK_UTF8CHAR_PTR>(pin),
                                                            CK_ULONG{std::min(length, u32{sizeof pin})}));
    }
    tlx_wipe(pin, sizeof pin);
    return status;
}

/// Ends an operation that was begun and is not carried out: there is no other way before version 3.
template <auto Finish>
u32 abandon(const TokenKey &key, u32 status) noexcept {
    u8 unused[kMostNumberOctets];
    CK_ULONG length = sizeof unused;
    static_cast<void>(call<Finish>(*key.session, unused, &length));
    return status;
}

u32 sign_with(const TokenKey &key, CK_MECHANISM mechanism, Bytes data, u8 *signature, u32 *length) noexcept {
    const CK_RV begun = call<&CK_FUNCTION_LIST::C_SignInit>(*key.session, &mechanism, key.object);
    if (begun != CKR_OK) return status_of(begun);
    if (const u32 status = authenticate(key); status != 0) {
        return abandon<&CK_FUNCTION_LIST::C_SignFinal>(key, status);
    }
    CK_ULONG size = *length;
    const CK_RV result =
        call<&CK_FUNCTION_LIST::C_Sign>(*key.session, const_cast<CK_BYTE_PTR>(data.data()),
                                        static_cast<CK_ULONG>(data.size()), signature, &size);
    *length = size > *length ? 0 : static_cast<u32>(size);
    return status_of(result);
}

uint32_t sign(void *context, const RSA_SIGNATURE_INPUT *input, uint8_t *signature, uint32_t *length) {
    const auto &key = *static_cast<const TokenKey *>(context);
    if (input->mode == TLX_RSA_MODE_PKCS1) {
        return sign_with(key, {CKM_RSA_PKCS, nullptr, 0}, {input->digest_info, input->digest_info_length},
                         signature, length);
    }
    const DigestMechanism *digest = find_digest(input->digest_id);
    const DigestMechanism *mgf = find_digest(input->mgf_digest_id);
    if (digest == nullptr || mgf == nullptr) return status_of(CKR_MECHANISM_PARAM_INVALID);
    CK_RSA_PKCS_PSS_PARAMS pss = {digest->mechanism, mgf->mgf, input->salt_length};
    return sign_with(key, {CKM_RSA_PKCS_PSS, &pss, sizeof pss}, {input->digest, input->digest_length},
                     signature, length);
}

/// Whether a result of C_Decrypt has nothing to do with the ciphertext. All others count as a ciphertext that
/// does not decrypt: modules say so in many ways, and whoever can tell wrong padding from a wrong key can
/// decrypt.
bool says_nothing_of_ciphertext(CK_RV result) noexcept {
    constexpr CK_RV kSuch[] = {
        CKR_HOST_MEMORY,
        CKR_DEVICE_MEMORY,
        CKR_DEVICE_REMOVED,
        CKR_FUNCTION_CANCELED,
        CKR_SESSION_CLOSED,
        CKR_TOKEN_NOT_PRESENT,
        CKR_SESSION_HANDLE_INVALID,
        CKR_USER_NOT_LOGGED_IN,
        CKR_PIN_EXPIRED,
        CKR_FUNCTION_NOT_SUPPORTED,
        CKR_OPERATION_NOT_INITIALIZED,
        CKR_CRYPTOKI_NOT_INITIALIZED,
    };
    return std::ranges::find(kSuch, result) != std::end(kSuch);
}

u32 decrypt_with(const TokenKey &key, CK_MECHANISM mechanism, Bytes data, u8 *message, u32 *length) noexcept {
    const CK_RV begun = call<&CK_FUNCTION_LIST::C_DecryptInit>(*key.session, &mechanism, key.object);
    if (begun != CKR_OK) return status_of(begun);
    if (const u32 status = authenticate(key); status != 0) {
        return abandon<&CK_FUNCTION_LIST::C_DecryptFinal>(key, status);
    }
    CK_ULONG size = *length;
    const CK_RV result =
        call<&CK_FUNCTION_LIST::C_Decrypt>(*key.session, const_cast<CK_BYTE_PTR>(data.data()),
                                           static_cast<CK_ULONG>(data.size()), message, &size);
    if (says_nothing_of_ciphertext(result)) return status_of(result);
    if (result != CKR_OK || size > *length) return 1;
    *length = static_cast<u32>(size);
    return 0;
}

uint32_t decrypt(void *context, const RSA_DECRYPTION_INPUT *input, uint8_t *message, uint32_t *length) {
    const auto &key = *static_cast<const TokenKey *>(context);
    const Bytes ciphertext(input->ciphertext, input->ciphertext_length);
    if (input->mode == TLX_RSAES_MODE_PKCS1) {
        return decrypt_with(key, {CKM_RSA_PKCS, nullptr, 0}, ciphertext, message, length);
    }
    const DigestMechanism *digest = find_digest(input->digest_id);
    const DigestMechanism *mgf = find_digest(input->mgf_digest_id);
    if (digest == nullptr || mgf == nullptr) return status_of(CKR_MECHANISM_PARAM_INVALID);
    CK_RSA_PKCS_OAEP_PARAMS oaep = {digest->mechanism, mgf->mgf, CKZ_DATA_SPECIFIED,
                                    const_cast<u8 *>(input->label), input->label_length};
    return decrypt_with(key, {CKM_RSA_PKCS_OAEP, &oaep, sizeof oaep}, ciphertext, message, length);
}

void free_key(void *context) {
    auto *key = static_cast<TokenKey *>(context);
    close_TOKEN_SESSION(key->session);
    tlx_free(key);
}

constexpr RSA_EXTERNAL_FUNCTIONS kFunctions = {sign, decrypt, free_key};

u32 key_status(CK_RV result) noexcept {
    if (result == AttributeValue::kTooLong) return 0x491E001C;
    return result == CKR_HOST_MEMORY ? 0x491E003C : status_of(result);
}

/// Whether a token does not tell an attribute.
bool is_untold(CK_RV result) noexcept {
    return result == CKR_ATTRIBUTE_TYPE_INVALID || result == CKR_ATTRIBUTE_SENSITIVE;
}

/// The public numbers of a key object. 0 without a unit when it does not tell them.
u32 read_numbers(const TOKEN_SESSION &session, CK_OBJECT_HANDLE object, Owned<RSA_UNIT> &unit) noexcept {
    AttributeValue n;
    AttributeValue e;
    CK_RV result = n.read(session, object, CKA_MODULUS, kMostNumberOctets);
    if (result == CKR_OK) result = e.read(session, object, CKA_PUBLIC_EXPONENT, kMostNumberOctets);
    if (is_untold(result)) return 0;
    if (result != CKR_OK) return key_status(result);
    if (n.bytes().empty() || e.bytes().empty()) return 0;
    unit.reset(binary_to_RSA_UNIT(n.bytes().data(), static_cast<u32>(n.bytes().size()), e.bytes().data(),
                                  static_cast<u32>(e.bytes().size())));
    return unit ? 0 : 0x491E003C;
}

u32 read_certified(TOKEN_SESSION &session, CK_OBJECT_HANDLE object, Owned<RSA_UNIT> &unit) noexcept {
    const TOKEN_OBJECT wanted = {object, TLX_TOKEN_CERTIFICATE, nullptr, nullptr, 0};
    X509_CERT *made = nullptr;
    if (get_TOKEN_certificate(&session, &wanted, &made) != 0) return 0;
    const Owned<X509_CERT> cert(made);
    const ASYMMETRIC_KEY *key = get_X509_PUBKEY_key(get_X509_SPKI(made));
    if (key == nullptr || key->kind != TLX_KEY_RSA) return 0;
    unit.reset(dup_RSA_UNIT(static_cast<const RSA_UNIT *>(key->key)));
    return unit ? 0 : 0x491E003C;
}

/// The public numbers in the public key or the certificate with the identifier of a private key.
u32 find_numbers(TOKEN_SESSION &session, CK_OBJECT_HANDLE object, Owned<RSA_UNIT> &unit) noexcept {
    AttributeValue id;
    const CK_RV identified = id.read(session, object, CKA_ID, kMostIdOctets);
    if (is_untold(identified) || (identified == CKR_OK && id.bytes().empty())) return 0;
    if (identified != CKR_OK) return key_status(identified);
    for (const CK_OBJECT_CLASS object_class : {CKO_PUBLIC_KEY, CKO_CERTIFICATE}) {
        CK_ATTRIBUTE attributes[] = {attribute(CKA_CLASS, &object_class, sizeof object_class),
                                     attribute(CKA_ID, id.bytes().data(), id.bytes().size())};
        FoundHandles found;
        if (const CK_RV result = found.find(session, attributes); result != CKR_OK) return key_status(result);
        for (const CK_OBJECT_HANDLE handle : found.get()) {
            const u32 status = object_class == CKO_PUBLIC_KEY ? read_numbers(session, handle, unit)
                                                              : read_certified(session, handle, unit);
            if (status != 0 || unit) return status;
        }
    }
    return 0;
}

/// A number or a truth value of an object.
template <typename Value>
CK_RV read_value(const TOKEN_SESSION &session, CK_OBJECT_HANDLE object, CK_ATTRIBUTE_TYPE type,
                 Value &value) noexcept {
    AttributeValue octets;
    const CK_RV result = octets.read(session, object, type, kMostNumberOctets);
    if (result != CKR_OK) return result;
    if (octets.bytes().size() != sizeof value) return CKR_ATTRIBUTE_TYPE_INVALID;
    std::memcpy(&value, octets.bytes().data(), sizeof value);
    return CKR_OK;
}

/// Makes the unit compute on the token.
u32 make_external(RSA_UNIT &unit, const RSA_UNIT &numbers, const TokenKey &key) noexcept {
    void *memory = TLX_ALLOCATE(sizeof(TokenKey));
    if (memory == nullptr) return 0x491E003C;
    auto *context = new (memory) TokenKey(key);
    if (set_RSA_UNIT_external(&unit, get_RSA_UNIT_number(&numbers, TLX_RSA_N),
                              get_RSA_UNIT_number(&numbers, TLX_RSA_E), &kFunctions, context) != 0) {
        tlx_free(memory);
        return 0x491E003C;
    }
    key.session->users.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

}  // namespace

uint32_t get_TOKEN_key(TOKEN_SESSION *session, const TOKEN_OBJECT *object, TOKEN_PIN_FUNCTION ask,
                       void *context, ASYMMETRIC_KEY **key) {
    if (session == nullptr || object == nullptr || key == nullptr) return 0x491E0049;
    if (object->kind != TLX_TOKEN_PRIVATE_KEY) return 0x491E0048;
    const auto handle = static_cast<CK_OBJECT_HANDLE>(object->handle);
    CK_KEY_TYPE type = 0;
    const CK_RV typed = read_value(*session, handle, CKA_KEY_TYPE, type);
    if (typed != CKR_OK) return key_status(typed);
    if (type != CKK_RSA) return 0x491E0048;
    CK_BBOOL wants_login = CK_FALSE;
    const CK_RV told = read_value(*session, handle, CKA_ALWAYS_AUTHENTICATE, wants_login);
    if (told != CKR_OK && !is_untold(told)) return key_status(told);
    Owned<RSA_UNIT> numbers;
    u32 status = read_numbers(*session, handle, numbers);
    if (status == 0 && !numbers) status = find_numbers(*session, handle, numbers);
    if (status != 0) return status;
    if (!numbers) return 0x491E0047;
    const Owned<RSA_UNIT> unit(new_RSA_UNIT());
    Owned<ASYMMETRIC_KEY> made(new_ASYMMETRIC_KEY());
    if (!unit || !made) return 0x491E003C;
    status = make_external(*unit, *numbers, {session, handle, wants_login != CK_FALSE, ask, context});
    if (status != 0) return status;
    if (set_ASYMMETRIC_KEY(made.get(), TLX_KEY_RSA, unit.get()) != 0) return 0x491E003C;
    *key = made.release();
    return 0;
}
