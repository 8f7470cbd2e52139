// Opening PKCS #12 files.
#include "asn1/string_text.hpp"
#include "asn1/utf8.hpp"
#include "containers/pkcs12_entries.hpp"
#include "containers/pkcs12_mac.hpp"
#include "containers/pkcs12_password.hpp"
#include "der/list_items.hpp"
#include "keys/key_file_records.hpp"
#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

/// Bags in bags that lie deeper are not read.
constexpr u32 kDeepestBag = 16;

u32 status_of(PbeOutcome outcome) noexcept {
    switch (outcome) {
        case PbeOutcome::done:
            return 0;
        case PbeOutcome::wrong_password:
            return 0x4D310012;
        case PbeOutcome::bad_length:
        case PbeOutcome::broken:
            return 0x4D31002B;
        case PbeOutcome::too_much_work:
            return 0x4D310047;
        case PbeOutcome::unsupported:
            return 0x4D310048;
        default:
            return 0x4D30003C;
    }
}

/// Whether a scheme takes the password in 16-bit characters.
bool takes_units(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    const PbeAlgorithm *known =
        algorithm == nullptr ? nullptr : find_pbe_algorithm(text_of(algorithm->algorithm));
    return known != nullptr && (known->family == PbeFamily::pkcs12 || known->family == PbeFamily::pkcs12_rc4);
}

/// Whether octets begin with a PrivateKeyInfo, which becomes a view.
bool is_private_key(Bytes octets, Bytes &key) noexcept {
    Element element;
    Element version;
    if (!read_element(octets, element) || element.tag != kSequence) return false;
    key = element.whole;
    return Cursor(element).next(TLX_TAG_INTEGER, version);
}

/// The first value of an attribute of a bag, when it has the form of a string; null otherwise.
const ASN1_STRING *attribute_value(const P12_SAFE_BAG &bag, std::string_view type) noexcept {
    const i32 index = index_by_type(bag.bagAttributes, &X509_ATTRIBUTE::type, type, -1);
    const X509_ATTRIBUTE *attribute = get_X509_ATTRIBUTES_child(bag.bagAttributes, index);
    const u32 value_type = get_X509_ATTRIBUTE_data_type(attribute, 0);
    if (index < 0 || value_type == 0xFFFFFFFF || (value_type & kConstructed) != 0) return nullptr;
    return static_cast<const ASN1_STRING *>(get_X509_ATTRIBUTE_data(attribute, 0));
}

u32 unit_at(Bytes units, std::size_t at) noexcept {
    return at + 2 <= units.size() ? u32{units[at]} << 8 | units[at + 1] : 0;
}

/// Appends big-endian UTF-16 as UTF-8. False for part of a unit, and for a surrogate without its other half.
bool append_utf16(Buffer &out, Bytes units) noexcept {
    for (std::size_t at = 0; at < units.size(); at += 2) {
        u32 code_point = unit_at(units, at);
        if (units.size() - at < 2 || (code_point >= 0xDC00 && code_point < 0xE000)) return false;
        if (code_point >= 0xD800 && code_point < 0xDC00) {
            at += 2;
            const u32 low = unit_at(units, at);
            if (low < 0xDC00 || low >= 0xE000) return false;
            code_point = 0x10000 + ((code_point - 0xD800) << 10 | (low - 0xDC00));
        }
        append_utf8(out, code_point);
    }
    return true;
}

/// A name in UTF-8; nothing for a value that is no text. False when memory runs out.
bool read_name(const ASN1_STRING *value, UTF8_STRING *&name) noexcept {
    if (value == nullptr) return true;
    Buffer text;
    const Bytes octets = octets_of(value);
    const bool read = value->type == TLX_TAG_BMP_STRING ? append_utf16(text, octets)
                                                        : append_text(text, value->type, octets);
    if (!read) return true;
    if (text.ok()) name = new_string(TLX_TAG_UTF8_STRING, text.bytes());
    return name != nullptr;
}

/// Reads what a file holds. Functions return 0, or a status that ends the reading.
class Reader {
  public:
    Reader(PasswordForms &forms, WorkBudget &budget, P12_ENTRIES &entries) noexcept
        : forms_(forms), budget_(budget), entries_(entries) {}

