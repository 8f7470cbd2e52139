// Messages in pieces, after an octet that chooses the pieces: the result is that of one piece. A signed one
// that is verified verifies as a whole message, and what is read of another one has a record.
#include <tlxpki/message_envelope.h>

#include "identity.hpp"

namespace {

using fuzz::Held;
using fuzz::identity;
using fuzz::require;

constexpr std::uint8_t kContent[] = "some content";
constexpr std::uint32_t kContentLength = sizeof kContent - 1;

struct Reading {
    std::uint32_t status;
    std::string content;
    std::string findings;
    bool detached;

    bool operator==(const Reading &) const = default;
};

/// Lengths of pieces that follow from an octet.
class Pieces {
  public:
    explicit Pieces(std::uint8_t choice) : state_(choice) {}
    std::uint32_t next() {
        state_ = state_ * 1664525 + 1013904223;
        return (state_ >> 24U) % ((state_ >> 16U & 1U) != 0 ? 3 : 40);
    }

  private:
    std::uint32_t state_;
};

std::uint32_t collect(void *context, const std::uint8_t *octets, std::uint32_t length) {
    static_cast<std::string *>(context)->append(reinterpret_cast<const char *>(octets), length);
    return 0;
}

template <typename Next>
Reading read(const std::uint8_t *octets, std::uint32_t size, Next next) {
    Reading reading = {};
    SIGNED_MESSAGE_READER_SETTINGS settings = {};
    settings.unverified_output = collect;
    settings.context = &reading.content;
    settings.pool = identity().pool.get();
    settings.settings = &identity().settings;
    const Held<free_SIGNED_MESSAGE_READER> reader(new_SIGNED_MESSAGE_READER(&settings));
    for (std::uint32_t at = 0; at < size && reading.status == 0;) {
        const std::uint32_t piece = std::min(next(), size - at);
        reading.status = update_SIGNED_MESSAGE_READER(reader.get(), octets + at, piece);
        at += piece;
    }
    if (reading.status != 0) return reading;
    reading.detached = is_SIGNED_MESSAGE_READER_detached(reader.get()) != 0;
    if (reading.detached) update_SIGNED_MESSAGE_READER_content(reader.get(), kContent, kContentLength);
    P7_SIGNER_REPORTS *made = nullptr;
    reading.status = final_SIGNED_MESSAGE_READER(reader.get(), &made);
    const Held<free_P7_SIGNER_REPORTS> reports(made);
    const auto count = static_cast<std::int32_t>(get_P7_SIGNER_REPORTS_count(made));
    for (std::int32_t i = 0; i < count; ++i) {
        const P7_SIGNER_REPORT &report = *get_P7_SIGNER_REPORTS_child(made, i);
        for (const std::uint32_t status :
             {report.certificateStatus, report.algorithmStatus, report.contentStatus, report.signatureStatus,
              report.signingCertificateStatus, report.protectionStatus})
            reading.findings += std::to_string(status) + " ";
    }
    return reading;
}

/// Content is held back, and given out as a message, when the octet that chooses the pieces says so.
template <typename Next>
Reading open(const std::uint8_t *octets, std::uint32_t size, bool held_back, Next next) {
    constexpr std::uint8_t kSecret[32] = {};
    Reading reading = {};
    CMS_KEY_HOLDER holder = {};
    holder.private_key = identity().key.get();
    holder.kek = kSecret;
    holder.kek_len = 16;
    ENVELOPED_MESSAGE_READER_SETTINGS settings = {};
    (held_back ? settings.output : settings.unverified_output) = collect;
    settings.context = &reading.content;
    settings.as_message = held_back ? 1 : 0;
    settings.holder = &holder;
    settings.key = held_back ? kSecret : nullptr;
    settings.key_len = held_back ? 16 : 0;
    const Held<free_ENVELOPED_MESSAGE_READER> reader(new_ENVELOPED_MESSAGE_READER(&settings));
    for (std::uint32_t at = 0; at < size && reading.status == 0;) {
        const std::uint32_t piece = std::min(next(), size - at);
        reading.status = update_ENVELOPED_MESSAGE_READER(reader.get(), octets + at, piece);
        at += piece;
    }
    if (reading.status != 0) return reading;
    reading.detached = is_ENVELOPED_MESSAGE_READER_detached(reader.get()) != 0;
    if (reading.detached) update_ENVELOPED_MESSAGE_READER_content(reader.get(), kContent, kContentLength);
    reading.status = final_ENVELOPED_MESSAGE_READER(reader.get());
    CMS_CONTENT_INFO *record = nullptr;
    const std::uint32_t made = get_ENVELOPED_MESSAGE_READER_message(reader.get(), &record);
    require((made == 0) == (record != nullptr));
    free_CMS_CONTENT_INFO(record);
    reading.findings = std::to_string(made);
    return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const auto length = static_cast<std::uint32_t>(size - 1);
    Pieces pieces(data[0]);
    const Reading whole = read(data + 1, length, [&] { return length; });
    require(whole == read(data + 1, length, [&] { return pieces.next(); }));
    const bool held_back = data[0] >= 0x80;
    const Reading opened = open(data + 1, length, held_back, [&] { return length; });
    if (opened.status != 0x52A20012) {  // under a random key each reading has other octets
        require(opened == open(data + 1, length, held_back, [&] { return pieces.next(); }));
    }
    if (whole.status != 0) return 0;
    void *read_whole = nullptr;
    // Content of other types may be a string of CMS, which PKCS #7 does not have.
    if (readDER_from_Buffer(&read_whole, TLX_DECODER(Seq_to_P7_CONTENT_INFO), data + 1, length) != 0)
        return 0;
    const Held<free_P7_CONTENT_INFO> message(static_cast<P7_CONTENT_INFO *>(read_whole));
    require(verify_PKCS7_Signers_ex(message.get(), whole.detached ? kContent : nullptr,
                                    whole.detached ? kContentLength : 0, identity().pool.get(), nullptr,
                                    &identity().settings, nullptr) == 0);
    return 0;
}
