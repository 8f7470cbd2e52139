// Writing enveloped, encrypted, authenticated and digested messages in pieces.
#include "der/list_items.hpp"
#include "keyinfo/digest_identifier.hpp"
#include "keys/pbe.hpp"
#include "message/content_code.hpp"
#include "message/content_stream.hpp"
#include "message/envelope_record.hpp"
#include "message/message_writing.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

constexpr WritingStatuses kStatuses = {0x52A3003C, 0x52A3001C, 0x52A4001C, 0x52A4003C, 0x52A4002B};

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
        : settings_(settings), writing_(settings, static_cast<MessageKind>(settings.type), kStatuses) {}

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;

  private:
    [[nodiscard]] u32 begin() noexcept;
    [[nodiscard]] u32 begin_encryption(EnvelopeParts &parts) noexcept;
    [[nodiscard]] u32 begin_code(EnvelopeParts &parts) noexcept;
    [[nodiscard]] u32 choose_key(u32 length) noexcept;
    [[nodiscard]] u32 make_recipients(RecipientList &recipients) const noexcept;
    [[nodiscard]] u32 begin_message() noexcept;
    [[nodiscard]] bool add_attributes() noexcept;
    [[nodiscard]] u32 take(Bytes octets) noexcept;
    [[nodiscard]] u32 end_content() noexcept;
    [[nodiscard]] bool finish_code() noexcept;
    [[nodiscard]] u32 end_message() noexcept;
    [[nodiscard]] MessageKind kind() const noexcept { return writing_.layout().kind; }
    [[nodiscard]] bool is_encrypted() const noexcept { return writing_.layout().is_encrypted; }
    [[nodiscard]] bool is_digested() const noexcept { return kind() == MessageKind::digested_data; }

    ENVELOPED_MESSAGE_WRITER_SETTINGS settings_;
    MessageWriting writing_;
    ContentKey secret_;
    Bytes key_;
    ContentAlgorithm algorithm_;
    CipherStream cipher_;
    ContentCode code_;
    Owned<CMS_CONTENT_INFO> info_;
};

u32 ENVELOPED_MESSAGE_WRITER::update(Bytes octets) noexcept {
    return writing_.update(
        octets, [&] { return begin(); }, [&](Bytes content) { return take(content); });
}

u32 ENVELOPED_MESSAGE_WRITER::finish() noexcept {
    return writing_.finish(update({}), [&] {
        const u32 status = end_content();
        return status != 0 ? status : end_message();
    });
}

u32 ENVELOPED_MESSAGE_WRITER::begin() noexcept {
    EnvelopeParts parts;
    u32 status = is_encrypted() ? begin_encryption(parts) : begin_code(parts);
    if (status == 0) status = make_recipients(parts.recipients);
    if (status != 0) return status;
    info_ = make_envelope(settings_, std::move(parts));
    return info_ ? begin_message() : 0x52A3003C;
}

u32 ENVELOPED_MESSAGE_WRITER::begin_encryption(EnvelopeParts &parts) noexcept {
    const bool authenticates = kind() == MessageKind::auth_enveloped_data;
    if (!find_algorithm(settings_.algorithm, algorithm_) || !algorithm_.draw_iv()) return 0x52A30048;
    if (algorithm_.authenticates != authenticates) return 0x52A30048;
    if (authenticates) {
        if (writing_.is_der() && settings_.size > TLX_AEAD_MAX_MESSAGE_LENGTH) return 0x52A3001C;
        writing_.limit(TLX_AEAD_MAX_MESSAGE_LENGTH);
    }
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
    if (kind() == MessageKind::encrypted_data) return 0x52A3002B;
    key_ = {secret_.key, length};
    return secret_.draw() ? 0 : 0x52A3003C;
}

u32 ENVELOPED_MESSAGE_WRITER::make_recipients(RecipientList &recipients) const noexcept {
    if (is_digested() || kind() == MessageKind::encrypted_data) return 0;
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

u32 ENVELOPED_MESSAGE_WRITER::begin_message() noexcept {
    if (cipher_.authenticates() && !add_attributes()) return 0x52A3003C;
    Encoder whole;
    Codec<CMS_CONTENT_INFO>::encode(whole, info_.get());
    std::uint64_t size = settings_.size;
    if (is_encrypted() && !algorithm_.authenticates) {
        const u32 block = get_BlockLength(algorithm_.cipher_id);
        size += block - size % block;
    }
    return writing_.begin_message(whole, size);
}

bool ENVELOPED_MESSAGE_WRITER::add_attributes() noexcept {
    const X509_ATTRIBUTES *attributes = authenticated_attributes(*info_);
    if (attributes == nullptr) return true;
    Encoder set;
    Attributes::encode(set, attributes, kSet);
    return set.ok() && cipher_.add_data(set.bytes());
}

u32 ENVELOPED_MESSAGE_WRITER::take(Bytes octets) noexcept {
    if (!is_encrypted()) return code_.update(octets) ? writing_.write(octets) : 0x52A3003C;
    return cipher_.update(octets, 0x52A3003C, [&](Bytes ciphertext) { return writing_.write(ciphertext); });
}

u32 ENVELOPED_MESSAGE_WRITER::end_content() noexcept {
    if (!is_encrypted()) return finish_code() ? 0 : 0x52A4003C;
    if (algorithm_.authenticates) {
        u8 tag[TLX_AEAD_TAG_LENGTH];
        return cipher_.make_tag(tag) && put_code(*info_, tag) ? 0 : 0x52A4003C;
    }
    Bytes last;
    return cipher_.finish_blocks(last) ? writing_.write(last) : 0x52A4003C;
}

/// False when memory runs out.
bool ENVELOPED_MESSAGE_WRITER::finish_code() noexcept {
    ContentCode::Result result;
    if (is_digested()) return code_.finish_digest(result) && put_code(*info_, result.bytes());
    const X509_ATTRIBUTES *attributes = authenticated_attributes(*info_);
    Encoder set;
    Element element;
    if (attributes != nullptr) {
        if (!code_.finish_digest(result) || !put_digest(*info_, result.bytes())) return false;
        Attributes::encode(set, attributes, kSet);
        if (!set.ok() || !read_element(set.bytes(), element)) return false;
    }
    return code_.finish_code(attributes != nullptr ? &element : nullptr, result) &&
           put_code(*info_, result.bytes());
}

u32 ENVELOPED_MESSAGE_WRITER::end_message() noexcept {
    Encoder whole;
    Codec<CMS_CONTENT_INFO>::encode(whole, info_.get());
    return writing_.end_message(whole);
}

ENVELOPED_MESSAGE_WRITER *new_ENVELOPED_MESSAGE_WRITER(const ENVELOPED_MESSAGE_WRITER_SETTINGS *settings) {
    if (settings == nullptr || !can_write_with(*settings) || settings->algorithm == nullptr) return nullptr;
    if (!is_written(settings->type, settings->form)) return nullptr;
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
