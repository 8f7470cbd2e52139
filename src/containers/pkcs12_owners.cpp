// Which private key a certificate of a PKCS #12 file belongs to.
#include <tlxcrypto/digest.h>
#include <tlxcrypto/kcdsa.h>
#include <tlxcrypto/rsa.h>

#include <algorithm>
#include <array>

#include "asn1/oid_lookup.hpp"
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

bool mark_of_number(const BIGINT *number, Mark &mark) noexcept {
    Encoder encoder;
    if (number != nullptr) encoder.integer(number);
    return make_mark(encoder.bytes(), mark);
}

/// What the public key of a private one costs, in iterations of a derivation.
constexpr u64 kWorkOfKcdsa = 100'000;

/// y of KCDSA, which a private key gives.
bool mark_of_kcdsa(const KCDSA *unit, WorkBudget &budget, Mark &mark) noexcept {
    if (const BIGINT *y = get_KCDSA_number(unit, TLX_KCDSA_Y); y != nullptr) return mark_of_number(y, mark);
    if (!budget.take(kWorkOfKcdsa)) return false;
    const std::unique_ptr<KCDSA, FreeWith<free_KCDSA>> copy(dup_KCDSA(unit));
    return copy != nullptr && compute_KCDSA_public(copy.get()) == 0 &&
           mark_of_number(get_KCDSA_number(copy.get(), TLX_KCDSA_Y), mark);
}

/// The modulus of RSA, or y of KCDSA.
bool mark_of_unit(const ASYMMETRIC_KEY *key, WorkBudget &budget, Mark &mark) noexcept {
    if (const RSA_UNIT *rsa = rsa_unit(key); rsa != nullptr) {
        return mark_of_number(get_RSA_UNIT_number(rsa, TLX_RSA_N), mark);
    }
    const bool is_kcdsa = key != nullptr && key->kind == TLX_KEY_KCDSA && key->key != nullptr;
    return is_kcdsa && mark_of_kcdsa(static_cast<const KCDSA *>(key->key), budget, mark);
}

/// The x coordinate of a point (SEC 1, section 2.3.3), which the compressed form also has.
bool mark_of_point(Bytes point, Mark &mark) noexcept {
    constexpr u8 kUncompressed = 4;
    if (point.empty()) return false;
    const std::size_t coordinates = point[0] == kUncompressed ? 2 : 1;
    return make_mark(point.subspan(1, (point.size() - 1) / coordinates), mark);
}

bool is_elliptic(const OBJECT_IDENTIFIER *algorithm) noexcept {
    return oid_index(text_of(algorithm)) == oid::kEcPublicKey;
}

// ECPrivateKey ::= SEQUENCE {  -- RFC 5915
//     version        INTEGER { ecPrivkeyVer1(1) },
//     privateKey     OCTET STRING,
//     parameters [0] ECParameters OPTIONAL,
//     publicKey  [1] BIT STRING OPTIONAL }
bool mark_of_elliptic(Bytes key, Mark &mark) noexcept {
    constexpr u8 kPublicKey = kContextSpecific | kConstructed | 1;
    Element sequence;
    Element member;
    Element bits;
    if (!Cursor(key).next(TLX_TAG_SEQUENCE, sequence)) return false;
    for (Cursor members(sequence); members.next(member);) {
        if (member.tag != kPublicKey) continue;
        return Cursor(member).next(TLX_TAG_BIT_STRING, bits) && !bits.contents.empty() &&
               mark_of_point(bits.contents.subspan(1), mark);
    }
    return false;
}

template <typename T>
Owned<T> decoded(const P12_ENTRY &entry) noexcept {
    Element element;
    T *record = nullptr;
    if (read_element(octets_of(entry.value), element)) static_cast<void>(Codec<T>::decode(element, &record));
    return Owned<T>(record);
}

bool mark_by_id(const P12_ENTRY &entry, WorkBudget & /*budget*/, Mark &mark) noexcept {
    return make_mark(octets_of(entry.localKeyId), mark);
}

bool mark_by_key(const P12_ENTRY &entry, WorkBudget &budget, Mark &mark) noexcept {
    if (entry.kind == TLX_P12_PRIVATE_KEY) {
        const auto info = decoded<P8_PRIV_KEY_INFO>(entry);
        if (info == nullptr) return false;
        if (!is_elliptic(get_X509_ALGO_IDENTIFIER_OID(info->otherAlgorithm))) {
            return mark_of_unit(info->privateKey, budget, mark);
        }
        return mark_of_elliptic(octets_of(info->otherKey), mark);
    }
    const auto cert = decoded<X509_CERT>(entry);
    const X509_PUBKEY *pubkey = cert == nullptr ? nullptr : get_X509_SPKI(cert.get());
    if (pubkey == nullptr) return false;
    return is_elliptic(pubkey->algorithm) ? mark_of_point(octets_of(pubkey->subjectPublicKey), mark)
                                          : mark_of_unit(pubkey->key, budget, mark);
}

struct Known {
    Mark mark;
    i32 index;

    auto operator<=>(const Known &) const noexcept = default;  // NOLINT(modernize-use-nullptr)
};

/// Gives each certificate without an owner the first private key with the same mark. False when memory runs
/// out.
bool match(P12_ENTRIES &entries, WorkBudget &budget,
           bool (*mark_of)(const P12_ENTRY &, WorkBudget &, Mark &) noexcept) noexcept {
    const OwnedOctets<Known> room(
        static_cast<Known *>(TLX_ALLOCATE_ZEROED(entries.count + std::size_t{1}, sizeof(Known))));
    if (room == nullptr) return false;
    std::size_t count = 0;
    for (u32 i = 0; i < entries.count; ++i) {
        const auto *entry = static_cast<const P12_ENTRY *>(entries.values[i]);
        Known &next = room.get()[count];
        if (entry->kind != TLX_P12_PRIVATE_KEY || !mark_of(*entry, budget, next.mark)) continue;
        next.index = static_cast<i32>(i);
        ++count;
    }
    const std::span<Known> keys(room.get(), count);
    std::ranges::sort(keys);
    for (u32 i = 0; i < entries.count && !keys.empty(); ++i) {
        auto *entry = static_cast<P12_ENTRY *>(entries.values[i]);
        Known wanted = {};
        if (entry->kind != TLX_P12_CERTIFICATE || entry->owner >= 0) continue;
        if (!mark_of(*entry, budget, wanted.mark)) continue;
        const auto found = std::ranges::lower_bound(keys, wanted);
        if (found != keys.end() && found->mark == wanted.mark) entry->owner = found->index;
    }
    return true;
}

}  // namespace

bool tlx::find_owners(P12_ENTRIES &entries, WorkBudget &budget) noexcept {
    return match(entries, budget, mark_by_id) && match(entries, budget, mark_by_key);
}
