#include "message/message_frame.hpp"

using namespace tlx;

namespace {

constexpr u8 kConstructedString = TLX_TAG_OCTET_STRING | kConstructed;

}  // namespace

// ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY }
bool MessageFrame::split(Bytes message, const MessageLayout &layout) noexcept {
    Element whole;
    Element own;
    Element content;
    Element body;
    if (!read_element(message, whole)) return false;
    Cursor members(whole);
    if (!members.next(own) || !members.next(content) || !read_element(content.contents, body)) return false;
    type = own.whole;
    is_encrypted = layout.is_encrypted;
    Cursor cursor(body);
    for (u32 sequences = 0;;) {
        const std::size_t start = body.contents.size() - cursor.rest().size();
        Element member;
        if (!cursor.next(member)) return false;
        if (member.tag != kSequence || sequences++ != layout.info_place) continue;
        before = body.contents.first(start);
        info = member.contents;
        after = cursor.rest();
        return true;
    }
}

void MessageFrame::begin_indefinite(MessageOutput &out) const noexcept {
    out.indefinite(kSequence);
    out.raw(type);
    out.indefinite(context(0));
    out.indefinite(kSequence);
    out.raw(before);
    out.indefinite(kSequence);
    out.raw(info);
    out.indefinite(context(0));
    if (!is_encrypted) out.indefinite(kConstructedString);
}

void MessageFrame::end_indefinite(MessageOutput &out) const noexcept {
    constexpr u32 kAround = 3;  // the body, [0] and ContentInfo
    out.end(is_encrypted ? 2 : 3);
    out.raw(after);
    out.end(kAround);
}

void MessageFrame::begin_der(MessageOutput &out, std::uint64_t size, u8 tag) const noexcept {
    const std::uint64_t string = is_encrypted ? size : element_size(size);
    const std::uint64_t inside = info.size() + element_size(string);
    const std::uint64_t body = before.size() + element_size(inside) + after.size();
    out.header(kSequence, type.size() + element_size(element_size(body)));
    out.raw(type);
    out.header(context(0), element_size(body));
    out.header(kSequence, body);
    out.raw(before);
    out.header(kSequence, inside);
    out.raw(info);
    out.header(is_encrypted ? context_primitive(0) : context(0), string);
    if (!is_encrypted) out.header(tag, size);
}
