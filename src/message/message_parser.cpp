// ContentInfo with what it may hold (RFC 5652, sections 3 and 5; RFC 2315, sections 7 and 9).
#include "message/message_parser.hpp"

#include <algorithm>

namespace tlx {
namespace {

/// 1.2.840.113549.1.7.2
constexpr u8 kSignedData[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x02};
/// contentInfo of the type data, 1.2.840.113549.1.7.1
constexpr u8 kDataWithoutContent[] = {0x30, 0x0B, 0x06, 0x09, 0x2A, 0x86, 0x48,
                                      0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01};
constexpr Bytes kData = Bytes(kDataWithoutContent).subspan(4);
constexpr u8 kConstructedString = TLX_TAG_OCTET_STRING | kConstructed;

bool has_contents(const Buffer &held, Bytes contents) noexcept {
    Element element;
    return read_element(held.bytes(), element) && std::ranges::equal(element.contents, contents);
}

constexpr bool is_string(u8 tag) noexcept {
    return tag == TLX_TAG_OCTET_STRING || tag == kConstructedString;
}

}  // namespace

MessageParser::Step MessageParser::next(Bytes &in) noexcept {
    using Event = ElementStream::Event;
    while (status_ == 0) {
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
                return fail(0x5280004F);
        }
        if (step != Step::need_more) return step;
    }
    return Step::failed;
}

MessageParser::Step MessageParser::fail(u32 status) noexcept {
    status_ = status;
    return Step::failed;
}

MessageParser::Step MessageParser::expect(u8 tag) noexcept {
    return elements_.tag() == tag ? Step::need_more : fail(0x52800048);
}

MessageParser::Step MessageParser::give(Bytes octets) noexcept {
    octets_ = octets;
    return Step::content;
}

MessageParser::Step MessageParser::keep(Bytes octets) noexcept {
    const std::size_t held = message_type_.size() + content_type_.size() + body_.size();
    if (held > limit_ || octets.size() > limit_ - held) return fail(0x52800047);
    holding_->append(octets);
    return holding_->ok() ? Step::need_more : fail(0x5280003C);
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
            if (place > 1) return fail(0x52800048);
            if (place == 1) return expect(context(0));
            return elements_.tag() == TLX_TAG_OBJECT_IDENTIFIER ? hold(message_type_) : fail(0x52800048);
        case at_body:
            return place == 0 ? expect(kSequence) : fail(0x52800048);
        case at_body_member:
            return begin_body_member();
        case at_info_member:
            return begin_info_member(place);
        default:
            return place == 0 ? begin_content() : fail(0x52800048);
    }
}

// SignedData ::= SEQUENCE {
//     version INTEGER, digestAlgorithms SET, contentInfo SEQUENCE, certificates [0], crls [1], signerInfos
//     SET }
// The decoder of the body looks at the members that are held.
MessageParser::Step MessageParser::begin_body_member() noexcept {
    const bool is_info = elements_.tag() == kSequence && sequences_++ == 0;
    if (!is_info) return hold(body_);
    before_size_ = body_.size();
    holding_ = &body_;
    return keep(kDataWithoutContent);
}

// contentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY OPTIONAL }
MessageParser::Step MessageParser::begin_info_member(u32 place) noexcept {
    if (place == 1) return expect(context(0));
    const bool is_type = place == 0 && elements_.tag() == TLX_TAG_OBJECT_IDENTIFIER;
    return is_type ? hold(content_type_) : fail(0x52800048);
}

MessageParser::Step MessageParser::begin_content() noexcept {
    content_depth_ = elements_.depth();
    has_content_ = true;
    content_is_string_ = is_string(elements_.tag());
    if (!content_is_string_ && has_contents(content_type_, kData)) return fail(0x52800048);
    if (!content_is_string_) elements_.stay_closed();
    return Step::content_begins;
}

/// Segments of a string may have segments. Of any other element all octets count.
MessageParser::Step MessageParser::begin_in_content() noexcept {
    if (content_is_string_) return is_string(elements_.tag()) ? Step::need_more : fail(0x52800048);
    elements_.stay_closed();
    return give(elements_.header());
}

MessageParser::Step MessageParser::end() noexcept {
    if (content_depth_ != kNowhere) return end_in_content();
    if (held_depth_ != kNowhere) return end_of_held();
    switch (elements_.depth()) {
        case at_message:
            return sequences_ > 0 ? Step::done : fail(0x52800048);
        case at_body_member:
            if (content_type_.size() == 0) return fail(0x52800048);
            return has_content_ ? Step::need_more : Step::content_missing;
        case at_info_member:
            return has_content_ ? Step::need_more : fail(0x52800048);
        default:
            return Step::need_more;
    }
}

MessageParser::Step MessageParser::end_in_content() noexcept {
    const bool is_last = elements_.depth() == content_depth_;
    if (is_last) content_depth_ = kNowhere;
    const bool counts = !is_last && !content_is_string_ && elements_.ends_indefinite();
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
    if (!has_contents(message_type_, kSignedData)) return fail(0x52800048);
    kind_ = MessageKind::signed_data;
    return Step::need_more;
}

}  // namespace tlx
