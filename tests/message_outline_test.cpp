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

/// The octets of content and the outline, or the status: the same for all pieces.
std::string outlines(const Row &row) {
    const std::uint32_t limit = row[0] == "limited" ? row.number(3) : 0;
    const Octets message = der(row[1]);
    const std::string first = outline(message, message.size() + 1, limit);
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
    expect_rows("message_outline.txt", {{"outline", {same}}, {"limited", {same}}});
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
}

}  // namespace
}  // namespace tlx_test
