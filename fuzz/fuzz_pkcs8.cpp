// Encrypted keys under a password. What opens is a key; sealed anew it opens to the same one. Derivations are
// short: iteration counts above a few are the business of no reader here.
#include "values.hpp"

namespace {

using fuzz::Held;
using fuzz::require;

constexpr char kPassword[] = "password";
constexpr std::uint32_t kLength = sizeof kPassword - 1;

/// Whether a container takes at most so much work that a run of the target goes through thousands.
bool is_cheap(const PKCS8 *container) {
    const Held<free_P5_PBE_PARAM> param(get_PKCS8_P5_PBE_PARAM(container));
    return param != nullptr && get_BIGINT_word(param->iterationCount) <= 1000;
}

std::string encoded(const P8_PRIV_KEY_INFO *info) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(info, TLX_ENCODER(P8_PRIV_KEY_INFO_to_Seq), &octets);
    require(size != 0xFFFFFFFF);
    return fuzz::taken(octets, size);
}

void seal_anew(const P8_PRIV_KEY_INFO *info, const char *scheme) {
    PKCS8 *sealed = nullptr;
    P8_PRIV_KEY_INFO *again = nullptr;
    require(seal_PKCS8(info, scheme, nullptr, nullptr, 1, kPassword, kLength, &sealed) == 0);
    const Held<free_PKCS8> owner(sealed);
    require(open_PKCS8(sealed, kPassword, kLength, &again) == 0);
    require(encoded(Held<free_P8_PRIV_KEY_INFO>(again).get()) == encoded(info));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    void *read = nullptr;
    if (readDER_from_Buffer(&read, TLX_DECODER(Seq_to_P8_ENCRYPTED_KEY), data,
                            static_cast<std::uint32_t>(size)) != 0) {
        return 0;
    }
    const Held<free_PKCS8> container(static_cast<PKCS8 *>(read));
    if (!is_cheap(container.get())) return 0;
    P8_PRIV_KEY_INFO *named = nullptr;
    P8_PRIV_KEY_INFO *opened = nullptr;
    require((decrypt_PKCS5(container.get(), &named, kPassword, kLength) == 0) == (named != nullptr));
    free_P8_PRIV_KEY_INFO(named);
    require((open_PKCS8(container.get(), kPassword, kLength, &opened) == 0) == (opened != nullptr));
    const Held<free_P8_PRIV_KEY_INFO> info(opened);
    if (info != nullptr) seal_anew(info.get(), size % 2 == 0 ? "seed-cbc" : "pbes2");
    return 0;
}