    u32 read_part(const P7_CONTENT_INFO &info) noexcept {
        const u32 type = content_type(&info);
        if (type == oid::kPkcs7Data && info.content.any != nullptr) {
            return read_plain(octets_of(info.content.data), info.contentType);
        }
        const P7_ENCRYPTED_DATA *data =
            type == oid::kPkcs7EncryptedData ? info.content.encryptedData : nullptr;
        if (data == nullptr || data->encryptedContentInfo == nullptr) {
            return add_unread(0x4D310048, info.contentType);
        }
        const P7_ENCRYPTED_CONTENT_INFO &encrypted = *data->encryptedContentInfo;
        OwnedSafeContents contents;
        const u32 status =
            decrypt(encrypted.contentEncryptionAlgorithm, octets_of(encrypted.encryptedContent),
                    [&](Bytes plain) { return decode(plain, contents); });
        if (status != 0) return add_unopened(status, encrypted.contentEncryptionAlgorithm);
        return read_bags(*contents, 0);
    }

  private:
    static bool decode(const Element &element, OwnedSafeContents &contents) noexcept {
        P12_SAFE_CONTENTS *list = nullptr;
        const bool decoded = element.tag == kSequence && SafeContents::decode(element, &list) == 0;
        contents.reset(list);
        return decoded;
    }
    static bool decode(Bytes octets, OwnedSafeContents &contents) noexcept {
        Element element;
        return read_element(octets, element) && decode(element, contents);
    }

    u32 read_plain(Bytes octets, const OBJECT_IDENTIFIER *type) noexcept {
        OwnedSafeContents contents;
        return decode(octets, contents) ? read_bags(*contents, 0) : add_unread(0x4D310104, type);
    }

    u32 read_bags(const P12_SAFE_CONTENTS &contents, u32 depth) noexcept {
        for (u32 i = 0; i < contents.count; ++i) {
            const u32 status = read_bag(*static_cast<const P12_SAFE_BAG *>(contents.values[i]), depth);
            if (status != 0) return status;
        }
        return 0;
    }

    u32 read_bag(const P12_SAFE_BAG &bag, u32 depth) noexcept {
        Element value;
        if (!view_node(bag.bagValue, value)) return add_unread(0x4D310104, bag.bagId, &bag);
        const std::string_view type = text_of(bag.bagId);
        if (type == kKeyBag) return read_key(value, bag);
        if (type == kShroudedKeyBag) return read_shrouded_key(value, bag);
        if (type == kCertBag) {
            return read_typed(value, bag, TLX_P12_CERTIFICATE, kX509Certificate, &P12_CERT_BAG::certId,
                              &P12_CERT_BAG::certValue);
        }
        if (type == kCrlBag) {
            return read_typed(value, bag, TLX_P12_CRL, kX509Crl, &P12_CRL_BAG::crlId, &P12_CRL_BAG::crlValue);
        }
        if (type == kSecretBag) return read_secret(value, bag);
        if (type != kSafeContentsBag || depth >= kDeepestBag) return add_unread(0x4D310048, bag.bagId, &bag);
        OwnedSafeContents contents;
        if (!decode(value, contents)) return add_unread(0x4D310104, bag.bagId, &bag);
        return read_bags(*contents, depth + 1);
    }

    u32 read_key(const Element &value, const P12_SAFE_BAG &bag) noexcept {
        constexpr std::size_t kHeader = 8;
        SecretEncoder key;
        key.buffer().reserve(value.length_octets.size() + value.contents.size() + kHeader);
        key.node(bag.bagValue);
        return key.ok() ? add(TLX_P12_PRIVATE_KEY, key.bytes(), bag) : 0x4D30003C;
    }

