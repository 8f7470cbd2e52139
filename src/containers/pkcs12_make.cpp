// Making PKCS #12 files.
#include <tlxcrypto/digest.h>
#include <tlxpki/objects.h>

#include <optional>

#include "asn1/utf8.hpp"
#include "containers/pkcs12_entries.hpp"
#include "containers/pkcs12_mac.hpp"
#include "containers/pkcs12_password.hpp"
#include "der/list_items.hpp"
#include "keys/key_encryption.hpp"
#include "message/attribute_order.hpp"
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

constexpr u32 kIterations = 65'536;
constexpr u32 kMostIterations = 10'000'000;
constexpr u32 kVersion = 3;

/// A scheme, or none for no encryption.
using Scheme = std::optional<PbeChoice>;

/// What a file is made with.
struct Protection {
    Scheme keys;
    Scheme others;
    u32 iterations = kIterations;
    u32 mac_digest = TLX_DIGEST_SHA256;
};

bool choose(const char *name, const P12_SETTINGS &settings, u32 iterations, Scheme &scheme) noexcept {
    if (name != nullptr && std::string_view(name) == "none") return true;
    scheme.emplace();
    scheme->iterations = iterations;
    return choose_pbe(name, settings.cipher, settings.prf, *scheme);
}

u32 read_settings(const P12_SETTINGS &settings, Protection &protection) noexcept {
    if (settings.iterations > kMostIterations) return 0x4D320047;
    if (settings.iterations != 0) protection.iterations = settings.iterations;
    if (settings.macDigest != 0) protection.mac_digest = settings.macDigest;
    const bool known = choose(settings.keyScheme, settings, protection.iterations, protection.keys) &&
                       choose(settings.safeScheme, settings, protection.iterations, protection.others) &&
                       (protection.mac_digest == TLX_P12_NO_MAC || makes_codes(protection.mac_digest));
    return known ? 0 : 0x4D320048;
}

Owned<OBJECT_IDENTIFIER> identifier(std::string_view dotted) noexcept {
    return Owned<OBJECT_IDENTIFIER>(text_to_OBJECT_IDENTIFIER(dotted.data()));
}

P12_ENTRY *entry_at(const P12_ENTRIES &entries, i32 index) noexcept {
    return item_at<P12_ENTRY>(&entries, index);
}

bool is_writable(const P12_ENTRIES &entries, const P12_ENTRY *entry) noexcept {
    if (entry == nullptr || entry->value == nullptr) return false;
    if (entry->kind == TLX_P12_SECRET && entry->type == nullptr) return false;
    if (entry->kind < TLX_P12_PRIVATE_KEY || entry->kind > TLX_P12_SECRET) return false;
    if (entry->kind != TLX_P12_CERTIFICATE || entry->owner < 0) return true;
    const P12_ENTRY *owner = entry_at(entries, entry->owner);
    return owner != nullptr && owner->kind == TLX_P12_PRIVATE_KEY;
}

// ---- Attributes ----

/// BMPString of a text in UTF-8. Null for another text and when memory runs out.
Owned<ASN1_STRING> bmp_of(const UTF8_STRING &name) noexcept {
    const Bytes text = octets_of(&name);
    const PasswordUnits units(text, PasswordUnits::From::utf8);
    if (!units || !is_utf8(text)) return nullptr;
    return Owned<ASN1_STRING>(new_string(TLX_TAG_BMP_STRING, units.bytes().first(units.bytes().size() - 2)));
}

bool add_attribute(X509_ATTRIBUTES *attributes, std::string_view type, const ASN1_STRING *value) noexcept {
    const auto oid = identifier(type);
    return oid != nullptr && value != nullptr &&
           add_X509_ATTRIBUTES_child_OID(attributes, oid.get(), static_cast<u32>(value->type), value, -1) ==
               0;
}

Owned<ASN1_STRING> digest_of(const P12_ENTRY &cert) noexcept {
    u8 digest[TLX_DIGEST_MAX_LENGTH];
    u32 length = 0;
    const Bytes octets = octets_of(cert.value);
    const u32 failed =
        Digest(TLX_DIGEST_SHA1, octets.data(), static_cast<u32>(octets.size()), digest, &length);
    return Owned<ASN1_STRING>(failed != 0 ? nullptr : new_string(TLX_TAG_OCTET_STRING, {digest, length}));
}

