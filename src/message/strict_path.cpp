#include "message/strict_path.hpp"

#include "der/received_octets.hpp"
#include "keyinfo/key_records.hpp"
#include "x509/crl_records.hpp"

namespace tlx {
namespace {

constexpr u32 kNoMemory = 0x5502003C;

using AddCertificate = uint32_t (*)(VERIFY_STORE *, const uint8_t *, uint32_t, uint32_t);

/// Adds what can be read. False when memory runs out.
bool add_all(VERIFY_STORE *store, const X509_CERTIFICATES *certificates, AddCertificate add,
             u32 accepted_faults) noexcept {
    for (u32 i = 0; i < get_STACK_count(certificates); ++i) {
        const auto *cert = static_cast<const X509_CERT *>(certificates->values[i]);
        RecordOctets octets;
        if (cert == nullptr) continue;
        if (!octets.read(*cert)) {
            if (octets.out_of_memory()) return false;
            continue;
        }
        const Bytes der = octets.bytes();
        if (add(store, der.data(), static_cast<u32>(der.size()), accepted_faults) == kNoMemory) return false;
    }
    return true;
}

/// Adds a list, unless it cannot be read. False when memory runs out.
bool add_list(VERIFY_STORE *store, const X509_CRL *list) noexcept {
    Encoder der;
    Codec<X509_CRL>::encode(der, list);
    const Bytes octets = der.bytes();
    if (!der.ok()) return !der.out_of_memory();
    return add_VERIFY_STORE_crl(store, octets.data(), size_of(octets)) != kNoMemory;
}

/// Adds an OCSP response (RFC 5940, section 2.1), unless it cannot be read. False when memory runs out.
bool add_response(VERIFY_STORE *store, const CMS_OTHER_REVOCATION_INFO &info) noexcept {
    Encoder response;
    if (text_of(info.otherRevInfoFormat) != "1.3.6.1.5.5.7.16.2") return true;
    response.node(info.otherRevInfo);
    const Bytes octets = response.bytes();
    if (!response.ok()) return !response.out_of_memory();
    return add_VERIFY_STORE_ocsp(store, octets.data(), size_of(octets)) != kNoMemory;
}

bool add_info(VERIFY_STORE *store, const CMS_REVOCATION_INFO &info) noexcept {
    if (info.value.any == nullptr) return true;
    return info.type == TLX_CMS_CRL ? add_list(store, info.value.crl)
                                    : add_response(store, *info.value.other);
}

/// Adds an anchor, unless it cannot be used. False when memory runs out.
bool add_anchor(VERIFY_STORE *store, const TRUST_ANCHOR &anchor) noexcept {
    Encoder name;
    Encoder key;
    Name::encode(name, anchor.name);
    Codec<X509_PUBKEY>::encode(key, anchor.publicKey);
    if (!name.ok() || !key.ok()) return !name.out_of_memory() && !key.out_of_memory();
    const Bytes subject = name.bytes();
    const Bytes key_info = key.bytes();
    return add_VERIFY_STORE_anchor_key(store, subject.data(), static_cast<u32>(subject.size()),
                                       key_info.data(), static_cast<u32>(key_info.size())) != kNoMemory;
}

}  // namespace

VERIFY_SETTINGS signing_settings(const ASN1_TIME *time) noexcept {
    VERIFY_SETTINGS settings = {};
    settings.time = time;
    settings.purpose = TLX_PURPOSE_SIGNING;
    return settings;
}

Owned<VERIFY_STORE> store_of_anchors(const TRUST_ANCHORS *anchors) noexcept {
    Owned<VERIFY_STORE> store(new_VERIFY_STORE());
    for (u32 i = 0; store && i < get_STACK_count(anchors); ++i) {
        const auto *anchor = static_cast<const TRUST_ANCHOR *>(anchors->values[i]);
        if (anchor != nullptr && !add_anchor(store.get(), *anchor)) store.reset();
    }
    return store;
}

Owned<VERIFY_STORE> store_of_certificates(const X509_CERTIFICATES *anchors, u32 accepted_faults) noexcept {
    Owned<VERIFY_STORE> store(new_VERIFY_STORE());
    if (store && !add_all(store.get(), anchors, add_VERIFY_STORE_anchor, accepted_faults)) store.reset();
    return store;
}

bool StrictPaths::prepare(const X509_CERTIFICATES *pool, const X509_CRLS *lists, const VERIFY_STORE *store,
                          const VERIFY_SETTINGS &settings) noexcept {
    store_ = store;
    settings_ = settings;
    pool_.reset(new_VERIFY_STORE());
    if (!pool_ || !add_all(pool_.get(), pool, add_VERIFY_STORE_certificate, settings.accepted_faults)) {
        return false;
    }
    for (u32 i = 0; i < get_STACK_count(lists); ++i) {
        if (!add_list(pool_.get(), static_cast<const X509_CRL *>(lists->values[i]))) return false;
    }
    return true;
}

bool StrictPaths::add(const CMS_REVOCATION_INFOS *infos) noexcept {
    for (u32 i = 0; i < get_STACK_count(infos); ++i) {
        const auto *info = static_cast<const CMS_REVOCATION_INFO *>(infos->values[i]);
        if (info != nullptr && !add_info(pool_.get(), *info)) return false;
    }
    return true;
}

bool StrictPaths::check(const X509_CERT &cert, const ASN1_TIME *time,
                        P7_SIGNER_REPORT &report) const noexcept {
    RecordOctets octets;
    if (!octets.read(cert) && octets.out_of_memory()) return false;
    const Bytes der = octets.bytes();
    VERIFY_SETTINGS settings = settings_;
    settings.time = time;
    report.pathStatus = verify_CERTIFICATE(store_, pool_.get(), der.data(), static_cast<u32>(der.size()),
                                           &settings, &report.path);
    return report.pathStatus != kNoMemory;
}

}  // namespace tlx
