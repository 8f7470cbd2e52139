// Writing signed messages in pieces.
#include <tlxpki/message_stream.h>
#include <tlxpki/time.h>

#include "message/key_signature.hpp"
#include "message/message_signers.hpp"
#include "message/message_writing.hpp"
#include "message/running_digests.hpp"
#include "message/sign.hpp"
#include "verify/object.hpp"

using namespace tlx;

namespace {

using OwnedTime = std::unique_ptr<ASN1_TIME, FreeWith<free_ASN1_TIME>>;

constexpr WritingStatuses kStatuses = {0x5283003C, 0x5283001C, 0x5284001C, 0x5284003C, 0x5284002B};

}  // namespace

struct SIGNED_MESSAGE_WRITER {
  public:
    explicit SIGNED_MESSAGE_WRITER(const SIGNED_MESSAGE_WRITER_SETTINGS &settings) noexcept
        : settings_(settings),
          writing_(settings, MessageKind::signed_data, kStatuses),
          info_(dup_P7_CONTENT_INFO(settings.message)),
          now_(settings.time == nullptr ? getCurrentGMTime() : nullptr) {
        if (settings.time == nullptr) settings_.time = now_.get();
        settings_.message = nullptr;
    }
    [[nodiscard]] bool is_made() const noexcept {
        return (info_ || has_signers()) && settings_.time != nullptr;
    }

    [[nodiscard]] u32 update(Bytes octets) noexcept;
    [[nodiscard]] u32 finish() noexcept;

  private:
    [[nodiscard]] bool has_signers() const noexcept { return settings_.signer_count > 0; }
    [[nodiscard]] bool signs_content() const noexcept { return settings_.bare != 0; }
    [[nodiscard]] P7_SIGNED_DATA &data() const noexcept { return *info_->content.signedData; }
    [[nodiscard]] u32 begin() noexcept;
    [[nodiscard]] u32 begin_signers() noexcept;
    [[nodiscard]] u32 place_content_type() noexcept;
    [[nodiscard]] u32 begin_digests() noexcept;
    [[nodiscard]] u32 begin_message() noexcept;
    [[nodiscard]] u32 write_with_zeros(Encoder &whole) const noexcept;
    [[nodiscard]] u32 take(Bytes octets) noexcept;
    [[nodiscard]] u32 sign() noexcept;
    [[nodiscard]] u32 end_message() noexcept;

    SIGNED_MESSAGE_WRITER_SETTINGS settings_;
    MessageWriting writing_;
    Owned<P7_CONTENT_INFO> info_;
    OwnedTime now_;
    SignedMembers members_ = {};
    MessageSigners signers_;
    RunningDigests digests_;
};

u32 SIGNED_MESSAGE_WRITER::update(Bytes octets) noexcept {
    return writing_.update(
        octets, [&] { return begin(); }, [&](Bytes content) { return take(content); });
}

u32 SIGNED_MESSAGE_WRITER::finish() noexcept {
    return writing_.finish(update({}), [&] {
        const u32 status = sign();
        return status != 0 ? status : end_message();
    });
}

u32 SIGNED_MESSAGE_WRITER::begin() noexcept {
    if (has_signers()) return begin_signers();
    if (content_type(info_.get()) != oid::kPkcs7SignedData || info_->content.any == nullptr) {
        return 0x52830048;
    }
    members_ = members_of(data());
    if (!signs_content() && is_BIGINT_zero(members_.version) != 0) return 0x52830048;
    if (const u32 status = place_content_type(); status != 0) return status;
    const u32 status = init_PKCS7_Sign(info_.get(), writing_.is_detached() ? 1 : 0);
    if (status != 0) return status;
    const u32 begun = begin_digests();
    return begun != 0 ? begun : begin_message();
}

u32 SIGNED_MESSAGE_WRITER::begin_signers() noexcept {
    Encoder whole;
    if (const u32 status = signers_.begin(settings_); status != 0) return status;
    if (const u32 status = signers_.reserve(); status != 0) return status;
    signers_.encode(whole);
    return writing_.begin_message(whole, settings_.size);
}

/// The content itself is never part of the record.
u32 SIGNED_MESSAGE_WRITER::place_content_type() noexcept {
    P7_CONTENT_INFO *&content = data().contentInfo;
    if (content != nullptr && content->contentType != nullptr) {
        const bool lacks_data = content_type(content) == oid::kPkcs7Data && content->content.any == nullptr;
        return lacks_data ? 0 : 0x52830048;
    }
    Owned<P7_CONTENT_INFO> made(new_P7_CONTENT_INFO());
    if (!made || set_PKCS7_Type(made.get(), oid::kPkcs7Data) != 0) return 0x5283003C;
    free_P7_CONTENT_INFO(std::exchange(content, made.release()));
    return 0;
}

