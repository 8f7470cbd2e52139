// ContentInfo (RFC 2315, section 7).
#include <tlxpki/ber.h>
#include <tlxpki/objects.h>

#include "message/content_kinds.hpp"

using namespace tlx;

namespace {

/// The value of `info` as the type of its kind.
template <typename Kind>
typename Kind::type *content_as(const P7_CONTENT_INFO &info, Kind /*kind*/) noexcept {
    return static_cast<typename Kind::type *>(info.content.any);
}

// contentType ContentType, content [0] EXPLICIT ANY DEFINED BY contentType OPTIONAL
/// By hand because all types share one pointer, so that the content has to be freed before its type.
struct TypedContent {
    static void clear(P7_CONTENT_INFO &info) noexcept {
        free_content(info);
        free_OBJECT_IDENTIFIER(info.contentType);
        info.contentType = nullptr;
    }
    [[nodiscard]] static bool copy(P7_CONTENT_INFO &to, const P7_CONTENT_INFO &from) noexcept {
        if (from.contentType != nullptr) {
            to.contentType = dup_OBJECT_IDENTIFIER(from.contentType);
            if (to.contentType == nullptr) return false;
        }
        if (from.content.any == nullptr) return true;
        with_content_kind(content_type(&from),
                          [&](auto kind) { to.content.any = kind.dup(content_as(from, kind)); });
        return to.content.any != nullptr;
    }
    [[nodiscard]] static u32 read(Cursor &children, P7_CONTENT_INFO &info) noexcept {
        clear(info);
        Element type;
        if (!children.next(TLX_TAG_OBJECT_IDENTIFIER, type)) return kFieldFailed;
        info.contentType = decode_oid(type.contents);
        if (info.contentType == nullptr) return kFieldFailed;
        u32 status = 0;
        const bool known = with_content_kind(content_type(&info), [&](auto kind) {
            if (!children.at_end()) status = read_content(children, info, kind);
        });
        return known ? status : 1;
    }
    static void write(Encoder &out, const P7_CONTENT_INFO &info) noexcept {
        out.oid(info.contentType);
        if (info.content.any == nullptr) return;
        const u32 type = content_type(&info);
        const auto wrapper = out.nest(context(0));
        // Lists in circulation are not all in DER, and their signatures have to go on verifying.
        if (type == oid::kKisaCtl && info.received != nullptr) return out.node(info.received);
        const bool known =
            with_content_kind(type, [&](auto kind) { kind.encode(out, content_as(info, kind), kind.tag); });
        if (!known) out.fail();
    }

  private:
    template <typename Kind>
    [[nodiscard]] static u32 read_content(Cursor &children, P7_CONTENT_INFO &info, Kind kind) noexcept {
        Element wrapper;
        if (!children.next(wrapper) || wrapper.tag != context(0)) return kFieldFailed;
        typename Kind::type *content = nullptr;
        const u32 status = Explicit<Kind>::decode(wrapper, &content);
        if (status == 0) info.content.any = content;
        static_cast<void>(kind);
        return status;
    }
};

constexpr auto kContentInfo =
    record<P7_CONTENT_INFO>(between(1, 2), TypedContent{}, kept<Node>(&P7_CONTENT_INFO::received));

}  // namespace

void tlx::free_content(P7_CONTENT_INFO &info) noexcept {
    with_content_kind(content_type(&info), [&](auto kind) {
        if (info.content.any != nullptr) kind.free(content_as(info, kind));
    });
    info.content.any = nullptr;
    free_ASN1_UNIT(info.received);
    info.received = nullptr;
}

TLX_DEFINE_RECORD_NEW(P7_CONTENT_INFO)
TLX_DEFINE_RECORD_LIFE(P7_CONTENT_INFO, kContentInfo)
TLX_DEFINE_CODEC_ENCODE(P7_CONTENT_INFO, kContentInfo)
TLX_DEFINE_RECORD_DECODER(P7_CONTENT_INFO)
TLX_DEFINE_RECORD_ENCODER(P7_CONTENT_INFO)

// By hand because content may hold content: what a stranger nests deeper would use up the stack.
u32 Codec<P7_CONTENT_INFO>::decode(const Element &element, P7_CONTENT_INFO **out) noexcept {
    if (element.depth > kMaxDepth) return 0x4B1A0104;
    return decode_record(kContentInfo, element, out, codes::P7_CONTENT_INFO.decode);
}
