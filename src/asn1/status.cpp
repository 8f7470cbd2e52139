// Statuses in words. All texts are constants.
#include <tlxcrypto/cipher.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>
#include <tlxpki/cryptoki_values.h>
#include <tlxpki/status.h>

#include <algorithm>
#include <iterator>

#include "der/types.hpp"

using namespace tlx;

namespace {

struct Named {
    u32 value;
    const char *text;
};

constexpr const char *kUnknown = "unknown";

constexpr Named kModules[] = {
    {TLX_GROUP_TOKEN_LIST, "KISA list of hardware tokens"},
    {TLX_GROUP_SHARED, "shared by X.509 and object identifiers"},
    {TLX_GROUP_VALUES, "ASN.1 strings and times"},
    {TLX_GROUP_BER, "BER encoding"},
    {TLX_GROUP_DER, "DER encoding, reading and writing"},
    {TLX_GROUP_BER_SECONDARY, "BER encoding"},
    {TLX_GROUP_TIME, "UTCTime and GeneralizedTime"},
    {TLX_GROUP_X509, "X.509 certificates, names and keys"},
    {TLX_GROUP_X509_EXTENSIONS, "X.509 extensions"},
    {TLX_GROUP_CRL, "certificate revocation lists"},
    {TLX_GROUP_PKCS1, "PKCS #1 keys and parameters, PKCS #11"},
    {TLX_GROUP_PKCS5, "PKCS #5 password-based encryption"},
    {TLX_GROUP_PKCS7, "PKCS #7 messages"},
    {TLX_GROUP_PKCS8, "PKCS #8 private keys"},
    {TLX_GROUP_PKCS12, "PKCS #12"},
    {TLX_GROUP_PEM, "PEM and files"},
    {TLX_GROUP_PATH_BUILDING, "path building and signature values"},
    {TLX_GROUP_OCSP, "OCSP"},
    {TLX_GROUP_ISSUER_AND_SERIAL, "issuer and serial number"},
    {TLX_GROUP_CMS, "CMS"},
    {TLX_GROUP_PATH_VALIDATION, "certification paths"},
    {TLX_GROUP_CTL, "certificate trust lists"},
    {TLX_GROUP_VERIFICATION, "verification of certificates"},
};

constexpr Named kReasons[] = {
    {TLX_REASON_UNSPECIFIED, "not said"},
    {TLX_REASON_BAD_SIGNATURE_VALUE, "a signature value cannot be decoded"},
    {TLX_REASON_NO_RESULT, "encoding or decoding gave nothing (a wrong password, for one)"},
    {TLX_REASON_OUT_OF_RANGE, "an index or count is out of range"},
    {TLX_REASON_NUMBER_NOT_SET, "a number could not be set"},
    {TLX_REASON_EMPTY, "the input is empty or missing, or a list that must not be empty is"},
    {TLX_REASON_ENCRYPTED_NOT_ENCODED, "an encrypted member cannot be encoded"},
    {TLX_REASON_NOT_MADE, "a structure could not be made"},
    {TLX_REASON_NOT_COPIED, "a member is missing or could not be copied"},
    {TLX_REASON_NOT_ALLOCATED, "memory ran out"},
    {TLX_REASON_NOT_FOUND, "something was not found, or a limit was exceeded"},
    {TLX_REASON_WRONG_TYPE, "an identifier, tag or choice is not the one required"},
    {TLX_REASON_MISSING_ARGUMENT, "a required argument or member is missing"},
    {TLX_REASON_NOT_DER, "the input is no element that can be parsed"},
    {TLX_REASON_NOT_POSITIVE, "a length is not positive"},
    {TLX_REASON_DIGEST_DIFFERS, "the message digest differs from the one computed"},
    {TLX_REASON_NOT_WRITTEN, "a member could not be written"},
    {TLX_REASON_NOT_BUILT, "an element could not be built"},
    {TLX_REASON_NOT_ENCODED, "a member is missing or cannot be encoded"},
    {TLX_REASON_NOT_DECODED, "a member is missing or cannot be decoded"},
    {TLX_REASON_ISSUER_DIFFERS, "the issuer's name is not the subject of the issuer's certificate"},
    {TLX_REASON_NOT_ADDED, "an element could not be added to a list"},
    {TLX_REASON_NOT_VALID_NOW, "the time lies outside the validity period"},
    {TLX_REASON_NO_TRUST_ANCHOR, "the self-issued certificate at the end is no trust anchor"},
    {TLX_REASON_NO_CERT_SIGN, "the issuer's key usage does not allow it to sign certificates"},
    {TLX_REASON_NO_POLICY, "no acceptable policy is left, but one is required"},
    {TLX_REASON_PATH_LENGTH, "the path is longer than allowed"},
    {TLX_REASON_NOT_A_CA, "the issuer is no CA by its basic constraints, or may have no CA below it"},
    {TLX_REASON_NO_POLICIES, "the certificate has no certificate policies, but a policy is required"},
};

/// Reasons with another meaning in one module.
constexpr Named kPathReasons[] = {
    {TLX_REASON_BAD_SIGNATURE_VALUE, "the issuer's basic constraints cannot be decoded"},
    {TLX_REASON_NOT_POSITIVE, "a signature does not verify"},
};
constexpr Named kX509Reasons[] = {
    {0x0105, "the issuer is missing"},          {TLX_REASON_ISSUER_DIFFERS, "the subject is missing"},
    {0x0107, "the validity period is missing"}, {0x0108, "the signature algorithm is missing"},
    {0x0109, "the public key is missing"},      {0x010A, "the serial number is missing"},
};
constexpr Named kPkcs12Reasons[] = {
    {0x000D, "the parameters of the code cannot be set"},
    {TLX_REASON_BAD_SIGNATURE_VALUE, "the code cannot be computed or stored"},
};
constexpr Named kTokenListReasons[] = {
    {0x0010, "the signed part is missing"},
    {0x0011, "the signature is missing"},
    {0x0029, "the key is not RSA"},
};
constexpr Named kPemReasons[] = {
    {TLX_REASON_ENCRYPTED, "the contents are encrypted"},
};
constexpr Named kCmsReasons[] = {
    {TLX_REASON_NOT_POSITIVE, "an authentication code or a signature does not verify"},
    {TLX_REASON_ENCRYPTED, "the content stays encrypted"},
};

/// What the functions of a PKCS #11 module return.
constexpr u32 kModuleFunctions = 0x4920;
constexpr Named kModuleResults[] = {
    {CKR_HOST_MEMORY, "the module ran out of memory (CKR_HOST_MEMORY)"},
    {CKR_SLOT_ID_INVALID, "there is no such slot (CKR_SLOT_ID_INVALID)"},
    {CKR_GENERAL_ERROR, "the module failed without a reason (CKR_GENERAL_ERROR)"},
    {CKR_FUNCTION_FAILED, "the function failed (CKR_FUNCTION_FAILED)"},
    {CKR_ARGUMENTS_BAD, "the module refuses an argument (CKR_ARGUMENTS_BAD)"},
    {CKR_CANT_LOCK, "the module does not serve programs with threads (CKR_CANT_LOCK)"},
    {CKR_ATTRIBUTE_SENSITIVE, "an attribute is secret (CKR_ATTRIBUTE_SENSITIVE)"},
    {CKR_ATTRIBUTE_TYPE_INVALID, "an object lacks an attribute (CKR_ATTRIBUTE_TYPE_INVALID)"},
    {CKR_ATTRIBUTE_VALUE_INVALID, "the module refuses an attribute (CKR_ATTRIBUTE_VALUE_INVALID)"},
    {CKR_DATA_INVALID, "the token refuses the data (CKR_DATA_INVALID)"},
    {CKR_DATA_LEN_RANGE, "the data are too long or too short (CKR_DATA_LEN_RANGE)"},
    {CKR_DEVICE_ERROR, "the token or its slot failed (CKR_DEVICE_ERROR)"},
    {CKR_DEVICE_MEMORY, "the token ran out of memory (CKR_DEVICE_MEMORY)"},
    {CKR_DEVICE_REMOVED, "the token was taken out (CKR_DEVICE_REMOVED)"},
    {CKR_FUNCTION_CANCELED, "the operation was cancelled (CKR_FUNCTION_CANCELED)"},
    {CKR_FUNCTION_NOT_SUPPORTED, "the module lacks the function (CKR_FUNCTION_NOT_SUPPORTED)"},
    {CKR_KEY_HANDLE_INVALID, "the key is gone, or hidden since logging out (CKR_KEY_HANDLE_INVALID)"},
    {CKR_KEY_SIZE_RANGE, "the token does not compute with keys of this size (CKR_KEY_SIZE_RANGE)"},
    {CKR_KEY_TYPE_INCONSISTENT, "the key is of another kind than the algorithm (CKR_KEY_TYPE_INCONSISTENT)"},
    {CKR_KEY_FUNCTION_NOT_PERMITTED, "the key may not be used for this (CKR_KEY_FUNCTION_NOT_PERMITTED)"},
    {CKR_MECHANISM_INVALID, "the token lacks the algorithm (CKR_MECHANISM_INVALID)"},
    {CKR_MECHANISM_PARAM_INVALID,
     "the token lacks the algorithm with these parameters (CKR_MECHANISM_PARAM_INVALID)"},
    {CKR_OBJECT_HANDLE_INVALID,
     "the object is gone, or hidden since logging out (CKR_OBJECT_HANDLE_INVALID)"},
    {CKR_OPERATION_ACTIVE, "another operation is under way in the session (CKR_OPERATION_ACTIVE)"},
    {CKR_OPERATION_NOT_INITIALIZED,
     "no operation is under way in the session (CKR_OPERATION_NOT_INITIALIZED)"},
    {CKR_PIN_INCORRECT, "the PIN is wrong (CKR_PIN_INCORRECT)"},
    {CKR_PIN_INVALID, "the PIN has characters that the token refuses (CKR_PIN_INVALID)"},
    {CKR_PIN_LEN_RANGE, "the PIN is too long or too short (CKR_PIN_LEN_RANGE)"},
    {CKR_PIN_EXPIRED, "the PIN has expired (CKR_PIN_EXPIRED)"},
    {CKR_PIN_LOCKED, "the PIN is locked (CKR_PIN_LOCKED)"},
    {CKR_SESSION_CLOSED, "the session was closed (CKR_SESSION_CLOSED)"},
    {CKR_SESSION_COUNT, "the token has no more sessions (CKR_SESSION_COUNT)"},
    {CKR_SESSION_HANDLE_INVALID, "the session is gone (CKR_SESSION_HANDLE_INVALID)"},
    {CKR_SESSION_READ_ONLY, "the session is for reading (CKR_SESSION_READ_ONLY)"},
    {CKR_TOKEN_NOT_PRESENT, "there is no token in the slot (CKR_TOKEN_NOT_PRESENT)"},
    {CKR_TOKEN_NOT_RECOGNIZED, "the module does not know the token (CKR_TOKEN_NOT_RECOGNIZED)"},
    {CKR_USER_ALREADY_LOGGED_IN, "the user has logged in already (CKR_USER_ALREADY_LOGGED_IN)"},
    {CKR_USER_NOT_LOGGED_IN, "the user has not logged in (CKR_USER_NOT_LOGGED_IN)"},
    {CKR_USER_PIN_NOT_INITIALIZED, "the token has no PIN yet (CKR_USER_PIN_NOT_INITIALIZED)"},
    {CKR_USER_ANOTHER_ALREADY_LOGGED_IN, "another user has logged in (CKR_USER_ANOTHER_ALREADY_LOGGED_IN)"},
    {CKR_BUFFER_TOO_SMALL, "the result is longer than it should be (CKR_BUFFER_TOO_SMALL)"},
    {CKR_CRYPTOKI_NOT_INITIALIZED, "the module is not initialised (CKR_CRYPTOKI_NOT_INITIALIZED)"},
    {CKR_FUNCTION_REJECTED, "the user refused (CKR_FUNCTION_REJECTED)"},
    {0xFFFF, "a result of the vendor's own"},
};

/// A value without a module, what it stands for, and when operations return it.
struct Plain {
    u32 value;
    const char *reason;
    const char *sentence;
};

/// Those of the whole library, and those that the operations of libtlxcrypto share.
constexpr Plain kPlainValues[] = {
    {TLX_SUCCESS, "success", "success"},
    {1, "no reason given (for a signature: the key is neither RSA nor KCDSA)",
     "an argument cannot be used, memory ran out, or what else the operation documents"},
    {TLX_RSA_BAD_SIGNATURE, "the signature does not verify",
     "the signature does not verify; of a cipher: the padding is wrong, as a wrong key makes it"},
    {TLX_RSA_BAD_KEY, "the numbers of the key make no usable key",
     "the numbers of the key make no usable key"},
    {0x001C0048, "the key is of another kind",
     "final_PKCS7_Sign: a signer with authenticated attributes has no key of RSA or KCDSA"},
    {0xFFFFFFFF, "failure of an operation that returns a length",
     "failure of an operation that returns a length"},
};
static_assert(TLX_RSA_BAD_SIGNATURE == TLX_KCDSA_BAD_SIGNATURE && TLX_RSA_BAD_KEY == TLX_KCDSA_BAD_KEY &&
              TLX_RSA_BAD_SIGNATURE == TLX_CIPHER_BAD_PADDING);

/// A status, the operations that return it, and when they do.
struct Row {
    u32 status;
    const char *operation;
    const char *sentence;
};

constexpr Row kRows[] = {
#define STATUS(status, operation, sentence) {status, operation, sentence},
#define SHARED(function, operations)
#include "status_rows.inc"
#undef STATUS
#undef SHARED
};
// In order, and each once.
static_assert(std::ranges::adjacent_find(kRows, std::ranges::greater_equal(), &Row::status) ==
              std::end(kRows));

/// What is said of every record, for the statuses without a row of their own.
constexpr Row kRecordRows[] = {
#define NONE 0
#define RECORD(type, decoder, no_node, count, child, encoder, no_record, item, member)                \
    {no_node, #decoder, "an argument is null"}, {count, #decoder, "the number of children is wrong"}, \
        {child, #decoder, "a member is missing or cannot be decoded, or memory ran out"},             \
        {no_record, #encoder, "an argument is null"}, {item, #encoder, "an item is missing"},         \
        {member, #encoder, "a member is missing or cannot be encoded, or memory ran out"},
#define LIST(type, item, decoder, no_node, count, child, encoder, no_list, no_item, member) \
    {no_node, #decoder, "an argument is null"}, {count, #decoder, "the list is empty"},     \
        {child, #decoder, "an item cannot be decoded, or memory ran out"},                  \
        {no_list, #encoder, "an argument is null"},                                         \
        {no_item, #encoder, "the list is empty or an item is missing"},                     \
        {member, #encoder, "an item is missing or cannot be encoded, or memory ran out"},
#include "records.inc"
#undef NONE
#undef RECORD
#undef LIST
};

/// The rules of verification, where a finding has no row of its own.
constexpr Row kRuleRows[] = {
#define RULE(name, status, section, text) {status, "verify_CERTIFICATE", text},
#include "verify/rules.inc"
#undef RULE
};

constexpr Named kSharedFunctions[] = {
#define STATUS(status, operation, sentence)
#define SHARED(function, operations) {function, operations},
#include "status_rows.inc"
#undef STATUS
#undef SHARED
};

constexpr u32 function_of(u32 status) noexcept {
    return status >> 16;
}

template <std::size_t N>
const char *find(const Named (&table)[N], u32 value) noexcept {
    const Named *named = std::ranges::find(table, value, &Named::value);
    return named == std::end(table) ? nullptr : named->text;
}

/// The first row, those of records last, whose `part` of the status is `value`.
template <typename Part>
const Row *find_row(u32 value, Part part) noexcept {
    const auto is_wanted = [&](const Row &row) { return part(row.status) == value; };
    if (const Row *row = std::ranges::find_if(kRows, is_wanted); row != std::end(kRows)) return row;
    if (const Row *row = std::ranges::find_if(kRecordRows, is_wanted); row != std::end(kRecordRows)) {
        return row;
    }
    const Row *row = std::ranges::find_if(kRuleRows, is_wanted);
    return row == std::end(kRuleRows) ? nullptr : row;
}

const char *reason_of(u32 status) noexcept {
    const u32 reason = TLX_STATUS_REASON(status);
    const char *special = nullptr;
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_VERIFICATION) {
        const Row *rule = std::ranges::find(kRuleRows, status, &Row::status);
        if (rule != std::end(kRuleRows)) return rule->sentence;
    }
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_PATH_VALIDATION) special = find(kPathReasons, reason);
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_X509) special = find(kX509Reasons, reason);
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_PKCS12) special = find(kPkcs12Reasons, reason);
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_TOKEN_LIST) special = find(kTokenListReasons, reason);
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_PEM) special = find(kPemReasons, reason);
    if (TLX_STATUS_GROUP(status) == TLX_GROUP_CMS) special = find(kCmsReasons, reason);
    if (function_of(status) == kModuleFunctions) {
        special = find(kModuleResults, reason);
        if (special == nullptr) special = "another result of the module, as the last digits say";
    }
    const char *text = special != nullptr ? special : find(kReasons, reason);
    return text != nullptr ? text : kUnknown;
}

/// The operations of a function, for a status without a row.
const char *operations_of(u32 function) noexcept {
    if (const char *shared = find(kSharedFunctions, function)) return shared;
    const Row *row = find_row(function, function_of);
    return row == nullptr ? kUnknown : row->operation;
}

}  // namespace

uint32_t get_STATUS_TEXT(uint32_t status, STATUS_TEXT *text) {
    if (text == nullptr) return 1;
    const Plain *plain = std::ranges::find(kPlainValues, status, &Plain::value);
    if (plain != std::end(kPlainValues)) {
        *text = {"", "", plain->reason, plain->sentence};
        return 0;
    }
    const char *module = find(kModules, TLX_STATUS_GROUP(status));
    if (module == nullptr) {
        *text = {kUnknown, kUnknown, kUnknown, kUnknown};
        return 1;
    }
    const Row *row = find_row(status, [](u32 whole) { return whole; });
    const char *reason = reason_of(status);
    *text = {module, row == nullptr ? operations_of(function_of(status)) : row->operation, reason,
             row == nullptr ? reason : row->sentence};
    return 0;
}