    u32 read_shrouded_key(const Element &value, const P12_SAFE_BAG &bag) noexcept {
        P8_ENCRYPTED_KEY *record = nullptr;
        if (Codec<PKCS8>::decode(value, &record) != 0) return add_unread(0x4D310104, bag.bagId, &bag);
        const Owned<PKCS8> container(record);
        u32 added = 0;
        const u32 status =
            decrypt(record->encryptionAlgorithm, octets_of(record->encryptedData), [&](Bytes plain) {
                Bytes key;
                const bool found = is_private_key(plain, key);
                if (found) added = add(TLX_P12_PRIVATE_KEY, key, bag);
                return found;
            });
        return status == 0 ? added : add_unopened(status, record->encryptionAlgorithm, &bag);
    }

    /// A certificate or a revocation list in the octets of a bag of its own.
    template <typename Bag>
    u32 read_typed(const Element &value, const P12_SAFE_BAG &bag, u32 kind, std::string_view wanted,
                   OBJECT_IDENTIFIER *Bag::*type, ASN1_STRING *Bag::*octets) noexcept {
        Bag *record = nullptr;
        if (Codec<Bag>::decode(value, &record) != 0) return add_unread(0x4D310104, bag.bagId, &bag);
        const Owned<Bag> held(record);
        const bool known =
            text_of(record->*type) == wanted && (record->*octets)->type == TLX_TAG_OCTET_STRING;
        return known ? add(kind, octets_of(record->*octets), bag)
                     : add_unread(0x4D310048, record->*type, &bag);
    }

    u32 read_secret(const Element &value, const P12_SAFE_BAG &bag) noexcept {
        P12_SECRET_BAG *record = nullptr;
        if (Codec<P12_SECRET_BAG>::decode(value, &record) != 0) {
            return add_unread(0x4D310104, bag.bagId, &bag);
        }
        const Owned<P12_SECRET_BAG> secret(record);
        constexpr std::size_t kHeader = 8;
        SecretEncoder element;
        element.buffer().reserve(octets_of(record->secretValue).size() + kHeader);
        element.string(record->secretValue, static_cast<u8>(record->secretValue->type));
        return element.ok() ? add(TLX_P12_SECRET, element.bytes(), bag, record->secretTypeId) : 0x4D30003C;
    }

    /// Decrypts under each form of the password, until use(plain) takes what comes out. 0 or why not.
    template <typename Use>
    u32 decrypt(const X509_ALGO_IDENTIFIER *algorithm, Bytes in, Use use) noexcept {
        SecretBytes plain(in.size());
        if (!plain) return 0x4D30003C;
        u32 status = 0x4D310012;
        const std::size_t forms = takes_units(algorithm) ? forms_.count() : 1;
        for (std::size_t i = 0; i < forms; ++i) {
            u32 len = 0;
            const PbeOutcome outcome = decrypt_pbe(algorithm, forms_.at(i), in, plain.data(), len, budget_);
            if (outcome == PbeOutcome::done) {
                if (use(Bytes(plain.data(), len))) return 0;
                status = 0x4D310104;
            } else if (outcome != PbeOutcome::wrong_password) {
                return status_of(outcome);
            }
        }
        return status;
    }

    u32 add(u32 kind, Bytes value, const P12_SAFE_BAG &bag,
            const OBJECT_IDENTIFIER *type = nullptr) noexcept {
        const auto size = static_cast<u32>(value.size());
        const u32 failed = add_PKCS12_entry(&entries_, kind, type, value.data(), size, nullptr, -1);
        return failed != 0 ? 0x4D30003C : name_last(bag);
    }

    /// `status` is one of an entry, or ends the reading when memory ran out.
    u32 add_unread(u32 status, const OBJECT_IDENTIFIER *type, const P12_SAFE_BAG *bag = nullptr) noexcept {
        if (status == 0x4D30003C) return status;
        Owned<P12_ENTRY> entry(new_P12_ENTRY());
        if (!entry) return 0x4D30003C;
        entry->kind = TLX_P12_UNREAD;
        entry->status = status;
        if (type != nullptr) entry->type = dup_OBJECT_IDENTIFIER(type);
        if ((type != nullptr && entry->type == nullptr) || push_STACK_value(&entries_, entry.get()) != 0) {
            return 0x4D30003C;
        }
        static_cast<void>(entry.release());
        return bag == nullptr ? 0 : name_last(*bag);
    }

