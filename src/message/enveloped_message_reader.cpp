// Reading enveloped, encrypted, authenticated and digested messages in pieces.
#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "keys/pbe.hpp"
#include "message/cms_records.hpp"
#include "message/content_code.hpp"
#include "message/content_stream.hpp"
#include "message/envelope_key.hpp"
#include "message/envelope_members.hpp"
#include "message/message_parser.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

using OwnedAlgorithm = Owned<X509_ALGO_IDENTIFIER>;

u32 status_of(MessageParser::Failure failure) noexcept {
    switch (failure) {
        case MessageParser::Failure::too_long:
            return 0x52A0001C;
        case MessageParser::Failure::misplaced:
            return 0x52A00048;
        case MessageParser::Failure::no_element:
            return 0x52A0004F;
        default:
            return 0x52A0003C;
    }
}

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

}  // namespace

struct ENVELOPED_MESSAGE_READER {
  public:
    explicit ENVELOPED_MESSAGE_READER(const ENVELOPED_MESSAGE_READER_SETTINGS &settings) noexcept
        : settings_(settings),
          parser_({MessageKind::enveloped_data, MessageKind::digested_data, MessageKind::encrypted_data,
                   MessageKind::authenticated_data, MessageKind::auth_enveloped_data},
                  settings.held_limit != 0 ? settings.held_limit : TLX_MESSAGE_HELD_LIMIT) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 update_content(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;
    [[nodiscard]] MessageKind kind() const noexcept { return parser_.kind(); }
    [[nodiscard]] bool is_complete() const noexcept { return parser_.is_done(); }
    [[nodiscard]] bool is_detached() const noexcept { return is_complete() && !parser_.has_content(); }
    [[nodiscard]] OBJECT_IDENTIFIER *content_type() const noexcept;
    [[nodiscard]] u32 make_message(CMS_CONTENT_INFO **out) const noexcept;

  private:
    [[nodiscard]] u32 parse(Bytes octets) noexcept;
    [[nodiscard]] u32 begin() noexcept;
    [[nodiscard]] u32 begin_decryption(const MembersBefore &members) noexcept;
    [[nodiscard]] u32 begin_code(const MembersBefore &members) noexcept;
    [[nodiscard]] u32 begin_digest(const Element &algorithm) noexcept;
    [[nodiscard]] u32 find_key(const MembersBefore &members, u32 expected_len, OpenedKey &opened,
                               Bytes &key) const noexcept;
    [[nodiscard]] u32 take_content(Bytes octets) noexcept;
    [[nodiscard]] u32 take_plain(Bytes octets) noexcept;
    [[nodiscard]] u32 begin_inner_message(u8 first) noexcept;
    [[nodiscard]] u32 end_inner_message() noexcept;
    [[nodiscard]] u32 hold_or_give(Bytes octets) noexcept;
    [[nodiscard]] u32 verify() noexcept;
    [[nodiscard]] u32 end_decryption(const MembersAfter &members) noexcept;
    [[nodiscard]] u32 check_code(const MembersAfter &members) noexcept;
    [[nodiscard]] u32 check_digest(const Element &digest) noexcept;
    [[nodiscard]] u32 check_content_type(const Element &attributes) const noexcept;
    [[nodiscard]] Bytes content_type_octets() const noexcept;
    [[nodiscard]] bool content_is_data() const noexcept;
    [[nodiscard]] u32 give_out(MESSAGE_OUTPUT output, Bytes octets) const noexcept {
        if (output == nullptr || octets.empty()) return 0;
        return output(settings_.context, octets.data(), static_cast<u32>(octets.size()));
    }

    ENVELOPED_MESSAGE_READER_SETTINGS settings_;
    MessageParser parser_;
    ContentAlgorithm algorithm_;
    CipherStream cipher_;
    ContentCode code_;
    HeldContent held_;
    u32 around_ = 0;  ///< elements that were begun around the content
    bool begun_ = false;
    bool content_given_ = false;
    u32 status_ = 0;  ///< of the operation that ended the message
};

u32 ENVELOPED_MESSAGE_READER::update(Bytes octets) noexcept {
    if (status_ == 0) status_ = parse(octets);
    return status_;
}

u32 ENVELOPED_MESSAGE_READER::parse(Bytes octets) noexcept {
    for (;;) {
        u32 status = 0;
        switch (parser_.next(octets)) {
            case MessageParser::Step::need_more:
                return 0;
            case MessageParser::Step::content_begins:
                content_given_ = true;
                status = begin();
                break;
            case MessageParser::Step::content_missing:
                status = begin();
                break;
            case MessageParser::Step::content:
                status = take_content(parser_.octets());
                break;
            case MessageParser::Step::done:
                break;
            case MessageParser::Step::failed:
                if (kind() == MessageKind::signed_and_enveloped_data) return 0x52A00012;
                return status_of(parser_.failure());
        }
        if (status != 0) return status;
    }
}

u32 ENVELOPED_MESSAGE_READER::begin() noexcept {
    MembersBefore members;
    if (!read_members(kind(), parser_.before_content(), members)) return 0x52A00104;
    begun_ = true;
    switch (kind()) {
        case MessageKind::digested_data:
            return begin_digest(members.digest_algorithm);
        case MessageKind::authenticated_data:
            return begin_code(members);
        default:
            return begin_decryption(members);
    }
}

u32 ENVELOPED_MESSAGE_READER::begin_decryption(const MembersBefore &members) noexcept {
    Cursor info(parser_.info());
    Element type;
    Element element;
    if (!info.next(type) || !info.next(element)) return 0x52A00104;
    const OwnedAlgorithm identifier = decode_algorithm(element);
    if (!identifier) return 0x52A00104;
    const AlgorithmRead read = read_algorithm(*identifier, algorithm_);
    if (read == AlgorithmRead::ccm) return 0x52A00114;
    const bool authenticates = kind() == MessageKind::auth_enveloped_data;
    if (read == AlgorithmRead::unknown || algorithm_.authenticates != authenticates) return 0x52A00104;
    OpenedKey opened;
    Bytes key;
    if (const u32 status = find_key(members, algorithm_.key_length(), opened, key); status != 0) {
        return status;
    }
    if (key.size() != algorithm_.key_length()) return 0x52A00028;
    return cipher_.start(algorithm_, key.data(), 0) ? 0 : 0x52A0003C;
}

u32 ENVELOPED_MESSAGE_READER::find_key(const MembersBefore &members, u32 expected_len, OpenedKey &opened,
                                       Bytes &key) const noexcept {
    if (settings_.key != nullptr) {
        key = {settings_.key, settings_.key_len};
        return 0;
    }
    if (settings_.holder == nullptr || members.recipients.tag == 0) return 0x52A0002B;
    const u32 status = open_content_key(members.recipients, *settings_.holder, expected_len, opened);
    key = {opened.octets, opened.len};
    return status;
}

u32 ENVELOPED_MESSAGE_READER::begin_digest(const Element &algorithm) noexcept {
    const OwnedAlgorithm identifier = decode_algorithm(algorithm);
    const u32 digest_id = digest_of(identifier.get());
    if (get_DigestLength(digest_id) == 0) return 0x52A00104;
    return code_.start_digest(digest_id) ? 0 : 0x52A0003C;
}

/// Whether attributes follow, which the code is over then, nobody knows before the end.
u32 ENVELOPED_MESSAGE_READER::begin_code(const MembersBefore &members) noexcept {
    const OwnedAlgorithm identifier = decode_algorithm(members.mac_algorithm);
    const u32 digest_id = code_digest(identifier.get());
    if (digest_id == 0) return 0x52A00104;
    OpenedKey opened;
    Bytes key;
    if (const u32 status = find_key(members, 0, opened, key); status != 0) return status;
    if (!code_.start_code(digest_id, key)) return 0x52A0003C;
    return members.digest_algorithm.tag != 0 ? begin_digest(members.digest_algorithm) : 0;
}

u32 ENVELOPED_MESSAGE_READER::take_content(Bytes octets) noexcept {
    if (parser_.is_encrypted()) {
        return cipher_.update(octets, 0x52A0003C, [&](Bytes plain) { return take_plain(plain); });
    }
    return code_.update(octets) ? take_plain(octets) : 0x52A0003C;
}

u32 ENVELOPED_MESSAGE_READER::take_plain(Bytes octets) noexcept {
    if (octets.empty()) return 0;
    if (settings_.as_message != 0 && around_ == 0 && !content_is_data()) {
        if (const u32 status = begin_inner_message(octets.front()); status != 0) return status;
    }
    return hold_or_give(octets);
}

/// The ContentInfo of an inner message, which is not encrypted with it, and the tag and length of the body,
/// which PKCS #7 does not encrypt either (RFC 2315, section 10.3).
u32 ENVELOPED_MESSAGE_READER::begin_inner_message(u8 first) noexcept {
    constexpr u8 kBegin[] = {kSequence, kIndefiniteLength};
    constexpr u8 kContent[] = {context(0), kIndefiniteLength};
    Element type;
    if (!read_element(parser_.info(), type)) return 0x52A00104;
    around_ = first == kSequence ? 2 : 3;
    for (const Bytes octets : {Bytes(kBegin), type.whole, Bytes(kContent)}) {
        if (const u32 status = hold_or_give(octets); status != 0) return status;
    }
    return first == kSequence ? 0 : hold_or_give(kBegin);
}

u32 ENVELOPED_MESSAGE_READER::end_inner_message() noexcept {
    constexpr u8 kEndOfContents[kEndOfContentsSize] = {};
    for (; around_ > 0; --around_) {
        if (const u32 status = hold_or_give(kEndOfContents); status != 0) return status;
    }
    return 0;
}

u32 ENVELOPED_MESSAGE_READER::hold_or_give(Bytes octets) noexcept {
    if (settings_.output == nullptr) return give_out(settings_.unverified_output, octets);
    const u32 most = settings_.held_back_limit != 0 ? settings_.held_back_limit : TLX_MESSAGE_HELD_BACK_LIMIT;
    if (octets.size() > most - held_.size()) return 0x52A10047;
    return held_.keep(octets) ? 0 : 0x52A0003C;
}

u32 ENVELOPED_MESSAGE_READER::update_content(Bytes octets) noexcept {
    if (status_ != 0) return status_;
    if (!is_complete()) return 0x52A1002B;
    if (parser_.has_content()) return 0x52A1001C;
    content_given_ = true;
    return status_ = take_content(octets);
}

u32 ENVELOPED_MESSAGE_READER::finish() noexcept {
    if (status_ != 0) return status_;
    status_ = 0x52A2001C;
    if (const u32 status = verify(); status != 0) return status;
    if (const u32 status = end_inner_message(); status != 0) return status;
    return held_.release([&](Bytes octets) { return give_out(settings_.output, octets); });
}

u32 ENVELOPED_MESSAGE_READER::verify() noexcept {
    MembersAfter members;
    if (!is_complete()) return 0x52A2004F;
    if (!read_members(kind(), parser_.after_content(), members)) return 0x52A20104;
    if (!content_given_) return 0x52A2003B;
    switch (kind()) {
        case MessageKind::digested_data:
            return check_digest(members.code);
        case MessageKind::authenticated_data:
            return check_code(members);
        default:
            return end_decryption(members);
    }
}

u32 ENVELOPED_MESSAGE_READER::end_decryption(const MembersAfter &members) noexcept {
    if (!algorithm_.authenticates) {
        Bytes last;
        return cipher_.finish_blocks(last) ? take_plain(last) : 0x52A20012;
    }
    const Element &attributes = members.attributes;
    if (attributes.tag != 0) {
        const AttributesHeader header(attributes);
        if (!cipher_.add_data(header.bytes()) || !cipher_.add_data(attributes.contents)) return 0x52A2003C;
    }
    const Owned<ASN1_STRING> tag(decode_joined(TLX_TAG_OCTET_STRING, members.code));
    if (!tag) return 0x52A2003C;
    const Bytes octets = octets_of(tag.get());
    if (octets.size() != algorithm_.tag_len || !cipher_.check_tag(octets)) return 0x52A20012;
    return check_content_type(attributes);
}

u32 ENVELOPED_MESSAGE_READER::check_code(const MembersAfter &members) noexcept {
    const Element &attributes = members.attributes;
    const bool has_attributes = attributes.tag != 0;
    ContentCode::Result code;
    const Owned<ASN1_STRING> expected(decode_joined(TLX_TAG_OCTET_STRING, members.code));
    if (!expected || !code_.finish_code(has_attributes ? &attributes : nullptr, code)) return 0x52A2003C;
    if (!code.is(octets_of(expected.get()))) return 0x52A20054;
    if (const u32 status = check_content_type(attributes); status != 0 || !has_attributes) return status;
    Element digest;
    const bool found = find_only_value(attributes, AttributeType::message_digest, digest);
    if (!found || digest.tag != TLX_TAG_OCTET_STRING) return 0x52A2002B;
    return check_digest(digest);
}

u32 ENVELOPED_MESSAGE_READER::check_digest(const Element &digest) noexcept {
    ContentCode::Result computed;
    const Owned<ASN1_STRING> expected(decode_joined(TLX_TAG_OCTET_STRING, digest));
    if (!expected) return 0x52A2003C;
    return code_.finish_digest(computed) && computed.is(octets_of(expected.get())) ? 0 : 0x52A2005E;
}

u32 ENVELOPED_MESSAGE_READER::check_content_type(const Element &attributes) const noexcept {
    Element value;
    if (attributes.tag == 0) return content_is_data() ? 0 : 0x52A2002B;
    if (!find_only_value(attributes, AttributeType::content_type, value)) return 0x52A2002B;
    const bool same =
        value.tag == TLX_TAG_OBJECT_IDENTIFIER && std::ranges::equal(value.contents, content_type_octets());
    return same ? 0 : 0x52A20106;
}

Bytes ENVELOPED_MESSAGE_READER::content_type_octets() const noexcept {
    Element type;
    return read_element(parser_.info(), type) ? type.contents : Bytes();
}

bool ENVELOPED_MESSAGE_READER::content_is_data() const noexcept {
    const MessageLayout *layout = find_layout(content_type_octets());
    return layout != nullptr && layout->kind == MessageKind::data;
}

u32 ENVELOPED_MESSAGE_READER::make_message(CMS_CONTENT_INFO **out) const noexcept {
    if (!is_complete()) return 0x52A6002B;
    Encoder message;
    {
        const auto info = message.sequence();
        message.raw(parser_.message_type());
        const auto content = message.nest(context(0));
        const auto body = message.sequence();
        message.raw(parser_.body());
    }
    Element element;
    if (!message.ok() || !read_element(message.bytes(), element)) return 0x52A6003C;
    CMS_CONTENT_INFO *made = nullptr;
    if (const u32 status = Codec<CMS_CONTENT_INFO>::decode(element, &made); status != 0) return status;
    free_CMS_CONTENT_INFO(std::exchange(*out, made));
    return 0;
}

OBJECT_IDENTIFIER *ENVELOPED_MESSAGE_READER::content_type() const noexcept {
    return begun_ ? decode_oid(content_type_octets()) : nullptr;
}

ENVELOPED_MESSAGE_READER *new_ENVELOPED_MESSAGE_READER(const ENVELOPED_MESSAGE_READER_SETTINGS *settings) {
    if (settings == nullptr || settings->held_back_limit > TLX_MESSAGE_HELD_BACK_LIMIT) return nullptr;
    if (settings->output != nullptr && settings->unverified_output != nullptr) return nullptr;
    return make_object<ENVELOPED_MESSAGE_READER>(*settings).release();
}

void free_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader) {
    Destroy<ENVELOPED_MESSAGE_READER>{}(reader);
}

