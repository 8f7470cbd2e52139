// ContentInfo with what it may hold (RFC 5652, sections 3 to 9; RFC 5083; RFC 2315, sections 7 to 13).
#include "message/message_parser.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// contentInfo of the type data, 1.2.840.113549.1.7.1
constexpr u8 kDataWithoutContent[] = {0x30, 0x0B, 0x06, 0x09, 0x2A, 0x86, 0x48,
                                      0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01};
constexpr Bytes kData = Bytes(kDataWithoutContent).subspan(4);
constexpr u8 kConstructedString = TLX_TAG_OCTET_STRING | kConstructed;

bool begins_with(const Buffer &held, Bytes contents) noexcept {
    Element element;
    return read_element(held.bytes(), element) && std::ranges::equal(element.contents, contents);
}

constexpr bool is_string(u8 tag) noexcept {
    return tag == TLX_TAG_OCTET_STRING || tag == kConstructedString;
}

}  // namespace

Bytes MessageParser::content_type() const noexcept {
    Element type;
    return read_element(info_.bytes(), type) ? type.contents : Bytes();
}

MessageParser::Step MessageParser::next(Bytes &in) noexcept {
    using Event = ElementStream::Event;
    while (failure_ == Failure::none) {
        Step step = Step::need_more;
        switch (elements_.next(in)) {
            case Event::need_more:
                return Step::need_more;
            case Event::begin:
                step = begin();
                break;
            case Event::octets:
                step = content_depth_ != kNowhere ? give(elements_.octets()) : keep(elements_.octets());
                break;
            case Event::end:
                step = end();
                break;
            case Event::broken:
                return fail(Failure::no_element);
        }
        if (step != Step::need_more) return step;
    }
    return Step::failed;
}

MessageParser::Step MessageParser::fail(Failure failure) noexcept {
    failure_ = failure;
    return Step::failed;
}

MessageParser::Step MessageParser::expect(u8 tag) noexcept {
    return elements_.tag() == tag ? Step::need_more : fail(Failure::misplaced);
}

MessageParser::Step MessageParser::give(Bytes octets) noexcept {
    octets_ = octets;
    return Step::content;
}

MessageParser::Step MessageParser::keep(Bytes octets) noexcept {
    const std::size_t held = message_type_.size() + info_.size() + body_.size();
    if (held > limit_ || octets.size() > limit_ - held) return fail(Failure::too_long);
    holding_->append(octets);
    return holding_->ok() ? Step::need_more : fail(Failure::no_memory);
}

MessageParser::Step MessageParser::hold(Buffer &buffer) noexcept {
    holding_ = &buffer;
    held_depth_ = elements_.depth();
    elements_.stay_closed();
    return keep(elements_.header());
}

MessageParser::Step MessageParser::begin() noexcept {
    if (content_depth_ != kNowhere) return begin_in_content();
    if (held_depth_ == kNowhere) return begin_member();
    elements_.stay_closed();
    return keep(elements_.header());
}

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY }
MessageParser::Step MessageParser::begin_member() noexcept {
    const unsigned depth = elements_.depth();
    const u32 place = places_[depth]++;
    if (depth < at_content) places_[depth + 1] = 0;
    switch (depth) {
        case at_message:
            return expect(kSequence);
        case at_type:
            if (place > 1) return fail(Failure::misplaced);
            if (place == 1) return expect(context(0));
            return elements_.tag() == TLX_TAG_OBJECT_IDENTIFIER ? hold(message_type_)
                                                                : fail(Failure::misplaced);
        case at_body:
            return place == 0 ? expect(kSequence) : fail(Failure::misplaced);
        case at_body_member:
            return begin_body_member();
        case at_info_member:
            return begin_info_member(place);
        default:
            return place == 0 ? begin_content() : fail(Failure::misplaced);
    }
}

// SignedData ::= SEQUENCE {
//     version INTEGER, digestAlgorithms SET, contentInfo SEQUENCE, certificates [0], crls [1], signerInfos
//     SET }
// DigestedData ::= SEQUENCE { version INTEGER, digestAlgorithm SEQUENCE, contentInfo SEQUENCE, digest }
// EnvelopedData ::= SEQUENCE {
//     version INTEGER, originatorInfo [0], recipientInfos SET, encryptedContentInfo SEQUENCE,
//     unprotectedAttrs [1] }
// EncryptedData is the same without the second and the third member, AuthEnvelopedData has more at the end.
// AuthenticatedData ::= SEQUENCE {
//     version INTEGER, originatorInfo [0], recipientInfos SET, macAlgorithm SEQUENCE, digestAlgorithm [1],
//     contentInfo SEQUENCE, authAttrs [2], mac OCTET STRING, unauthAttrs [3] }
// Whoever decodes the members that are held looks at their order.
MessageParser::Step MessageParser::begin_body_member() noexcept {
    const bool is_info = elements_.tag() == kSequence && sequences_++ == info_place_;
    if (!is_info) return hold(body_);
    before_size_ = body_.size();
    return Step::need_more;
}

// contentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY OPTIONAL }
MessageParser::Step MessageParser::begin_info_member(u32 place) noexcept {
    if (place == 0) {
        return elements_.tag() == TLX_TAG_OBJECT_IDENTIFIER ? hold(info_) : fail(Failure::misplaced);
    }
    if (is_encrypted_) return begin_encrypted_info_member(place);
    return place == 1 ? expect(context(0)) : fail(Failure::misplaced);
}

// EncryptedContentInfo ::= SEQUENCE {
//     contentType OBJECT IDENTIFIER, contentEncryptionAlgorithm SEQUENCE,
//     encryptedContent [0] IMPLICIT OCTET STRING OPTIONAL }
MessageParser::Step MessageParser::begin_encrypted_info_member(u32 place) noexcept {
    if (place == 1) return elements_.tag() == kSequence ? hold(info_) : fail(Failure::misplaced);
    const bool is_content = (elements_.tag() & ~kConstructed) == context_primitive(0);
    return place == 2 && is_content ? begin_encrypted_content() : fail(Failure::misplaced);
}

MessageParser::Step MessageParser::begin_encrypted_content() noexcept {
    content_depth_ = elements_.depth();
    content_tag_ = TLX_TAG_OCTET_STRING;
    return place_info(Step::content_begins);
}

/// The info without its content, once all that stands before the content is known.
MessageParser::Step MessageParser::place_info(Step step) noexcept {
    holding_ = &body_;
    u8 length[5];
    const std::size_t octets = write_length(static_cast<u32>(info_.size()), length);
    constexpr u8 kTag[] = {kSequence};
    const bool is_signed = kind_ == MessageKind::signed_data;
    const bool is_placed = is_signed ? keep(kDataWithoutContent) != Step::failed
                                     : keep(kTag) != Step::failed && keep({length, octets}) != Step::failed &&
                                           keep(info_.bytes()) != Step::failed;
    after_start_ = body_.size();
    return is_placed ? step : Step::failed;
}

MessageParser::Step MessageParser::begin_content() noexcept {
    content_depth_ = elements_.depth();
    content_tag_ = is_string(elements_.tag()) ? u8{TLX_TAG_OCTET_STRING} : elements_.tag();
    if (!content_is_string() && begins_with(info_, kData)) return fail(Failure::misplaced);
    if (!content_is_string()) elements_.stay_closed();
    return place_info(Step::content_begins);
}

/// Segments of a string may have segments. Of any other element all octets count.
MessageParser::Step MessageParser::begin_in_content() noexcept {
    if (content_is_string()) return is_string(elements_.tag()) ? Step::need_more : fail(Failure::misplaced);
    elements_.stay_closed();
    return give(elements_.header());
}

MessageParser::Step MessageParser::end() noexcept {
    if (content_depth_ != kNowhere) return end_in_content();
    if (held_depth_ != kNowhere) return end_of_held();
    switch (elements_.depth()) {
        case at_message:
            return sequences_ > info_place_ ? Step::done : fail(Failure::misplaced);
        case at_body_member:
            if (places_[at_info_member] < (is_encrypted_ ? 2U : 1U)) return fail(Failure::misplaced);
            return has_content() ? Step::need_more : place_info(Step::content_missing);
        case at_info_member:
            return has_content() ? Step::need_more : fail(Failure::misplaced);
        default:
            return Step::need_more;
    }
}

MessageParser::Step MessageParser::end_in_content() noexcept {
    const bool is_last = elements_.depth() == content_depth_;
    if (is_last) content_depth_ = kNowhere;
    const bool counts = !is_last && !content_is_string() && elements_.ends_indefinite();
    return counts ? give(elements_.header()) : Step::need_more;
}

MessageParser::Step MessageParser::end_of_held() noexcept {
    const bool is_last = elements_.depth() == held_depth_;
    if (is_last) held_depth_ = kNowhere;
    const Step step = elements_.ends_indefinite() ? keep(elements_.header()) : Step::need_more;
    const bool names_kind = is_last && holding_ == &message_type_;
    return step == Step::need_more && names_kind ? name_kind() : step;
}

MessageParser::Step MessageParser::name_kind() noexcept {
    Element type;
    if (!read_element(message_type_.bytes(), type)) return fail(Failure::misplaced);
    const MessageLayout *layout = find_layout(type.contents);
    if (layout == nullptr) return fail(Failure::misplaced);
    kind_ = layout->kind;
    is_encrypted_ = layout->is_encrypted;
    info_place_ = layout->info_place;
    return (followed_ & bit(kind_)) != 0 ? Step::need_more : fail(Failure::misplaced);
}

}  // namespace tlx
