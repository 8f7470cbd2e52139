// Writing enveloped, encrypted, authenticated and digested messages in pieces.
#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "keys/pbe.hpp"
#include "message/content_code.hpp"
#include "message/content_stream.hpp"
#include "message/envelope_record.hpp"
#include "message/message_frame.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

/// HMAC with a digest (RFC 4231, section 3.1).
Owned<X509_ALGO_IDENTIFIER> code_identifier(u32 digest_id) noexcept {
    const auto codes = prfs();
    const auto code = std::ranges::find(codes, digest_id, &Prf::digest_id);
    return algorithm_with_null(code->dotted.data());
}

/// Without its content, only a message that does not encrypt it.
bool is_written(u32 type, u32 form) noexcept {
    switch (type) {
        case TLX_MESSAGE_ENVELOPED_DATA:
        case TLX_MESSAGE_ENCRYPTED_DATA:
        case TLX_MESSAGE_AUTH_ENVELOPED_DATA:
            return form <= TLX_MESSAGE_DER;
        case TLX_MESSAGE_DIGESTED_DATA:
        case TLX_MESSAGE_AUTHENTICATED_DATA:
            return form <= TLX_MESSAGE_DETACHED;
        default:
            return false;
    }
}

}  // namespace

struct ENVELOPED_MESSAGE_WRITER {
  public:
    explicit ENVELOPED_MESSAGE_WRITER(const ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) noexcept
        : settings_(settings),
          layout_(layout_of(static_cast<MessageKind>(settings.type))),
          out_(settings.output, settings.context) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;

  private:
    [[nodiscard]] u32 begin() noexcept;
    [[nodiscard]] u32 begin_encryption(EnvelopeParts &parts) noexcept;
    [[nodiscard]] u32 begin_code(EnvelopeParts &parts) noexcept;
    [[nodiscard]] u32 choose_key(u32 length) noexcept;
    [[nodiscard]] u32 make_recipients(RecipientList &recipients) const noexcept;
    [[nodiscard]] u32 begin_message() noexcept;
    [[nodiscard]] bool encode() noexcept;
    [[nodiscard]] bool add_attributes() noexcept;
    [[nodiscard]] u32 take(Bytes octets) noexcept;
    [[nodiscard]] u32 write(Bytes octets) noexcept;
    [[nodiscard]] u32 end_content() noexcept;
    [[nodiscard]] bool finish_code() noexcept;
    [[nodiscard]] u32 end_message() noexcept;
    [[nodiscard]] bool is_der() const noexcept { return settings_.form == TLX_MESSAGE_DER; }
    [[nodiscard]] bool is_detached() const noexcept { return settings_.form == TLX_MESSAGE_DETACHED; }
    [[nodiscard]] bool is_digested() const noexcept { return layout_.kind == MessageKind::digested_data; }

    ENVELOPED_MESSAGE_WRITER_SETTINGS settings_;
    const MessageLayout &layout_;
    MessageOutput out_;
    ContentKey secret_;
    Bytes key_;
    ContentAlgorithm algorithm_;
    CipherStream cipher_;
    ContentCode code_;
    Owned<CMS_CONTENT_INFO> info_;
    OwnedObject<Encoder> encoded_;
    MessageFrame frame_ = {};
    SegmentWriter segments_;
    std::uint64_t taken_ = 0;
    bool begun_ = false;
    u32 status_ = 0;  ///< of the operation that ended the message
};

u32 ENVELOPED_MESSAGE_WRITER::update(Bytes octets) noexcept {
    if (status_ == 0 && !std::exchange(begun_, true)) status_ = begin();
    if (status_ == 0) status_ = take(octets);
    return status_;
}

u32 ENVELOPED_MESSAGE_WRITER::begin() noexcept {
    EnvelopeParts parts;
    u32 status = layout_.is_encrypted ? begin_encryption(parts) : begin_code(parts);
    if (status == 0) status = make_recipients(parts.recipients);
    if (status != 0) return status;
    info_ = make_envelope(settings_, std::move(parts));
    if (!info_ || !encode()) return 0x52A3003C;
    return begin_message();
}