/// Gives keys and their certificates the same id. False when memory runs out.
bool share_ids(P12_ENTRIES &entries) noexcept {
    const auto for_each_pair = [&](auto use) {
        bool done = true;
        for (u32 i = 0; i < entries.count && done; ++i) {
            P12_ENTRY *cert = entry_at(entries, static_cast<i32>(i));
            if (cert->kind == TLX_P12_CERTIFICATE && cert->owner >= 0) {
                done = use(*cert, *entry_at(entries, cert->owner));
            }
        }
        return done;
    };
    const auto copy = [](const P12_ENTRY &from, P12_ENTRY &to) {
        if (to.localKeyId == nullptr) to.localKeyId = dup_ASN1_STRING(from.localKeyId);
        return to.localKeyId != nullptr;
    };
    return for_each_pair([&](P12_ENTRY &cert, P12_ENTRY &key) {
               if (cert.localKeyId != nullptr) return copy(cert, key);
               if (key.localKeyId == nullptr) key.localKeyId = digest_of(cert).release();
               return key.localKeyId != nullptr;
           }) &&
           for_each_pair([&](P12_ENTRY &cert, P12_ENTRY &key) { return copy(key, cert); });
}

/// friendlyName and localKeyId. 0, 0x4D320103 or 0x4D32003C.
u32 write_attributes(const P12_ENTRY &entry, P12_SAFE_BAG &bag) noexcept {
    if (entry.friendlyName == nullptr && entry.localKeyId == nullptr) return 0;
    bag.bagAttributes = new_X509_ATTRIBUTES();
    if (bag.bagAttributes == nullptr) return 0x4D32003C;
    if (entry.friendlyName != nullptr) {
        if (!is_utf8(octets_of(entry.friendlyName))) return 0x4D320103;
        const auto name = bmp_of(*entry.friendlyName);
        if (!add_attribute(bag.bagAttributes, kFriendlyName, name.get())) return 0x4D32003C;
    }
    if (entry.localKeyId != nullptr && !add_attribute(bag.bagAttributes, kLocalKeyId, entry.localKeyId)) {
        return 0x4D32003C;
    }
    return sort_attributes(bag.bagAttributes) ? 0 : 0x4D32003C;
}

// ---- Bags ----

/// The value of an entry as an element; false for other octets.
bool view_value(const P12_ENTRY &entry, Element &element) noexcept {
    const Bytes octets = octets_of(entry.value);
    return read_element(octets, element) && element.whole.size() == octets.size();
}

u32 write_key(const P12_ENTRY &entry, const Scheme &scheme, const PbePassword &password,
              P12_SAFE_BAG &bag) noexcept {
    if (!scheme) {
        Element element;
        if (!view_value(entry, element)) return 0x4D320103;
        bag.bagId = identifier(kKeyBag).release();
        bag.bagValue = make_node(element);
        return bag.bagId != nullptr && bag.bagValue != nullptr ? 0 : 0x4D32003C;
    }
    const Owned<PKCS8> container(new_PKCS8());
    if (!container) return 0x4D32003C;
    container->encryptionAlgorithm = new_X509_ALGO_IDENTIFIER();
    if (container->encryptionAlgorithm == nullptr) return 0x4D32003C;
    container->encryptedData =
        encrypt_pbe(*scheme, password, octets_of(entry.value), *container->encryptionAlgorithm).release();
    if (container->encryptedData == nullptr) return 0x4D32003C;
    bag.bagId = identifier(kShroudedKeyBag).release();
    const u32 failed = P8_ENCRYPTED_KEY_to_Seq(container.get(), &bag.bagValue);
    return bag.bagId != nullptr && failed == 0 ? 0 : 0x4D32003C;
}

