// PKCS #12 files under a password, with their code and without it. What opens whole is made anew and opens to
// as many entries. Derivations are short: iteration counts above a few are the business of no reader here.
#include "values.hpp"

namespace {

using fuzz::Held;
using fuzz::require;

constexpr char kPassword[] = "secret";
constexpr std::uint32_t kLength = sizeof kPassword - 1;
constexpr std::uint32_t kMostIterations = 1000;

bool is_cheap(const X509_ALGO_IDENTIFIER *algorithm) {
    const Held<free_P5_PBE_PARAM> param(get_P5_PBE_PARAM_from_X509_ALGO_IDENTIFIER(algorithm));
    return param != nullptr && get_BIGINT_word(param->iterationCount) <= kMostIterations;
}

bool is_cheap(const P12_SAFE_CONTENTS *contents) {
    bool cheap = true;
    for (std::int32_t i = 0; cheap && i < static_cast<std::int32_t>(get_P12_SAFE_CONTENTS_count(contents));
         ++i) {
        const P12_SAFE_BAG *bag = get_P12_SAFE_CONTENTS_child(contents, i);
        PKCS8 *key = nullptr;
        P12_SAFE_CONTENTS *inner = nullptr;
        if (Seq_to_P8_ENCRYPTED_KEY(bag->bagValue, &key) == 0) cheap = is_cheap(key->encryptionAlgorithm);
        if (Seq_to_P12_SAFE_CONTENTS(bag->bagValue, &inner) == 0) cheap = cheap && is_cheap(inner);
        free_PKCS8(key);
        free_P12_SAFE_CONTENTS(inner);
    }
    return cheap;
}

/// Decodes what an OCTET STRING holds.
template <auto Decoder, typename T>
T *inside(const OCTET_STRING *octets) {
    void *record = nullptr;
    readDER_from_Buffer(&record, TLX_DECODER(Decoder), octets->data,
                        static_cast<std::uint32_t>(octets->length));
    return static_cast<T *>(record);
}

bool is_cheap(const P7_CONTENT_INFO *info) {
    const std::uint32_t type = index_from_OBJECT_IDENTIFIER(info->contentType);
    if (info->content.any == nullptr) return true;
    if (type == TLX_OID_PKCS7_ENCRYPTED_DATA) {
        return is_cheap(info->content.encryptedData->encryptedContentInfo->contentEncryptionAlgorithm);
    }
    if (type != TLX_OID_PKCS7_DATA) return true;
    const Held<free_P12_SAFE_CONTENTS> contents(
        inside<Seq_to_P12_SAFE_CONTENTS, P12_SAFE_CONTENTS>(info->content.data));
    return is_cheap(contents.get());
}

bool is_cheap(const P12_MAC_DATA &data) {
    P5_PBE_PARAM *pbmac1 = nullptr;
    Seq_to_P5_PBE_PARAM(data.digestParameters, &pbmac1);
    const Held<free_P5_PBE_PARAM> param(pbmac1);
    return (data.iterations == nullptr || get_BIGINT_word(data.iterations) <= kMostIterations) &&
           (param == nullptr || get_BIGINT_word(param->iterationCount) <= kMostIterations);
}

bool is_cheap(const P12_PFX *pfx) {
    const bool is_data = index_from_OBJECT_IDENTIFIER(pfx->authSafe->contentType) == TLX_OID_PKCS7_DATA;
    if (!is_data || pfx->authSafe->content.any == nullptr) return true;
    if (pfx->macData != nullptr && !is_cheap(*pfx->macData)) return false;
    const Held<free_P12_AUTHENTICATED_SAFE> parts(
        inside<Seq_to_P12_AUTHENTICATED_SAFE, P12_AUTHENTICATED_SAFE>(pfx->authSafe->content.data));
    bool cheap = true;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(get_P12_AUTHENTICATED_SAFE_count(parts.get()));
         ++i)
        cheap = cheap && is_cheap(get_P12_AUTHENTICATED_SAFE_child(parts.get(), i));
    return cheap;
}

Held<free_P12_ENTRIES> open(const P12_PFX *pfx) {
    P12_ENTRIES *entries = nullptr;
    require((open_PKCS12(pfx, kPassword, kLength, nullptr, 0, &entries) == 0) == (entries != nullptr));
    return Held<free_P12_ENTRIES>(entries);
}

void make_anew(const P12_ENTRIES *entries) {
    const std::uint32_t count = get_P12_ENTRIES_count(entries);
    for (std::uint32_t i = 0; i < count; ++i)
        if (get_P12_ENTRIES_child(entries, static_cast<std::int32_t>(i))->kind == TLX_P12_UNREAD) return;
    P12_SETTINGS settings = {};
    settings.iterations = 1;
    P12_PFX *made = nullptr;
    if (make_PKCS12(entries, &settings, kPassword, kLength, &made) != 0) return;
    const Held<free_P12_PFX> pfx(made);
    const auto again = open(made);
    require(again != nullptr && get_P12_ENTRIES_count(again.get()) == count);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    void *read = nullptr;
    if (readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P12_PFX), data, static_cast<std::uint32_t>(size)) != 0)
        return 0;
    const Held<free_P12_PFX> pfx(static_cast<P12_PFX *>(read));
    if (!is_cheap(pfx.get())) return 0;
    open(pfx.get());
    verify_PKCS12_mac(pfx.get(), kPassword, kLength);
    free_P12_MAC_DATA(pfx->macData);
    pfx->macData = nullptr;
    const auto entries = open(pfx.get());
    if (entries != nullptr) make_anew(entries.get());
    return 0;
}