uint32_t update_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader, const uint8_t *octets,
                                         uint32_t len) {
    if (reader == nullptr || (octets == nullptr && len != 0)) return 0x52A00049;
    return reader->update({octets, len});
}

uint32_t update_ENVELOPED_MESSAGE_READER_content(ENVELOPED_MESSAGE_READER *reader, const uint8_t *octets,
                                                 uint32_t len) {
    if (reader == nullptr || octets == nullptr) return 0x52A10049;
    return reader->update_content({octets, len});
}

uint32_t final_ENVELOPED_MESSAGE_READER(ENVELOPED_MESSAGE_READER *reader) {
    return reader == nullptr ? 0x52A20049 : reader->finish();
}

uint32_t get_ENVELOPED_MESSAGE_READER_type(const ENVELOPED_MESSAGE_READER *reader) {
    return static_cast<u32>(reader == nullptr ? MessageKind::none : reader->kind());
}

uint32_t is_ENVELOPED_MESSAGE_READER_authenticated(const ENVELOPED_MESSAGE_READER *reader) {
    const u32 type = get_ENVELOPED_MESSAGE_READER_type(reader);
    return type == TLX_MESSAGE_AUTHENTICATED_DATA || type == TLX_MESSAGE_AUTH_ENVELOPED_DATA ? 1 : 0;
}

OBJECT_IDENTIFIER *get_ENVELOPED_MESSAGE_READER_content_type(const ENVELOPED_MESSAGE_READER *reader) {
    return reader == nullptr ? nullptr : reader->content_type();
}

uint32_t get_ENVELOPED_MESSAGE_READER_message(const ENVELOPED_MESSAGE_READER *reader,
                                              CMS_CONTENT_INFO **out) {
    return reader == nullptr || out == nullptr ? 0x52A60049 : reader->make_message(out);
}

uint32_t is_ENVELOPED_MESSAGE_READER_complete(const ENVELOPED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->is_complete() ? 1 : 0;
}

uint32_t is_ENVELOPED_MESSAGE_READER_detached(const ENVELOPED_MESSAGE_READER *reader) {
    return reader != nullptr && reader->is_detached() ? 1 : 0;
}