/// A certificate or a revocation list.
template <typename Bag>
u32 write_typed(const P12_ENTRY &entry, std::string_view bag_id, std::string_view type,
                OBJECT_IDENTIFIER *Bag::*type_member, ASN1_STRING *Bag::*value, P12_SAFE_BAG &bag) noexcept {
    const Owned<Bag> held(TLX_NEW(Bag));
    if (!held) return 0x4D32003C;
    held.get()->*type_member = identifier(type).release();
    held.get()->*value = new_string(TLX_TAG_OCTET_STRING, octets_of(entry.value));
    bag.bagId = identifier(bag_id).release();
    Encoder encoder;
    Codec<Bag>::encode(encoder, held.get());
    bag.bagValue = encoder.to_node();
    return bag.bagId != nullptr && bag.bagValue != nullptr ? 0 : 0x4D32003C;
}

u32 write_secret(const P12_ENTRY &entry, P12_SAFE_BAG &bag) noexcept {
    Element element;
    if (!view_value(entry, element)) return 0x4D320103;
    const Owned<P12_SECRET_BAG> secret(new_P12_SECRET_BAG());
    if (!secret) return 0x4D32003C;
    secret->secretTypeId = dup_OBJECT_IDENTIFIER(entry.type);
    secret->secretValue = new_string(element.tag, element.contents);
    bag.bagId = identifier(kSecretBag).release();
    constexpr std::size_t kHeaders = 256;
    SecretEncoder encoder;
    encoder.buffer().reserve(element.whole.size() + kHeaders);
    Codec<P12_SECRET_BAG>::encode(encoder, secret.get());
    bag.bagValue = encoder.to_node();
    return bag.bagId != nullptr && bag.bagValue != nullptr ? 0 : 0x4D32003C;
}

u32 write_bag(const P12_ENTRY &entry, const Scheme &scheme, const PbePassword &password,
              P12_SAFE_BAG &bag) noexcept {
    if (const u32 status = write_attributes(entry, bag); status != 0) return status;
    switch (entry.kind) {
        case TLX_P12_PRIVATE_KEY:
            return write_key(entry, scheme, password, bag);
        case TLX_P12_CERTIFICATE:
            return write_typed(entry, kCertBag, kX509Certificate, &P12_CERT_BAG::certId,
                               &P12_CERT_BAG::certValue, bag);
        case TLX_P12_CRL:
            return write_typed(entry, kCrlBag, kX509Crl, &P12_CRL_BAG::crlId, &P12_CRL_BAG::crlValue, bag);
        default:
            return write_secret(entry, bag);
    }
}

// ---- Parts ----

bool is_key(const P12_ENTRY &entry) noexcept {
    return entry.kind == TLX_P12_PRIVATE_KEY;
}

/// Writes the SafeContents of the private keys, or of everything else. `out` has its room made beforehand,
/// because it may hold secrets in the open.
u32 write_contents(const P12_ENTRIES &entries, bool keys, const Scheme &scheme, const PbePassword &password,
                   Encoder &out) noexcept {
    constexpr std::size_t kAroundValue = 512;
    std::size_t room = kAroundValue;
    const OwnedSafeContents contents(new_P12_SAFE_CONTENTS());
    if (contents == nullptr) return 0x4D32003C;
    for (u32 i = 0; i < entries.count; ++i) {
        const P12_ENTRY &entry = *entry_at(entries, static_cast<i32>(i));
        if (is_key(entry) != keys) continue;
        Owned<P12_SAFE_BAG> bag(new_P12_SAFE_BAG());
        if (!bag) return 0x4D32003C;
        if (const u32 status = write_bag(entry, scheme, password, *bag); status != 0) return status;
        if (push_STACK_value(contents.get(), bag.get()) != 0) return 0x4D32003C;
        static_cast<void>(bag.release());
        room += octets_of(entry.value).size() + 2 * octets_of(entry.friendlyName).size() +
                octets_of(entry.localKeyId).size() + kAroundValue;
    }
    out.buffer().reserve(room);
    SafeContents::encode(out, contents.get());
    return out.ok() ? 0 : 0x4D320103;
}

Owned<P7_CONTENT_INFO> data_of(Bytes octets) noexcept {
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    if (!info || set_PKCS7_Type(info.get(), TLX_OID_PKCS7_DATA) != 0) return nullptr;
    info->content.data = new_string(TLX_TAG_OCTET_STRING, octets);
    return info->content.data == nullptr ? nullptr : std::move(info);
}