    /// The same of what an algorithm did not decrypt.
    u32 add_unopened(u32 status, const X509_ALGO_IDENTIFIER *algorithm,
                     const P12_SAFE_BAG *bag = nullptr) noexcept {
        if (status != 0x4D310048 || algorithm == nullptr) {
            return add_unread(status, get_X509_ALGO_IDENTIFIER_OID(algorithm), bag);
        }
        const Owned<OBJECT_IDENTIFIER> unsupported = find_unsupported(*algorithm);
        return unsupported ? add_unread(status, unsupported.get(), bag) : 0x4D30003C;
    }

    /// Gives the last entry the attributes of its bag.
    u32 name_last(const P12_SAFE_BAG &bag) noexcept {
        auto &entry = *static_cast<P12_ENTRY *>(entries_.values[entries_.count - 1]);
        if (!read_name(attribute_value(bag, kFriendlyName), entry.friendlyName)) return 0x4D30003C;
        const ASN1_STRING *id = attribute_value(bag, kLocalKeyId);
        if (id == nullptr) return 0;
        entry.localKeyId = dup_ASN1_STRING(id);
        return entry.localKeyId == nullptr ? 0x4D30003C : 0;
    }

    PasswordForms &forms_;
    WorkBudget &budget_;
    P12_ENTRIES &entries_;
};

/// Checks the code, and puts the form of the password that it was made with first.
u32 check_code(const P12_PFX &pfx, PasswordForms &forms, WorkBudget &budget) noexcept {
    MacOutcome outcome = MacOutcome::differs;
    for (std::size_t i = 0; i < forms.count() && outcome == MacOutcome::differs; ++i) {
        outcome = check_mac(pfx, forms.at(i), budget);
        if (outcome == MacOutcome::good) forms.prefer(i);
    }
    switch (outcome) {
        case MacOutcome::good:
        case MacOutcome::missing:
            return 0;
        case MacOutcome::differs:
            return 0x4D300012;
        case MacOutcome::too_much_work:
            return 0x4D300047;
        case MacOutcome::unsupported:
            return 0x4D300048;
        default:
            return 0x4D30003C;
    }
}

u32 read_parts(const P12_PFX &pfx, Reader &reader) noexcept {
    if (content_type(pfx.authSafe) != oid::kPkcs7Data) return 0x4D300048;
    Element element;
    P12_AUTHENTICATED_SAFE *list = nullptr;
    const bool found = pfx.authSafe->content.any != nullptr &&
                       read_element(octets_of(pfx.authSafe->content.data), element) &&
                       element.tag == kSequence;
    if (!found || AuthenticatedSafe::decode(element, &list) != 0) return 0x4D300104;
    const OwnedAuthenticatedSafe parts(list);
    u32 status = 0;
    for (u32 i = 0; i < list->count && status == 0; ++i) {
        status = reader.read_part(*static_cast<const P7_CONTENT_INFO *>(list->values[i]));
    }
    return status;
}

}  // namespace

uint32_t open_PKCS12(const P12_PFX *pfx, const char *password, uint32_t password_len,
                     const char *mac_password, uint32_t mac_password_len, P12_ENTRIES **out) {
    if (pfx == nullptr || out == nullptr) return 0x4D300049;
    if ((password == nullptr && password_len != 0) || (mac_password == nullptr && mac_password_len != 0)) {
        return 0x4D300049;
    }
    PasswordForms forms({reinterpret_cast<const u8 *>(password), password_len});
    PasswordForms mac_forms({reinterpret_cast<const u8 *>(mac_password), mac_password_len});
    OwnedEntries entries(new_P12_ENTRIES());
    if (!forms.ok() || !mac_forms.ok() || entries == nullptr) return 0x4D30003C;
    WorkBudget budget;
    u32 status = check_code(*pfx, mac_password == nullptr ? forms : mac_forms, budget);
    if (status != 0) return status;
    Reader reader(forms, budget, *entries);
    status = read_parts(*pfx, reader);
    if (status != 0) return status;
    if (!find_owners(*entries, budget)) return 0x4D30003C;
    *out = entries.release();
    return 0;
}
