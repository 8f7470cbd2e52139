// PEM texts around Base64 (RFC 7468).
#include <tlxcrypto/file.h>
#include <tlxpki/asn1.h>
#include <tlxpki/asn1_io.h>
#include <tlxpki/base64.h>
#include <tlxpki/pem.h>

#include <cstring>
#include <string_view>

#include "asn1/pem_scan.hpp"
#include "der/element.hpp"
#include "der/memory.hpp"
#include "der/values.hpp"

using namespace tlx;

namespace {

using std::string_view;

constexpr string_view kNewline = "\n";
constexpr string_view kDashesLine = "-----\n";
constexpr std::size_t kShortest = 20;
constexpr u32 kFailed = 0xFFFFFFFF;

char *put(char *at, string_view text) noexcept {
    if (!text.empty()) std::memcpy(at, text.data(), text.size());
    return at + text.size();
}

/// The Base64 between the header line and the next "-", line ends included; empty when there is none.
string_view body_of(string_view pem) noexcept {
    const std::size_t dashes = pem.find(kPemDashes, kPemDashes.size());
    if (dashes == string_view::npos) return {};
    const std::size_t start = pem.find_first_not_of(" \r\n-", dashes);
    if (start == string_view::npos) return {};
    const std::size_t end = pem.find('-', start);
    if (end == string_view::npos) return {};
    return pem.substr(start, end - start);
}

}  // namespace

uint32_t base64ToPEM(const char *base64, int32_t len, const char *label, uint32_t label_len, char **out) {
    if (base64 == nullptr || out == nullptr || len < 0 || (label == nullptr && label_len > 0)) return 0;
    const string_view body(base64, static_cast<std::size_t>(len));
    const string_view name(label, label_len);
    const std::size_t size = kPemBegin.size() + kNewline.size() + kPemEnd.size() +
                             2 * (name.size() + kDashesLine.size()) + body.size();
    if (size > kMaxLength) return 0;
    auto *pem = static_cast<char *>(TLX_ALLOCATE(size + 1));
    if (pem == nullptr) return 0;

    char *at = pem;
    for (const string_view text :
         {kPemBegin, name, kDashesLine, body, kNewline, kPemEnd, name, kDashesLine}) {
        at = put(at, text);
    }
    *at = '\0';
    *out = pem;
    return static_cast<u32>(size);
}

uint32_t encode_PEM(const uint8_t *der, uint32_t len, const char *label, uint32_t label_len, char **out,
                    uint32_t wrap) {
    char *base64 = nullptr;
    const u32 base64_len = encode_Base64(der, len, &base64, wrap);
    if (base64_len == 0) return 0;
    // A length of 2^31 or more turns negative here and is refused.
    const u32 size = base64ToPEM(base64, static_cast<i32>(base64_len), label, label_len, out);
    wipe_and_free(base64, base64_len);
    return size;
}

uint32_t decode_PEM(const char *pem, int32_t len, uint8_t **der) {
    if (pem == nullptr || len < 0) return 0;
    const string_view text(pem, static_cast<std::size_t>(len));
    if (text.size() < kShortest || text.front() == '=') return 0;
    const string_view body = body_of(text);
    return decode_Base64(body.data(), static_cast<u32>(body.size()), der);
}

uint32_t readPEM_from_Binary(void **out, ASN1_DECODER decoder, const char *pem, uint32_t len) {
    u8 *der = nullptr;
    if (decoder == nullptr || len > kMaxLength) return 0x4E00002B;
    const u32 size = decode_PEM(pem, static_cast<i32>(len), &der);
    if (size == 0) return 0x4E00002B;
    Element element;
    const bool readable = read_element({der, size}, element);
    const u32 status = readable ? decode_in_place(element, decoder, out) : 0x4E00004F;
    wipe_and_free(der, size);
    return status;
}

uint32_t writePEM_to_Binary(const void *object, ASN1_ENCODER encoder, const char *label, uint32_t label_len,
                            char **out) {
    if (out == nullptr) return 0x4E00002B;
    if (encoder == nullptr) return kFailed;
    u8 *der = nullptr;
    const u32 size = writeDER_to_Binary(object, encoder, &der);
    if (size == kFailed) return kFailed;
    const u32 length = encode_PEM(der, size, label, label_len, out, 1);
    wipe_and_free(der, size);
    return length != 0 ? length : kFailed;
}

uint32_t readPEM_from_File(void **out, ASN1_DECODER decoder, const char *path) {
    u8 *pem = nullptr;
    u32 len = 0;
    if (File_to_binary(path, &pem, &len) != 0) return 0x4E00002B;
    const u32 status = readPEM_from_Binary(out, decoder, reinterpret_cast<const char *>(pem), len);
    wipe_and_free(pem, len);
    return status;
}

uint32_t writePEM_to_FILE(const void *object, ASN1_ENCODER encoder, const char *label, uint32_t label_len,
                          const char *path) {
    if (path == nullptr) return 0x4E00002B;
    char *pem = nullptr;
    const u32 len = writePEM_to_Binary(object, encoder, label, label_len, &pem);
    if (len == kFailed) return kFailed;
    const u32 status = binary_to_File(path, reinterpret_cast<const u8 *>(pem), len);
    wipe_and_free(pem, len);
    return status == 0 ? len : kFailed;
}
