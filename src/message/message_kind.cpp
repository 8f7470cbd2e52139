#include "message/message_kind.hpp"

#include <algorithm>

#include "der/element_stream.hpp"
#include "der/encoder.hpp"

using namespace tlx;

namespace {

constexpr u8 kObjectIdentifier = TLX_TAG_OBJECT_IDENTIFIER;

// 1.2.840.113549.1.7, and 1.2.840.113549.1.9.16.1 for those that PKCS #7 lacks
constexpr u8 kData[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x01};
constexpr u8 kSigned[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x02};
constexpr u8 kEnveloped[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x03};
constexpr u8 kSignedAndEnveloped[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x04};
constexpr u8 kDigested[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x05};
constexpr u8 kEncrypted[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x06};
constexpr u8 kAuthenticated[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x10, 0x01, 0x02};
constexpr u8 kAuthEnveloped[] = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x09, 0x10, 0x01, 0x17};

// digestAlgorithm stands before the info of DigestedData, macAlgorithm before that of
// AuthenticatedData.
constexpr MessageLayout kLayouts[] = {
    {kData, MessageKind::data, 0, false},
    {kSigned, MessageKind::signed_data, 0, false},
    {kEnveloped, MessageKind::enveloped_data, 0, true},
    {kSignedAndEnveloped, MessageKind::signed_and_enveloped_data, 0, true},
    {kDigested, MessageKind::digested_data, 1, false},
    {kEncrypted, MessageKind::encrypted_data, 0, true},
    {kAuthenticated, MessageKind::authenticated_data, 1, false},
    {kAuthEnveloped, MessageKind::auth_enveloped_data, 0, true},
};

/// Reads the object identifier of a ContentInfo.
class TypeReader {
  public:
    /// 0; 0x52A5002B when the octets end too early; 0x52A5004F for octets that are no ContentInfo.
    [[nodiscard]] u32 read(Bytes in) noexcept {
        for (;;) {
            switch (elements_.next(in)) {
                case ElementStream::Event::need_more:
                    return 0x52A5002B;
                case ElementStream::Event::begin:
                    if (!is_expected()) return 0x52A5004F;
                    break;
                case ElementStream::Event::octets:
                    type_ = elements_.octets();
                    break;
                case ElementStream::Event::end:
                    return elements_.depth() == 1 ? 0 : 0x52A5004F;
                case ElementStream::Event::broken:
                    return 0x52A5004F;
            }
        }
    }
    [[nodiscard]] Bytes type() const noexcept { return type_; }

  private:
    // ContentInfo ::= SEQUENCE { contentType OBJECT IDENTIFIER, content [0] EXPLICIT ANY }
    [[nodiscard]] bool is_expected() const noexcept {
        return elements_.tag() == (elements_.depth() == 0 ? kSequence : kObjectIdentifier);
    }

    ElementStream elements_;
    Bytes type_;
};

}  // namespace

const MessageLayout *tlx::find_layout(Bytes type) noexcept {
    const auto *const found = std::ranges::find_if(
        kLayouts, [&](const MessageLayout &layout) { return std::ranges::equal(layout.type, type); });
    return found == std::end(kLayouts) ? nullptr : found;
}

const MessageLayout &tlx::layout_of(MessageKind kind) noexcept {
    return *std::ranges::find(kLayouts, kind, &MessageLayout::kind);
}

uint32_t get_MESSAGE_type(const uint8_t *octets, uint32_t len, uint32_t *type) {
    if (type == nullptr || (octets == nullptr && len != 0)) return 0x52A50049;
    TypeReader reader;
    if (const u32 status = reader.read({octets, len}); status != 0) return status;
    const MessageLayout *layout = find_layout(reader.type());
    *type = static_cast<u32>(layout == nullptr ? MessageKind::none : layout->kind);
    return 0;
}