Owned<P7_CONTENT_INFO> encrypted_data_of(Bytes octets, const PbeChoice &choice,
                                         const PbePassword &password) noexcept {
    Owned<P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    Owned<P7_ENCRYPTED_CONTENT_INFO> encrypted(new_P7_ENCRYPTED_CONTENT_INFO());
    if (!info || !encrypted || set_PKCS7_Type(info.get(), TLX_OID_PKCS7_ENCRYPTED_DATA) != 0) return nullptr;
    encrypted->contentType = index_to_OBJECT_IDENTIFIER(TLX_OID_PKCS7_DATA);
    encrypted->contentEncryptionAlgorithm = new_X509_ALGO_IDENTIFIER();
    if (encrypted->contentType == nullptr || encrypted->contentEncryptionAlgorithm == nullptr) return nullptr;
    encrypted->encryptedContent =
        encrypt_pbe(choice, password, octets, *encrypted->contentEncryptionAlgorithm).release();
    if (encrypted->encryptedContent == nullptr) return nullptr;
    info->content.encryptedData->encryptedContentInfo = encrypted.release();
    return info;
}

/// Appends one part of the file, unless there is nothing for it.
u32 add_part(const P12_ENTRIES &entries, bool keys, const Protection &protection, const PbePassword &password,
             P12_AUTHENTICATED_SAFE &safe) noexcept {
    u32 count = 0;
    for (u32 i = 0; i < entries.count; ++i) {
        if (is_key(*entry_at(entries, static_cast<i32>(i))) == keys) ++count;
    }
    if (count == 0) return 0;
    SecretEncoder contents;
    const u32 status = write_contents(entries, keys, protection.keys, password, contents);
    if (status != 0) return status;
    const bool in_the_open = keys || !protection.others;
    auto info = in_the_open ? data_of(contents.bytes())
                            : encrypted_data_of(contents.bytes(), *protection.others, password);
    if (!info || push_STACK_value(&safe, info.get()) != 0) return 0x4D32003C;
    static_cast<void>(info.release());
    return 0;
}

u32 make_file(P12_ENTRIES &entries, const Protection &protection, const PbePassword &password,
              P12_PFX &pfx) noexcept {
    const OwnedAuthenticatedSafe safe(new_P12_AUTHENTICATED_SAFE());
    if (safe == nullptr || !share_ids(entries)) return 0x4D32003C;
    for (const bool keys : {false, true}) {
        const u32 status = add_part(entries, keys, protection, password, *safe);
        if (status != 0) return status;
    }
    Encoder encoder;
    AuthenticatedSafe::encode(encoder, safe.get());
    pfx.version = new_BIGINT();
    if (!encoder.ok() || pfx.version == nullptr || set_BIGINT_word(pfx.version, kVersion) != 0) {
        return 0x4D32003C;
    }
    pfx.authSafe = data_of(encoder.bytes()).release();
    if (pfx.authSafe == nullptr) return 0x4D32003C;
    if (protection.mac_digest == TLX_P12_NO_MAC) return 0;
    return make_mac(pfx, password, protection.iterations, protection.mac_digest) ? 0 : 0x4D32003C;
}

}  // namespace

uint32_t make_PKCS12(const P12_ENTRIES *entries, const P12_SETTINGS *settings, const char *password,
                     uint32_t password_len, P12_PFX **out) {
    if (entries == nullptr || out == nullptr || (password == nullptr && password_len != 0)) return 0x4D320049;
    Protection protection;
    const P12_SETTINGS usual = {};
    if (const u32 status = read_settings(settings == nullptr ? usual : *settings, protection); status != 0) {
        return status;
    }
    for (u32 i = 0; i < entries->count; ++i) {
        if (!is_writable(*entries, entry_at(*entries, static_cast<i32>(i)))) return 0x4D32002B;
    }
    const PasswordForms forms({reinterpret_cast<const u8 *>(password), password_len});
    const OwnedEntries copy(dup_P12_ENTRIES(entries));
    Owned<P12_PFX> pfx(new_P12_PFX());
    if (!forms.ok() || copy == nullptr || !pfx) return 0x4D32003C;
    if (const u32 status = make_file(*copy, protection, forms.at(0), *pfx); status != 0) return status;
    *out = pfx.release();
    return 0;
}
