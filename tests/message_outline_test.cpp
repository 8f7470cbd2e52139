// Messages without their content, from pieces of any length.
#include <gtest/gtest.h>
#include <tlxpki/message_outline.h>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/der_text.hpp"
#include "support/message_reader.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

using Outline = Held<free_MESSAGE_OUTLINE>;

std::string outline(const Octets &message, std::size_t piece, std::uint32_t held_limit) {
    const Outline outline(new_MESSAGE_OUTLINE(held_limit));
    if (outline == nullptr) return "null";
    const std::uint32_t status =
        in_pieces(message, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
            return update_MESSAGE_OUTLINE(outline.get(), octets, len);
        });
    if (status != 0) return status_text(status);
    std::uint8_t *octets = nullptr;
    std::uint32_t len = 0;
    std::uint64_t size = 0;
    const std::uint32_t written = write_MESSAGE_OUTLINE(outline.get(), &octets, &len, &size);
    const Held<tlx_free> owner(static_cast<void *>(octets));
    if (written != 0) return status_text(written);
    return (size == UINT64_MAX ? "none " : std::to_string(size) + " ") + hex_of(octets, len);
}

/// Writes an outline with content in pieces of 2 octets. A status, or "null" without a writer.
std::string write(OUTLINE_WRITER_SETTINGS settings, const Octets &outline, const Octets &content,
                  Octets &written) {
    settings.output = collect_octets;
    settings.context = &written;
    settings.message = outline.data();
    settings.len = length(outline);
    const Held<free_OUTLINE_WRITER> writer(new_OUTLINE_WRITER(&settings));
    if (writer == nullptr) return "null";
    const std::uint32_t status = in_pieces(content, 2, [&](const std::uint8_t *part, std::uint32_t len) {
        return update_OUTLINE_WRITER(writer.get(), part, len);
    });
    const std::uint32_t ended = final_OUTLINE_WRITER(writer.get());
    EXPECT_EQ(final_OUTLINE_WRITER(writer.get()), status != 0 ? status : 0x52AC002BU);
    return status_text(status != 0 ? status : ended);
}

/// Outline, form, size, tag, content: the status, and the message if it is another one.
std::string writes(const Row &row) {
    OUTLINE_WRITER_SETTINGS settings = {};
    settings.form = row.number(2);
    settings.size = row.number(3);
    settings.content_tag = row.number(4);
    Octets written;
    const std::string status = write(settings, der(row[1]), der(row[5]), written);
    const bool is_right = status != "00000000" || written == der(row[6]);
    return is_right ? status : hex_of(written.data(), written.size());
}

/// A message that is taken apart and written again in DER.
Octets rewritten(const Octets &message) {
    const Outline outline(new_MESSAGE_OUTLINE(0));
    Octets content, again;
    OUTLINE_WRITER_SETTINGS settings = {};
    std::uint8_t *octets = nullptr;
    std::uint32_t len = 0;
    EXPECT_EQ(set_MESSAGE_OUTLINE_output(outline.get(), collect_octets, &content), 0U);
    EXPECT_EQ(get_MESSAGE_OUTLINE_content_tag(outline.get()), 0U);
    EXPECT_EQ(update_MESSAGE_OUTLINE(outline.get(), message.data(), length(message)), 0U);
    EXPECT_EQ(write_MESSAGE_OUTLINE(outline.get(), &octets, &len, &settings.size), 0U);
    const Held<tlx_free> owner(static_cast<void *>(octets));
    settings.content_tag = get_MESSAGE_OUTLINE_content_tag(outline.get());
    settings.form = settings.content_tag == 0 ? TLX_MESSAGE_DETACHED : TLX_MESSAGE_DER;
    if (settings.content_tag == 0) settings.size = 0;
    EXPECT_EQ(write(settings, {octets, octets + len}, content, again), "00000000");
    return again;
}

/// The octets of content and the outline, or the status: the same for all pieces, and for the message that is
/// written again.
std::string outlines(const Row &row) {
    const std::uint32_t limit = row[0] == "limited" ? row.number(3) : 0;
    const Octets message = der(row[1]);
    const std::string first = outline(message, message.size() + 1, limit);
    if (first.find(' ') != std::string::npos) {
        const std::string other = outline(rewritten(message), 3, limit);
        if (other != first) return first + " but written again " + other;
    }
    for (const std::size_t piece : {1U, 2U, 5U}) {
        const std::string other = outline(message, piece, limit);
        if (other != first) return first + " but " + other;
    }
    return first;
}

TEST(MessageOutline, Rows) {
    const auto same = [](const Row &row) {
        const Octets expected = row[2] == "none" ? Octets() : der(row[2]);
        const std::string found = outlines(row);
        const std::string hex = hex_of(expected.data(), expected.size());
        return found.ends_with(" " + hex) ? found.substr(0, found.size() - hex.size() - 1) : found;
    };
    expect_rows("message_outline.txt", {{"outline", {same}}, {"limited", {same}}, {"write", {writes}}});
}

TEST(MessageOutline, SurvivesAnyAllocation) {
    const Octets message = der("30{06:2A864886F70D010706 A0{30{02:00 30{06:2A03 30{06:2A03} 80:00}}}}");
    sweep_failing_allocations([&] {
        const std::string found = outline(message, 5, 0);
        EXPECT_TRUE(found.starts_with("1 30") || found == "null" || found == "52A8003C" ||
                    found == "52A9003C");
        return found.starts_with("1 30");
    });
}

TEST(MessageOutline, IsWrittenWhateverAllocationFails) {
    const Octets outline = der("30{06:2A864886F70D010705 A0{30{02:00 30{06:2A03} 30{06:2A03} 04:AA}}}");
    sweep_failing_allocations([&] {
        Octets written;
        const std::string status = write({}, outline, Octets(5), written);
        EXPECT_TRUE(status == "00000000" || status == "null" || status == "52AB003C" || status == "52AC003C")
            << status;
        return status == "00000000";
    });
}

TEST(MessageOutline, RefusesArguments) {
    const Octets message = der("30:");
    std::uint8_t *octets = nullptr;
    std::uint32_t len = 0;
    std::uint64_t size = 0;
    const Outline made(new_MESSAGE_OUTLINE(0));
    EXPECT_EQ(update_MESSAGE_OUTLINE(nullptr, message.data(), 1), 0x52A80049U);
    EXPECT_EQ(update_MESSAGE_OUTLINE(made.get(), nullptr, 1), 0x52A80049U);
    EXPECT_EQ(write_MESSAGE_OUTLINE(made.get(), nullptr, &len, &size), 0x52A90049U);
    EXPECT_EQ(write_MESSAGE_OUTLINE(made.get(), &octets, nullptr, &size), 0x52A90049U);
    EXPECT_EQ(write_MESSAGE_OUTLINE(made.get(), &octets, &len, nullptr), 0x52A90049U);
    EXPECT_EQ(write_MESSAGE_OUTLINE(nullptr, &octets, &len, &size), 0x52A90049U);
    EXPECT_EQ(set_MESSAGE_OUTLINE_output(nullptr, collect_octets, nullptr), 0x52AA0049U);
    EXPECT_EQ(get_MESSAGE_OUTLINE_content_tag(nullptr), 0U);
    EXPECT_EQ(new_OUTLINE_WRITER(nullptr), nullptr);
    EXPECT_EQ(update_OUTLINE_WRITER(nullptr, message.data(), 1), 0x52AB0049U);
    EXPECT_EQ(final_OUTLINE_WRITER(nullptr), 0x52AC0049U);
}

}  // namespace
}  // namespace tlx_test