u32 ENVELOPED_MESSAGE_WRITER::begin_encryption(EnvelopeParts &parts) noexcept {
    const bool authenticates = layout_.kind == MessageKind::auth_enveloped_data;
    if (!find_algorithm(settings_.algorithm, algorithm_) || !algorithm_.draw_iv()) return 0x52A30048;
    if (algorithm_.authenticates != authenticates) return 0x52A30048;
    if (authenticates && is_der() && settings_.size > TLX_AEAD_MAX_MESSAGE_LENGTH) return 0x52A3001C;
    if (const u32 status = choose_key(algorithm_.key_length()); status != 0) return status;
    parts.algorithm = make_identifier(algorithm_);
    parts.code_length = algorithm_.tag_len;
    return parts.algorithm && cipher_.start(algorithm_, key_.data(), 1) ? 0 : 0x52A3003C;
}

u32 ENVELOPED_MESSAGE_WRITER::begin_code(EnvelopeParts &parts) noexcept {
    const u32 digest_id = digest_of_name(settings_.algorithm);
    if (digest_id == 0) return 0x52A30048;
    const u32 length = get_DigestLength(digest_id);
    parts.code_length = length;
    const bool has_attributes = has_authenticated_attributes(settings_);
    if (has_attributes) {
        parts.digest = digest_algorithm(digest_id);
        parts.digest_length = length;
    }
    if ((is_digested() || has_attributes) && !code_.start_digest(digest_id)) return 0x52A3003C;
    if (is_digested()) {
        parts.algorithm = digest_algorithm(digest_id);
        return parts.algorithm ? 0 : 0x52A3003C;
    }
    if (const u32 status = choose_key(length); status != 0) return status;
    parts.algorithm = code_identifier(digest_id);
    const bool begun = parts.algorithm && code_.start_code(digest_id, key_);
    return begun && (!has_attributes || parts.digest) ? 0 : 0x52A3003C;
}

/// Encrypted data has nobody who could learn a random key.
u32 ENVELOPED_MESSAGE_WRITER::choose_key(u32 length) noexcept {
    if (settings_.key != nullptr) {
        key_ = {settings_.key, settings_.key_len};
        return settings_.key_len == length ? 0 : 0x52A30028;
    }
    if (layout_.kind == MessageKind::encrypted_data) return 0x52A3002B;
    key_ = {secret_.key, length};
    return secret_.draw() ? 0 : 0x52A3003C;
}

u32 ENVELOPED_MESSAGE_WRITER::make_recipients(RecipientList &recipients) const noexcept {
    if (is_digested() || layout_.kind == MessageKind::encrypted_data) return 0;
    if (settings_.recipient_count == 0 || settings_.recipients == nullptr) return 0x52A30047;
    recipients.reset(new_CMS_RECIPIENT_INFOS());
    if (!recipients) return 0x52A3003C;
    for (u32 i = 0; i < settings_.recipient_count; ++i) {
        CMS_RECIPIENT_INFO *made = nullptr;
        const u32 status = make_CMS_RECIPIENT_INFO(&settings_.recipients[i], key_.data(),
                                                   static_cast<u32>(key_.size()), &made);
        Owned<CMS_RECIPIENT_INFO> recipient(made);
        if (status != 0) return status;
        if (push_STACK_value(recipients.get(), recipient.get()) != 0) return 0x52A3003C;
        static_cast<void>(recipient.release());
    }
    return 0;
}

/// Encodes the message without content. False when memory runs out, and for members that cannot be encoded.
bool ENVELOPED_MESSAGE_WRITER::encode() noexcept {
    encoded_ = make_object<Encoder>();
    if (!encoded_) return false;
    Codec<CMS_CONTENT_INFO>::encode(*encoded_, info_.get());
    return encoded_->ok() && frame_.split(encoded_->bytes(), layout_);
}

u32 ENVELOPED_MESSAGE_WRITER::begin_message() noexcept {
    if (cipher_.authenticates() && !add_attributes()) return 0x52A3003C;
    if (is_detached()) return 0;
    if (!is_der()) {
        if (!segments_.start()) return 0x52A3003C;
        frame_.begin_indefinite(out_);
        return out_.status();
    }
    std::uint64_t size = settings_.size;
    if (layout_.is_encrypted && !algorithm_.authenticates) {
        const u32 block = get_BlockLength(algorithm_.cipher_id);
        size += block - size % block;
    }
    frame_.begin_der(out_, size);
    return out_.status();
}

