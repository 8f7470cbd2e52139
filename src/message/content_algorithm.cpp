#include "message/content_algorithm.hpp"

#include <tlxcrypto/random.h>
#include <tlxpki/message_envelope.h>
#include <tlxpki/objects.h>

#include <algorithm>

#include "message/cms_records.hpp"

using namespace tlx;

namespace {

struct AuthenticatingCipher {
    std::string_view name;  ///< empty for CCM
    std::string_view dotted;
    u32 cipher_id;  ///< 0 for CCM
};

// RFC 5084, sections 1.4 and 3; RFC 5794.
constexpr AuthenticatingCipher kCiphers[] = {
    {"aes-256-gcm", "2.16.840.1.101.3.4.1.46", TLX_AEAD_AES256_GCM},
    {"aes-192-gcm", "2.16.840.1.101.3.4.1.26", TLX_AEAD_AES192_GCM},
    {"aes-128-gcm", "2.16.840.1.101.3.4.1.6", TLX_AEAD_AES128_GCM},
    {"aria-256-gcm", "1.2.410.200046.1.1.36", TLX_AEAD_ARIA256_GCM},
    {"aria-192-gcm", "1.2.410.200046.1.1.35", TLX_AEAD_ARIA192_GCM},
    {"aria-128-gcm", "1.2.410.200046.1.1.34", TLX_AEAD_ARIA128_GCM},
    {"", "2.16.840.1.101.3.4.1.47", 0},
    {"", "2.16.840.1.101.3.4.1.27", 0},
    {"", "2.16.840.1.101.3.4.1.7", 0},
    {"", "1.2.410.200046.1.1.39", 0},
    {"", "1.2.410.200046.1.1.38", 0},
    {"", "1.2.410.200046.1.1.37", 0},
};

// RFC 5084, section 3.2; other programs expect a nonce of this length.
constexpr u32 kNonceLength = 12;

bool read_nonce(const ASN1_UNIT *parameters, ContentAlgorithm &algorithm) noexcept {
    CMS_GCM_PARAM *made = nullptr;
    Element element;
    if (!view_node(parameters, element) || element.tag != kSequence) return false;
    if (Codec<CMS_GCM_PARAM>::decode(element, &made) != 0) return false;
    const Owned<CMS_GCM_PARAM> gcm(made);
    const Bytes nonce = octets_of(gcm->nonce);
    if (nonce.empty() || nonce.size() > sizeof algorithm.iv) return false;
    std::memcpy(algorithm.iv, nonce.data(), nonce.size());
    algorithm.iv_len = static_cast<u32>(nonce.size());
    algorithm.tag_len = gcm->icvLen;
    return true;
}

}  // namespace

AlgorithmRead tlx::read_algorithm(const X509_ALGO_IDENTIFIER &identifier,
                                  ContentAlgorithm &algorithm) noexcept {
    const auto *const found =
        std::ranges::find(kCiphers, text_of(identifier.algorithm), &AuthenticatingCipher::dotted);
    if (found != std::end(kCiphers)) {
        if (found->cipher_id == 0) return AlgorithmRead::ccm;
        algorithm.cipher_id = found->cipher_id;
        algorithm.authenticates = true;
        return read_nonce(identifier.parameters, algorithm) ? AlgorithmRead::known : AlgorithmRead::unknown;
    }
    const u8 *iv = nullptr;
    if (!read_content_algorithm(&identifier, algorithm.cipher_id, iv)) return AlgorithmRead::unknown;
    algorithm.iv_len = get_IVLength(algorithm.cipher_id);
    if (algorithm.iv_len == 0) return AlgorithmRead::unknown;  // a cipher that is not available
    std::memcpy(algorithm.iv, iv, algorithm.iv_len);
    return AlgorithmRead::known;
}

bool tlx::find_algorithm(std::string_view name, ContentAlgorithm &algorithm) noexcept {
    const auto *const found = std::ranges::find(kCiphers, name, &AuthenticatingCipher::name);
    if (found != std::end(kCiphers) && found->cipher_id != 0) {
        algorithm = {found->cipher_id, true, kNonceLength, TLX_AEAD_TAG_LENGTH, {}};
    } else {
        const ContentCipher *block = find_content_cipher(name);
        if (block == nullptr) return false;
        algorithm = {block->cipher_id, false, get_IVLength(block->cipher_id), 0, {}};
    }
    return algorithm.key_length() != 0;
}

bool ContentAlgorithm::draw_iv() noexcept {
    return RAND_BYTES(iv, iv_len) == 0;
}

Owned<X509_ALGO_IDENTIFIER> tlx::make_identifier(const ContentAlgorithm &algorithm) noexcept {
    if (!algorithm.authenticates) {
        const auto ciphers = content_ciphers();
        const auto block = std::ranges::find(ciphers, algorithm.cipher_id, &ContentCipher::cipher_id);
        return Owned<X509_ALGO_IDENTIFIER>(make_content_algorithm(*block, algorithm.iv));
    }
    const auto *const cipher =
        std::ranges::find(kCiphers, algorithm.cipher_id, &AuthenticatingCipher::cipher_id);
    Owned<X509_ALGO_IDENTIFIER> identifier(new_X509_ALGO_IDENTIFIER());
    const Owned<OCTET_STRING> nonce(new_string(TLX_TAG_OCTET_STRING, {algorithm.iv, algorithm.iv_len}));
    if (!identifier || !nonce) return nullptr;
    const CMS_GCM_PARAM gcm = {nonce.get(), algorithm.tag_len};
    Encoder parameters;
    Codec<CMS_GCM_PARAM>::encode(parameters, &gcm);
    identifier->algorithm = text_to_OBJECT_IDENTIFIER(cipher->dotted.data());
    identifier->parameters = parameters.to_node();
    const bool complete = identifier->algorithm != nullptr && identifier->parameters != nullptr;
    return complete ? std::move(identifier) : nullptr;
}

const char *get_MESSAGE_cipher_name(uint32_t index) {
    const auto blocks = content_ciphers();
    const auto named = static_cast<std::size_t>(
        std::ranges::find(blocks, std::string_view(), &ContentCipher::name) - blocks.begin());
    if (index < named) return blocks[index].name.data();
    const std::size_t at = index - named;
    return at < std::size(kCiphers) && !kCiphers[at].name.empty() ? kCiphers[at].name.data() : nullptr;
}
