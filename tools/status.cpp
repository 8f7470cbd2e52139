#include "status.hpp"

#include <tlxpki/status.h>

#include <algorithm>
#include <array>

namespace tool {

namespace {

struct Named {
    uint32_t value;
    const char *text;
};

constexpr Named kModules[] = {
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

struct DocumentedCode {
    uint32_t code;
    const char *operation;
    const char *condition;
};

constexpr DocumentedCode kCodes[] = {
#define STATUS_CODE(code, operation, condition) {code, operation, condition},
#include "status_codes.inc"
#undef STATUS_CODE
};

/// Values outside of the packed scheme.
constexpr Named kPlainValues[] = {
    {TLX_SUCCESS, "success"},
    {1, "no reason given (for a signature: the key is neither RSA nor KCDSA)"},
    {TLX_RSA_BAD_SIGNATURE, "the signature does not verify"},
    {TLX_RSA_BAD_KEY, "the numbers of the key make no usable key"},
    {0xFFFFFFFF, "failure of an operation that returns a length"},
};

template <std::size_t N>
const char *find(const Named (&table)[N], uint32_t value) {
    const Named *row =
        std::find_if(table, table + N, [value](const Named &named) { return named.value == value; });
    return row == table + N ? nullptr : row->text;
}

const char *reason_text(uint32_t group, uint32_t reason) {
    const char *special = group == TLX_GROUP_PATH_VALIDATION ? find(kPathReasons, reason)
                          : group == TLX_GROUP_X509          ? find(kX509Reasons, reason)
                                                             : nullptr;
    return special != nullptr ? special : find(kReasons, reason);
}

/// Adds an operation to a list of names, once.
void add_operation(std::string &list, const std::string &operation) {
    if ((", " + list + ", ").find(", " + operation + ", ") != std::string::npos) return;
    list += (list.empty() ? "" : ", ") + operation;
}

}  // namespace

StatusMeaning status_meaning(uint32_t status) {
    StatusMeaning meaning;
    if (const char *plain = find(kPlainValues, status)) {
        meaning.known = true;
        meaning.reason = plain;
        return meaning;
    }
    const char *module = find(kModules, TLX_STATUS_GROUP(status));
    const char *reason =
        module == nullptr ? nullptr : reason_text(TLX_STATUS_GROUP(status), TLX_STATUS_REASON(status));
    meaning.known = module != nullptr;
    meaning.module = module == nullptr ? "unknown" : module;
    meaning.reason = reason == nullptr ? "unknown" : reason;
    std::string sharing_the_function;
    for (const DocumentedCode &row : kCodes) {
        if (row.code >> 16 == status >> 16) add_operation(sharing_the_function, row.operation);
        if (row.code != status) continue;
        add_operation(meaning.operation, row.operation);
        if (meaning.detail.empty()) meaning.detail = row.condition;
    }
    if (meaning.operation.empty()) meaning.operation = sharing_the_function;
    if (meaning.operation.empty()) meaning.operation = "unknown";
    return meaning;
}

Json status_json(uint32_t status) {
    const StatusMeaning meaning = status_meaning(status);
    Json json = {{"code", code_text(status)}};
    const auto add = [&json](const char *key, const std::string &text) {
        if (!text.empty()) json[key] = text;
    };
    add("module", meaning.module);
    add("operation", meaning.operation);
    add("reason", meaning.reason);
    if (meaning.detail != meaning.reason) add("detail", meaning.detail);
    return json;
}

std::string status_sentence(uint32_t status) {
    const StatusMeaning meaning = status_meaning(status);
    const std::string operation = meaning.operation.empty() ? "" : meaning.operation + ": ";
    return code_text(status) + " (" + operation + meaning.reason + ")";
}

}  // namespace tool