bool ENVELOPED_MESSAGE_WRITER::add_attributes() noexcept {
    const X509_ATTRIBUTES *attributes = authenticated_attributes(*info_);
    if (attributes == nullptr) return true;
    Encoder set;
    Attributes::encode(set, attributes, kSet);
    return set.ok() && cipher_.add_data(set.bytes());
}

u32 ENVELOPED_MESSAGE_WRITER::take(Bytes octets) noexcept {
    const std::uint64_t most = is_der()                   ? settings_.size
                               : algorithm_.authenticates ? TLX_AEAD_MAX_MESSAGE_LENGTH
                                                          : UINT64_MAX;
    if (octets.size() > most - taken_) return 0x52A3001C;
    taken_ += octets.size();
    if (layout_.is_encrypted) {
        return cipher_.update(octets, 0x52A3003C, [&](Bytes ciphertext) { return write(ciphertext); });
    }
    return code_.update(octets) ? write(octets) : 0x52A3003C;
}

u32 ENVELOPED_MESSAGE_WRITER::write(Bytes octets) noexcept {
    if (is_der()) {
        out_.raw(octets);
    } else if (!is_detached()) {
        segments_.update(out_, octets);
    }
    return out_.status();
}

u32 ENVELOPED_MESSAGE_WRITER::finish() noexcept {
    u32 status = update({});
    if (status == 0 && is_der() && taken_ != settings_.size) status = 0x52A4001C;
    if (status == 0) status = end_content();
    if (status == 0) status = end_message();
    status_ = status_ != 0 ? status_ : 0x52A4002B;
    return status;
}

u32 ENVELOPED_MESSAGE_WRITER::end_content() noexcept {
    if (!layout_.is_encrypted) return finish_code() ? 0 : 0x52A4003C;
    if (algorithm_.authenticates) {
        u8 tag[TLX_AEAD_TAG_LENGTH];
        return cipher_.make_tag(tag) && put_code(*info_, tag) && encode() ? 0 : 0x52A4003C;
    }
    Bytes last;
    return cipher_.finish_blocks(last) ? write(last) : 0x52A4003C;
}

/// False when memory runs out.
bool ENVELOPED_MESSAGE_WRITER::finish_code() noexcept {
    ContentCode::Result result;
    if (is_digested()) {
        return code_.finish_digest(result) && put_code(*info_, result.bytes()) && encode();
    }
    const X509_ATTRIBUTES *attributes = authenticated_attributes(*info_);
    Encoder set;
    Element element;
    if (attributes != nullptr) {
        if (!code_.finish_digest(result) || !put_digest(*info_, result.bytes())) return false;
        Attributes::encode(set, attributes, kSet);
        if (!set.ok() || !read_element(set.bytes(), element)) return false;
    }
    return code_.finish_code(attributes != nullptr ? &element : nullptr, result) &&
           put_code(*info_, result.bytes()) && encode();
}

u32 ENVELOPED_MESSAGE_WRITER::end_message() noexcept {
    if (is_detached()) {
        out_.raw(encoded_->bytes());
    } else if (is_der()) {
        frame_.end_der(out_);
    } else {
        segments_.finish(out_);
        frame_.end_indefinite(out_);
    }
    return out_.status();
}

ENVELOPED_MESSAGE_WRITER *new_ENVELOPED_MESSAGE_WRITER(const ENVELOPED_MESSAGE_WRITER_SETTINGS *settings) {
    constexpr std::uint64_t kMostContent = 0x3FFFFFFFFFFFFFFF;
    if (settings == nullptr || settings->output == nullptr || settings->algorithm == nullptr) return nullptr;
    if (settings->size > kMostContent || !is_written(settings->type, settings->form)) return nullptr;
    return make_object<ENVELOPED_MESSAGE_WRITER>(*settings).release();
}

void free_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer) {
    Destroy<ENVELOPED_MESSAGE_WRITER>{}(writer);
}

uint32_t update_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer, const uint8_t *octets,
                                         uint32_t len) {
    if (writer == nullptr || (octets == nullptr && len != 0)) return 0x52A30049;
    return writer->update({octets, len});
}

uint32_t final_ENVELOPED_MESSAGE_WRITER(ENVELOPED_MESSAGE_WRITER *writer) {
    return writer == nullptr ? 0x52A40049 : writer->finish();
}
