#include "message/enveloped_content.hpp"

#include <algorithm>

#include "keyinfo/digest_identifier.hpp"
#include "keys/pbe.hpp"
#include "message/cms_records.hpp"
#include "message/envelope_key.hpp"

using namespace tlx;

namespace {

using OwnedAlgorithm = Owned<X509_ALGO_IDENTIFIER>;

OwnedAlgorithm decode_algorithm(const Element &element) noexcept {
    X509_ALGO_IDENTIFIER *made = nullptr;
    static_cast<void>(Codec<X509_ALGO_IDENTIFIER>::decode(element, &made));
    return OwnedAlgorithm(made);
}

/// The digest of an HMAC; 0 for another code. Nobody should rely on MD5.
u32 code_digest(const X509_ALGO_IDENTIFIER *algorithm) noexcept {
    const Prf *prf = algorithm == nullptr ? nullptr : find_prf(algorithm);
    return prf == nullptr || prf->digest_id == TLX_DIGEST_MD5 ? 0 : prf->digest_id;
}

/// The key that the caller has, or that of a recipient.
u32 find_key(const MembersBefore &members, const ENVELOPED_MESSAGE_READER_SETTINGS &settings,
             u32 expected_len, OpenedKey &opened, Bytes &key) noexcept {
    if (settings.key != nullptr) {
        key = {settings.key, settings.key_len};
        return 0;
    }
    if (settings.holder == nullptr || members.recipients.tag == 0) return 0x52A0002B;
    const u32 status = open_content_key(members.recipients, *settings.holder, expected_len, opened);
    key = opened.bytes();
    return status;
}

u32 check_content_type(const MessageParser &message, const Element &attributes) noexcept {
    Element value;
    if (attributes.tag == 0) return content_is_data(message) ? 0 : 0x52A2002B;
    if (!find_only_value(attributes, AttributeType::content_type, value)) return 0x52A2002B;
    const bool same =
        value.tag == TLX_TAG_OBJECT_IDENTIFIER && std::ranges::equal(value.contents, message.content_type());
    return same ? 0 : 0x52A20106;
}

}  // namespace

bool tlx::content_is_data(const MessageParser &message) noexcept {
    const MessageLayout *layout = find_layout(message.content_type());
    return layout != nullptr && layout->kind == MessageKind::data;
}

u32 EnvelopedContent::begin(const MessageParser &message,
                            const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept {
    MembersBefore members;
    if (!read_members(message.kind(), message.before_content(), members)) return 0x52A00104;
    is_encrypted_ = message.is_encrypted();
    switch (message.kind()) {
        case MessageKind::digested_data:
            return begin_digest(members.digest_algorithm);
        case MessageKind::authenticated_data:
            return begin_code(members, settings);
        default:
            return begin_decryption(message, members, settings);
    }
}

u32 EnvelopedContent::begin_decryption(const MessageParser &message, const MembersBefore &members,
                                       const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept {
    Cursor info(message.info());
    Element type;
    Element element;
    if (!info.next(type) || !info.next(element)) return 0x52A00104;
    const OwnedAlgorithm identifier = decode_algorithm(element);
    if (!identifier) return 0x52A00104;
    const AlgorithmRead read = read_algorithm(*identifier, algorithm_);
    if (read == AlgorithmRead::ccm) return 0x52A00114;
    const bool authenticates = message.kind() == MessageKind::auth_enveloped_data;
    if (read == AlgorithmRead::unknown || algorithm_.authenticates != authenticates) return 0x52A00104;
    OpenedKey opened;
    Bytes key;
    const u32 status = find_key(members, settings, algorithm_.key_length(), opened, key);
    if (status != 0) return status;
    if (key.size() != algorithm_.key_length()) return 0x52A00028;
    return cipher_.start(algorithm_, key.data(), 0) ? 0 : 0x52A0003C;
}

u32 EnvelopedContent::begin_digest(const Element &algorithm) noexcept {
    const OwnedAlgorithm identifier = decode_algorithm(algorithm);
    const u32 digest_id = digest_of(identifier.get());
    if (get_DigestLength(digest_id) == 0) return 0x52A00104;
    return code_.start_digest(digest_id) ? 0 : 0x52A0003C;
}

/// Whether attributes follow, which the code is over then, nobody knows before the end.
u32 EnvelopedContent::begin_code(const MembersBefore &members,
                                 const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept {
    const OwnedAlgorithm identifier = decode_algorithm(members.mac_algorithm);
    const u32 digest_id = code_digest(identifier.get());
    if (digest_id == 0) return 0x52A00104;
    OpenedKey opened;
    Bytes key;
    if (const u32 status = find_key(members, settings, 0, opened, key); status != 0) return status;
    if (!code_.start_code(digest_id, key)) return 0x52A0003C;
    return members.digest_algorithm.tag != 0 ? begin_digest(members.digest_algorithm) : 0;
}

u32 EnvelopedContent::finish(const MessageParser &message, const MembersAfter &members,
                             Bytes &last) noexcept {
    switch (message.kind()) {
        case MessageKind::digested_data:
            return check_digest(members.code);
        case MessageKind::authenticated_data:
            return check_code(message, members);
        case MessageKind::auth_enveloped_data:
            return check_tag(message, members);
        default:
            return cipher_.finish_blocks(last) ? 0 : 0x52A20012;
    }
}

u32 EnvelopedContent::check_tag(const MessageParser &message, const MembersAfter &members) noexcept {
    const Element &attributes = members.attributes;
    if (attributes.tag != 0) {
        const AttributesHeader header(attributes);
        if (!cipher_.add_data(header.bytes()) || !cipher_.add_data(attributes.contents)) return 0x52A2003C;
    }
    const Owned<ASN1_STRING> tag(decode_joined(TLX_TAG_OCTET_STRING, members.code));
    if (!tag) return 0x52A2003C;
    const Bytes octets = octets_of(tag.get());
    if (octets.size() != algorithm_.tag_len || !cipher_.check_tag(octets)) return 0x52A20012;
    return check_content_type(message, attributes);
}

u32 EnvelopedContent::check_code(const MessageParser &message, const MembersAfter &members) noexcept {
    const Element &attributes = members.attributes;
    const bool has_attributes = attributes.tag != 0;
    ContentCode::Result code;
    const Owned<ASN1_STRING> expected(decode_joined(TLX_TAG_OCTET_STRING, members.code));
    if (!expected || !code_.finish_code(has_attributes ? &attributes : nullptr, code)) return 0x52A2003C;
    if (!code.is(octets_of(expected.get()))) return 0x52A20054;
    const u32 status = check_content_type(message, attributes);
    if (status != 0 || !has_attributes) return status;
    Element digest;
    const bool found = find_only_value(attributes, AttributeType::message_digest, digest);
    if (!found || digest.tag != TLX_TAG_OCTET_STRING) return 0x52A2002B;
    return check_digest(digest);
}

u32 EnvelopedContent::check_digest(const Element &digest) noexcept {
    ContentCode::Result computed;
    const Owned<ASN1_STRING> expected(decode_joined(TLX_TAG_OCTET_STRING, digest));
    if (!expected) return 0x52A2003C;
    return code_.finish_digest(computed) && computed.is(octets_of(expected.get())) ? 0 : 0x52A2005E;
}
