// Which private key a certificate of a PKCS #12 file belongs to.
#include <tlxcrypto/digest.h>
#include <tlxcrypto/rsa.h>

#include <algorithm>
#include <array>

#include "containers/pkcs12_entries.hpp"
#include "der/list_items.hpp"
#include "keys/key_file_records.hpp"

using namespace tlx;

namespace {

/// What a key and its certificates have in common, as a digest.
using Mark = std::array<u8, 32>;

/// False without octets, and when memory runs out.
bool make_mark(Bytes octets, Mark &mark) noexcept {
    u32 length = 0;
    return !octets.empty() && Digest(TLX_DIGEST_SHA256, octets.data(), static_cast<u32>(octets.size()),
                                     mark.data(), &length) == 0;
}

bool mark_of_modulus(const ASYMMETRIC_KEY *key, Mark &mark) noexcept {
    const RSA_UNIT *unit = rsa_unit(key);
    const BIGINT *modulus = unit == nullptr ? nullptr : get_RSA_UNIT_number(unit, TLX_RSA_N);
    Encoder encoder;
    if (modulus != nullptr) encoder.integer(modulus);
    return make_mark(encoder.bytes(), mark);
}

template <typename T>
Owned<T> decoded(const P12_ENTRY &entry) noexcept {
    Element element;
    T *record = nullptr;
    if (read_element(octets_of(entry.value), element)) static_cast<void>(Codec<T>::decode(element, &record));
    return Owned<T>(record);
}

bool mark_by_id(const P12_ENTRY &entry, Mark &mark) noexcept {
    return make_mark(octets_of(entry.localKeyId), mark);
}

bool mark_by_key(const P12_ENTRY &entry, Mark &mark) noexcept {
    if (entry.kind == TLX_P12_PRIVATE_KEY) {
        const auto info = decoded<P8_PRIV_KEY_INFO>(entry);
        return info != nullptr && mark_of_modulus(info->privateKey, mark);
    }
    const auto cert = decoded<X509_CERT>(entry);
    const X509_PUBKEY *pubkey = cert == nullptr ? nullptr : get_X509_SPKI(cert.get());
    return pubkey != nullptr && mark_of_modulus(pubkey->key, mark);
}

struct Known {
    Mark mark;
    i32 index;

    auto operator<=>(const Known &) const noexcept = default;
};

/// Gives each certificate without an owner the first private key with the same mark. False when memory runs
/// out.
bool match(P12_ENTRIES &entries, bool (*mark_of)(const P12_ENTRY &, Mark &) noexcept) noexcept {
    const OwnedOctets<Known> room(
        static_cast<Known *>(TLX_ALLOCATE_ZEROED(entries.count + std::size_t{1}, sizeof(Known))));
    if (room == nullptr) return false;
    std::size_t count = 0;
    for (u32 i = 0; i < entries.count; ++i) {
        const auto *entry = static_cast<const P12_ENTRY *>(entries.values[i]);
        Known &next = room.get()[count];
        if (entry->kind != TLX_P12_PRIVATE_KEY || !mark_of(*entry, next.mark)) continue;
        next.index = static_cast<i32>(i);
        ++count;
    }
    const std::span<Known> keys(room.get(), count);
    std::ranges::sort(keys);
    for (u32 i = 0; i < entries.count && !keys.empty(); ++i) {
        auto *entry = static_cast<P12_ENTRY *>(entries.values[i]);
        Known wanted = {};
        if (entry->kind != TLX_P12_CERTIFICATE || entry->owner >= 0 || !mark_of(*entry, wanted.mark))
            continue;
        const auto found = std::ranges::lower_bound(keys, wanted);
        if (found != keys.end() && found->mark == wanted.mark) entry->owner = found->index;
    }
    return true;
}

}  // namespace

bool tlx::find_owners(P12_ENTRIES &entries) noexcept {
    return match(entries, mark_by_id) && match(entries, mark_by_key);
}
