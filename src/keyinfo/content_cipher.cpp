#include "keyinfo/content_cipher.hpp"

#include <algorithm>

using namespace tlx;

namespace {

constexpr u32 cbc(u32 cipher) noexcept {
    return cipher | TLX_CIPHER_MODE_CBC;
}

// RFC 3565; RFC 3370, section 5.1; RFC 4010; RFC 5794; RFC 3657; RFC 2984; RFC 3370, section 5.2.
constexpr ContentCipher kCiphers[] = {
    {"aes-256-cbc", "2.16.840.1.101.3.4.1.42", cbc(TLX_CIPHER_AES256)},
    {"aes-192-cbc", "2.16.840.1.101.3.4.1.22", cbc(TLX_CIPHER_AES192)},
    {"aes-128-cbc", "2.16.840.1.101.3.4.1.2", cbc(TLX_CIPHER_AES128)},
    {"seed-cbc", "1.2.410.200004.1.4", cbc(TLX_CIPHER_SEED)},
    {"aria-256-cbc", "1.2.410.200046.1.1.12", cbc(TLX_CIPHER_ARIA256)},
    {"aria-192-cbc", "1.2.410.200046.1.1.7", cbc(TLX_CIPHER_ARIA192)},
    {"aria-128-cbc", "1.2.410.200046.1.1.2", cbc(TLX_CIPHER_ARIA)},
    {"camellia-256-cbc", "1.2.392.200011.61.1.1.1.4", cbc(TLX_CIPHER_CAMELLIA256)},
    {"camellia-192-cbc", "1.2.392.200011.61.1.1.1.3", cbc(TLX_CIPHER_CAMELLIA192)},
    {"camellia-128-cbc", "1.2.392.200011.61.1.1.1.2", cbc(TLX_CIPHER_CAMELLIA128)},
    {"des-ede3-cbc", "1.2.840.113549.3.7", cbc(TLX_CIPHER_DES_EDE3)},
    {"cast5-cbc", "1.2.840.113533.7.66.10", cbc(TLX_CIPHER_CAST5), IvForm::cast5},
    {"rc2-cbc", "1.2.840.113549.3.2", cbc(TLX_CIPHER_RC2), IvForm::rc2, 58},
    // Too weak to write, or written by nobody else.
    {"", "1.2.840.113549.3.2", cbc(TLX_CIPHER_RC2_64), IvForm::rc2, 120},
    {"", "1.2.840.113549.3.2", cbc(TLX_CIPHER_RC2_40), IvForm::rc2, 160},
    {"", "1.3.14.3.2.7", cbc(TLX_CIPHER_DES)},
    {"", "1.2.410.100001.1.20", cbc(TLX_CIPHER_ARIA)},
    {"", "1.3.6.1.4.1.3029.1.2", cbc(TLX_CIPHER_BLOWFISH)},
};

/// The key length that CAST5 is written with; it has others, which are refused.
constexpr u8 kCast5Bits = 128;

// iv OCTET STRING
// RC2-CBCParameter ::= SEQUENCE { rc2ParameterVersion INTEGER, iv OCTET STRING }
// CAST5CBCParameters ::= SEQUENCE { iv OCTET STRING DEFAULT 0, keyLength INTEGER }
void write_parameters(Encoder &out, const ContentCipher &cipher, Bytes iv) noexcept {
    if (cipher.form == IvForm::octets) return out.primitive(TLX_TAG_OCTET_STRING, iv);
    const auto sequence = out.sequence();
    if (cipher.form == IvForm::rc2) out.small_integer(cipher.rc2_version);
    out.primitive(TLX_TAG_OCTET_STRING, iv);
    if (cipher.form == IvForm::cast5) out.small_integer(kCast5Bits);
}

bool read_iv(Cursor &members, Bytes &iv) noexcept {
    Element element;
    if (!members.next(element) || element.tag != TLX_TAG_OCTET_STRING) return false;
    iv = element.contents;
    return true;
}

bool read_number(Cursor &members, u8 expected) noexcept {
    Element element;
    if (!members.next(element) || element.tag != TLX_TAG_INTEGER) return false;
    const Owned<BIGINT> number(decode_integer(element.contents));
    return number && get_BIGINT_bits(number.get()) <= 8 && get_BIGINT_word(number.get()) == expected;
}

/// OpenSSL writes an OCTET STRING also for CAST5.
bool read_parameters(const Element &parameters, const ContentCipher &cipher, Bytes &iv) noexcept {
    const bool plain = parameters.tag == TLX_TAG_OCTET_STRING;
    if (plain && cipher.form != IvForm::rc2) {
        iv = parameters.contents;
        return true;
    }
    if (plain || cipher.form == IvForm::octets || parameters.tag != kSequence) return false;
    Cursor members(parameters);
    const bool read = cipher.form == IvForm::rc2
                          ? read_number(members, cipher.rc2_version) && read_iv(members, iv)
                          : read_iv(members, iv) && read_number(members, kCast5Bits);
    return read && members.at_end();
}

}  // namespace

std::span<const ContentCipher> tlx::content_ciphers() noexcept {
    return kCiphers;
}

const ContentCipher *tlx::find_content_cipher(std::string_view name) noexcept {
    const auto *const found = std::ranges::find(kCiphers, name, &ContentCipher::name);
    return found == std::end(kCiphers) || name.empty() ? nullptr : found;
}

X509_ALGO_IDENTIFIER *tlx::make_content_algorithm(const ContentCipher &cipher, const u8 *iv) noexcept {
    Owned<X509_ALGO_IDENTIFIER> algorithm(new_X509_ALGO_IDENTIFIER());
    if (!algorithm) return nullptr;
    Encoder parameters;
    write_parameters(parameters, cipher, {iv, get_IVLength(cipher.cipher_id)});
    algorithm->algorithm =
        new_string(TLX_TAG_OBJECT_IDENTIFIER,
                   {reinterpret_cast<const u8 *>(cipher.dotted.data()), cipher.dotted.size()});
    algorithm->parameters = parameters.to_node();
    const bool complete = algorithm->algorithm != nullptr && algorithm->parameters != nullptr;
    return complete ? algorithm.release() : nullptr;
}

bool tlx::read_content_algorithm(const X509_ALGO_IDENTIFIER *algorithm, u32 &cipher_id,
                                 const u8 *&iv) noexcept {
    Element parameters;
    if (algorithm == nullptr || !view_node(algorithm->parameters, parameters)) return false;
    for (const ContentCipher &cipher : kCiphers) {
        Bytes octets;
        if (cipher.dotted != text_of(algorithm->algorithm)) continue;
        if (!read_parameters(parameters, cipher, octets)) continue;
        cipher_id = cipher.cipher_id;
        iv = octets.data();
        return octets.size() == get_IVLength(cipher_id) && !octets.empty();
    }
    return false;
}
