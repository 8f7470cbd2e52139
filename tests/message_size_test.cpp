// A message that is written and read in one pass, and of which nothing is stored. With TLX_LONG_TESTS set its
// content has more than 4 GiB, which takes an optimised build.
#include <gtest/gtest.h>
#include <tlxpki/message_envelope.h>

#include <cstdlib>

#include "support/message_reader.hpp"
#include "support/signers.hpp"

#ifndef _WIN32
#include <sys/resource.h>
#endif

namespace tlx_test {
namespace {

constexpr std::uint64_t kShort = std::uint64_t{1} << 20;
constexpr std::uint64_t kLong = (std::uint64_t{1} << 32) + 12345;

/// Octets that the process has had in memory at most; 0 where nobody says.
std::uint64_t peak_of_process() {
#ifdef _WIN32
    return 0;
#else
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
#endif
}

/// The end of a pipe from a writer to a reader.
struct Pipe {
    SIGNED_MESSAGE_READER *reader;
    std::uint64_t content = 0;
    std::uint64_t peak = 0;

    void sample() { peak = std::max(peak, tlx_live_bytes()); }
};

std::uint32_t feed_reader(void *context, const std::uint8_t *octets, std::uint32_t len) {
    auto *pipe = static_cast<Pipe *>(context);
    pipe->sample();
    return update_SIGNED_MESSAGE_READER(pipe->reader, octets, len);
}

std::uint32_t count_content(void *context, const std::uint8_t * /*octets*/, std::uint32_t len) {
    auto *pipe = static_cast<Pipe *>(context);
    pipe->sample();
    pipe->content += len;
    return 0;
}

std::uint32_t feed_opener(void *context, const std::uint8_t *octets, std::uint32_t len) {
    return update_ENVELOPED_MESSAGE_READER(static_cast<ENVELOPED_MESSAGE_READER *>(context), octets, len);
}

/// Feeds content of a size to a writer.
template <typename Update>
void feed(std::uint64_t size, Update update) {
    const Octets piece(100000, 0x5A);
    for (std::uint64_t left = size; left > 0;) {
        const auto len = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, piece.size()));
        ASSERT_EQ(update(piece.data(), len), 0U);
        left -= len;
    }
}

/// Envelops and opens content of a size, and returns the most octets that were allocated.
std::uint64_t peak_of_envelope(std::uint64_t size, std::uint32_t form) {
    const Cert cert = signer_spec(0).make();
    CMS_KEY_HOLDER holder = {};
    holder.certificate = cert.get();
    holder.private_key = signing_key(0);
    Pipe pipe = {};
    ENVELOPED_MESSAGE_READER_SETTINGS reading = {};
    reading.unverified_output = count_content;
    reading.context = &pipe;
    reading.holder = &holder;
    const Held<free_ENVELOPED_MESSAGE_READER> reader(new_ENVELOPED_MESSAGE_READER(&reading));
    CMS_RECIPIENT_SETTINGS recipient = {};
    recipient.certificate = cert.get();
    ENVELOPED_MESSAGE_WRITER_SETTINGS writing = {};
    writing.output = feed_opener;
    writing.context = reader.get();
    writing.type = TLX_MESSAGE_AUTH_ENVELOPED_DATA;
    writing.form = form;
    writing.size = size;
    writing.algorithm = "aes-128-gcm";
    writing.recipients = &recipient;
    writing.recipient_count = 1;
    const Held<free_ENVELOPED_MESSAGE_WRITER> writer(new_ENVELOPED_MESSAGE_WRITER(&writing));
    feed(size, [&](const std::uint8_t *octets, std::uint32_t len) {
        return update_ENVELOPED_MESSAGE_WRITER(writer.get(), octets, len);
    });
    EXPECT_EQ(final_ENVELOPED_MESSAGE_WRITER(writer.get()), 0U);
    EXPECT_EQ(final_ENVELOPED_MESSAGE_READER(reader.get()), 0U);
    EXPECT_EQ(pipe.content, size);
    return pipe.peak;
}

/// Signs and verifies content of a size, and returns the most octets that were allocated.
std::uint64_t peak_of_message(std::uint64_t size, std::uint32_t form) {
    const Held<free_P7_CONTENT_INFO> info(new_P7_CONTENT_INFO());
    const Cert cert = signer_spec(0).make();
    EXPECT_EQ(set_PKCS7_Type(info.get(), TLX_OID_PKCS7_SIGNED_DATA), 0U);
    EXPECT_NE(add_PKCS7_Signature(info.get(), cert.get(), signing_key(0), TLX_OID_SHA256), nullptr);
    EXPECT_EQ(add_PKCS7_Certificate(info.get(), cert.get()), 0U);
    Pipe pipe = {};
    SIGNED_MESSAGE_READER_SETTINGS reading = {};
    reading.unverified_output = count_content;
    reading.context = &pipe;
    const MessageReader reader(new_SIGNED_MESSAGE_READER(&reading));
    pipe.reader = reader.get();
    SIGNED_MESSAGE_WRITER_SETTINGS writing = {};
    writing.output = feed_reader;
    writing.context = &pipe;
    writing.message = info.get();
    writing.form = form;
    writing.size = size;
    const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&writing));
    feed(size, [&](const std::uint8_t *octets, std::uint32_t len) {
        return update_SIGNED_MESSAGE_WRITER(writer.get(), octets, len);
    });
    EXPECT_EQ(final_SIGNED_MESSAGE_WRITER(writer.get()), 0U);
    EXPECT_EQ(final_SIGNED_MESSAGE_READER(reader.get(), nullptr), 0U);
    EXPECT_EQ(pipe.content, size);
    return pipe.peak;
}

TEST(MessageSize, MemoryIsConstant) {
    const bool is_long = std::getenv("TLX_LONG_TESTS") != nullptr;
    make_signing_keys();
    for (const auto peak_of : {peak_of_message, peak_of_envelope}) {
        for (const std::uint32_t form : {TLX_MESSAGE_INDEFINITE, TLX_MESSAGE_DER}) {
            // One form of an envelope that is long suffices: its content is not what forms differ in.
            const bool is_longest = is_long && (peak_of == peak_of_message || form == TLX_MESSAGE_INDEFINITE);
            const std::uint64_t short_peak = peak_of(kShort, form);
            const std::uint64_t process = peak_of_process();
            const std::uint64_t long_peak = peak_of(is_longest ? kLong : 8 * kShort, form);
            const std::uint64_t growth = peak_of_process() - process;
            std::printf(
                "form %u: %llu octets allocated for 1 MiB, %llu for the long message; the process grew by "
                "%llu\n",
                form, static_cast<unsigned long long>(short_peak), static_cast<unsigned long long>(long_peak),
                static_cast<unsigned long long>(growth));
            EXPECT_LE(long_peak, short_peak + 1024);
            EXPECT_LT(long_peak, 2 * kShort);
            EXPECT_TRUE(!is_longest || growth < kShort);
        }
    }
}

}  // namespace
}  // namespace tlx_test
