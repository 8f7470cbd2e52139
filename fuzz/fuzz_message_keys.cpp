// A recipient of a message of CMS, opened with keys of every kind that the seeds were made with: what opens
// does so again, with a key of the length that was asked for. Derivations are short.
#include <tlxpki/cms_keys.h>

#include "identity.hpp"

namespace {

using fuzz::Held;
using fuzz::identity;
using fuzz::require;

constexpr std::uint32_t kMostIterations = 1000;
constexpr std::uint8_t kSecret[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                                    16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31};

/// Keys whose private octets are those of kSecret.
struct Keys {
    Held<free_ASYMMETRIC_KEY> ecdsa{new_ASYMMETRIC_KEY()};
    Held<free_ASYMMETRIC_KEY> xdh{new_ASYMMETRIC_KEY()};

    Keys() {
        ECDSA_KEY *point = nullptr;
        XDH_KEY *unit = nullptr;
        require(private_binary_to_ECDSA_KEY(TLX_CURVE_P256, kSecret, sizeof kSecret, &point) == 0);
        require(private_binary_to_XDH_KEY(TLX_CURVE_X25519, kSecret, sizeof kSecret, &unit) == 0);
        const Held<free_ECDSA_KEY> owner(point);
        const Held<free_XDH_KEY> other(unit);
        require(set_ASYMMETRIC_KEY(ecdsa.get(), TLX_KEY_ECDSA, point) == 0);
        require(set_ASYMMETRIC_KEY(xdh.get(), TLX_KEY_XDH, unit) == 0);
    }
};

bool is_short(const CMS_RECIPIENT_INFO &recipient) {
    if (recipient.type != TLX_CMS_PASSWORD || recipient.value.pwri->keyDerivationAlgorithm == nullptr)
        return true;
    CMS_PBKDF2_PARAM *param = nullptr;
    Seq_to_CMS_PBKDF2_PARAM(recipient.value.pwri->keyDerivationAlgorithm->parameters, &param);
    const Held<free_CMS_PBKDF2_PARAM> owner(param);
    return param == nullptr || param->iterationCount <= kMostIterations;
}

std::string open(const CMS_RECIPIENT_INFO &recipient, const ASYMMETRIC_KEY *key, std::uint32_t expected) {
    CMS_KEY_HOLDER holder = {};
    holder.private_key = key;
    holder.kek = kSecret;
    holder.kek_len = 16;
    holder.password = kSecret;
    holder.password_len = 8;
    std::uint8_t octets[TLX_CMS_KEY_MAX_LENGTH] = {};
    std::uint32_t len = sizeof octets;
    const std::uint32_t status = open_CMS_RECIPIENT_INFO(&recipient, &holder, expected, octets, &len);
    require(status == 0 ? expected == 0 || len == expected : len == 0);
    return std::to_string(status) + ":" + std::string(octets, octets + len);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const Keys keys;
    void *record = nullptr;
    readDER_from_Buffer(&record, TLX_DECODER(Seq_to_CMS_RECIPIENT_INFO), data,
                        static_cast<std::uint32_t>(size));
    const Held<free_CMS_RECIPIENT_INFO> recipient(static_cast<CMS_RECIPIENT_INFO *>(record));
    if (recipient == nullptr || !is_short(*recipient)) return 0;
    open(*recipient, identity().key.get(), 0);
    open(*recipient, identity().key.get(), 16);
    for (const ASYMMETRIC_KEY *key : {keys.ecdsa.get(), keys.xdh.get()}) {
        const std::string opened = open(*recipient, key, 0);
        require(open(*recipient, key, 0) == opened);
    }
    return 0;
}