u32 SIGNED_MESSAGE_WRITER::begin_digests() noexcept {
    return for_unsigned(members_, [&](const P7_SIGNER_INFO &signer) {
        if (signs_content() && signs_attributes(signer, members_.version)) return 0U;
        const KCDSA *key = signs_content() ? kcdsa_unit(signer.key) : nullptr;
        const auto started = digests_.start(SignerAlgorithms(signer).digest_id, key);
        return started == RunningDigests::Start::done ? 0U : 0x5283003C;
    });
}

u32 SIGNED_MESSAGE_WRITER::begin_message() noexcept {
    Encoder whole;
    if (writing_.is_detached()) return 0;
    const u32 status = write_with_zeros(whole);
    return status != 0 ? status : writing_.begin_message(whole, settings_.size);
}

/// A copy of the message with zeros for signatures.
u32 SIGNED_MESSAGE_WRITER::write_with_zeros(Encoder &whole) const noexcept {
    const Owned<P7_CONTENT_INFO> copy(dup_P7_CONTENT_INFO(info_.get()));
    if (!copy) return 0x5283003C;
    const SignedMembers members = members_of(*copy->content.signedData);
    if (!signs_content()) {
        ContentDigests zeros;
        static_cast<void>(for_unsigned(members, [&](const P7_SIGNER_INFO &signer) {
            constexpr u8 kZeros[TLX_DIGEST_MAX_LENGTH] = {};
            const u32 digest_id = SignerAlgorithms(signer).digest_id;
            if (zeros.get(digest_id).empty()) zeros.put(digest_id, {kZeros, get_DigestLength(digest_id)});
            return 0U;
        }));
        const u32 status =
            put_signed_attributes(members, zeros, data().contentInfo->contentType, settings_.time);
        if (status != 0) return status;
    }
    if (const u32 status = reserve_signatures(members); status != 0) return status;
    Codec<P7_CONTENT_INFO>::encode(whole, copy.get());
    return 0;
}

u32 SIGNED_MESSAGE_WRITER::take(Bytes octets) noexcept {
    if (!digests_.update(octets) || !signers_.update(octets)) return 0x5283003C;
    return writing_.write(octets);
}

u32 SIGNED_MESSAGE_WRITER::sign() noexcept {
    if (has_signers()) return signers_.sign();
    if (!digests_.finish()) return 0x5284003C;
    if (!signs_content()) {
        ContentDigests digests;
        digests_.give_to(digests);
        const u32 status =
            put_signed_attributes(members_, digests, data().contentInfo->contentType, settings_.time);
        if (status != 0) return status;
    }
    return sign_content_in_pieces(members_, digests_, writing_.is_der());
}

u32 SIGNED_MESSAGE_WRITER::end_message() noexcept {
    Encoder whole;
    if (has_signers()) {
        signers_.encode(whole);
    } else {
        Codec<P7_CONTENT_INFO>::encode(whole, info_.get());
    }
    return writing_.end_message(whole);
}

SIGNED_MESSAGE_WRITER *new_SIGNED_MESSAGE_WRITER(const SIGNED_MESSAGE_WRITER_SETTINGS *settings) {
    if (settings == nullptr || !can_write_with(*settings)) return nullptr;
    const bool has_signers = settings->signers != nullptr && settings->signer_count > 0;
    if ((settings->message != nullptr) == has_signers || (!has_signers && settings->signer_count > 0)) {
        return nullptr;
    }
    if (settings->format > TLX_MESSAGE_FORMAT_PKCS7) return nullptr;
    OwnedObject<SIGNED_MESSAGE_WRITER> writer = make_object<SIGNED_MESSAGE_WRITER>(*settings);
    return writer && writer->is_made() ? writer.release() : nullptr;
}

void free_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer) {
    Destroy<SIGNED_MESSAGE_WRITER>{}(writer);
}

uint32_t update_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer, const uint8_t *octets, uint32_t len) {
    if (writer == nullptr || (octets == nullptr && len != 0)) return 0x52830049;
    return writer->update({octets, len});
}

uint32_t final_SIGNED_MESSAGE_WRITER(SIGNED_MESSAGE_WRITER *writer) {
    return writer == nullptr ? 0x52840049 : writer->finish();
}
