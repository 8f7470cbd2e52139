// Authenticated encryption and key wrap: published vectors, pieces of any size, associated data before and
// after the message, what is refused.

#include <algorithm>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/libcrypto_faults.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

using namespace tlx_test;
using Unit = Held<free_AEAD_UNIT>;

struct Message {
    std::uint32_t cipher_id;
    Octets key, nonce, data, text;

    explicit Message(const Row &row)
        : cipher_id(row.number(1)),
          key(hex(row[2])),
          nonce(hex(row[3])),
          data(hex(row[4])),
          text(hex(row[5])) {}
};

/// How a unit gets what it gets.
struct Way {
    std::uint32_t piece;  ///< octets at a time
    bool data_last;       ///< associated data after the message
};
constexpr Way kWays[] = {{1000, false}, {1000, true}, {1, false}, {1, true}, {7, true}};

std::uint32_t add_data(AEAD_UNIT *unit, const Octets &data, std::uint32_t piece) {
    for (std::uint32_t at = 0; at < data.size(); at += piece)
        if (add_AEAD_data(unit, data.data() + at, std::min(piece, length(data) - at)) != 0) return 1;
    return 0;
}

/// A unit that has everything but the end, and the text that it gave out; null after a failure.
Unit run(const Message &message, std::uint32_t direction, const Way &way, Octets &text) {
    Unit unit(new_AEAD_UNIT());
    const std::uint32_t size = length(message.nonce);
    std::uint32_t failed =
        init_AEAD(unit.get(), message.cipher_id, message.key.data(), message.nonce.data(), size, direction);
    if (failed == 0 && !way.data_last) failed = add_data(unit.get(), message.data, way.piece);
    for (std::uint32_t at = 0; at < text.size() && failed == 0; at += way.piece) {
        std::uint8_t *here = text.data() + at;
        failed = update_AEAD(unit.get(), here, here, std::min(way.piece, length(text) - at));
    }
    if (failed == 0 && way.data_last) failed = add_data(unit.get(), message.data, way.piece);
    return failed == 0 ? std::move(unit) : nullptr;
}

std::string seal(const Message &message, const Way &way) {
    Octets text = message.text;
    Octets tag(TLX_AEAD_TAG_LENGTH);
    const Unit unit = run(message, 1, way, text);
    if (unit == nullptr || finish_AEAD_encryption(unit.get(), tag.data()) != 0) return "1";
    return trimmed(digits(text) + " " + digits(tag));
}

std::uint32_t open(const Message &message, const Way &way, Octets text, const Octets &tag) {
    const Unit unit = run(message, 0, way, text);
    if (unit == nullptr) return 1;
    const std::uint32_t status = finish_AEAD_decryption(unit.get(), tag.data(), length(tag));
    EXPECT_TRUE(status != 0 || text == message.text);
    return status;
}

/// The ciphertext and the tag, which all ways give, and which open in all ways unless something was altered.
std::string gcm(const Row &row) {
    const Message message(row);
    const std::string sealed = seal(message, kWays[0]);
    if (sealed == "1") return sealed;
    const Octets text = hex(sealed.substr(0, 2 * message.text.size()));
    Octets tag = hex(sealed.substr(sealed.size() - std::size_t{2} * TLX_AEAD_TAG_LENGTH));
    for (const Way &way : kWays) {
        const std::string again = seal(message, way);
        if (again == "1") return again;
        EXPECT_EQ(again, sealed) << way.piece;
        if (const std::uint32_t status = open(message, way, text, tag); status != 0)
            return std::to_string(status);
        Message altered = message;
        altered.data.push_back(0);
        EXPECT_NE(open(altered, way, text, tag), 0U) << "more associated data";
    }
    tag.resize(TLX_AEAD_LEAST_TAG_LENGTH);
    if (open(message, kWays[1], text, tag) == 1) return "1";
    EXPECT_EQ(open(message, kWays[1], text, tag), 0U) << "a short tag";
    tag[11] ^= 1;
    EXPECT_NE(open(message, kWays[1], text, tag), 0U);
    return sealed;
}

/// The wrapped key, which unwraps again unless it was altered.
std::string wrap(const Row &row) {
    const Octets kek = hex(row[2]);
    const Octets key = hex(row[3]);
    Octets wrapped(key.size() + TLX_KEY_WRAP_OVERHEAD);
    std::uint32_t size = 9;
    const std::uint32_t status =
        wrap_KEY(row.number(1), kek.data(), wrapped.data(), &size, key.data(), length(key));
    if (status != 0) return std::to_string(status) + (size == 0 ? "" : " with octets");
    Octets unwrapped(key.size());
    for (const std::uint32_t expected : {0U, TLX_KEY_WRAP_BAD_KEY}) {
        const std::uint32_t opened =
            unwrap_KEY(row.number(1), kek.data(), unwrapped.data(), &size, wrapped.data(), length(wrapped));
        if (opened == 1) return "1";
        EXPECT_EQ(opened, expected);
        EXPECT_EQ(unwrapped, expected == 0 ? key : Octets(key.size()));
        EXPECT_EQ(size, expected == 0 ? length(key) : 0U);
        wrapped[3] ^= 1;
    }
    return digits(wrapped);
}

class Authenticated : public LeakFreeTest {};

TEST_F(Authenticated, Rows) {
    expect_rows("aead.txt", {{"gcm", {gcm, {"1"}}}, {"wrap", {wrap, {"1"}}}});
    EXPECT_TRUE(openssl::error_queue_is_empty());
}

/// Associated data cannot surround a message, and a unit that ended or failed
/// takes nothing.
TEST_F(Authenticated, KeepsTheOrderOfCalls) {
    const Octets key(16);
    const Octets nonce(12);
    Octets out(16);
    const Unit unit(new_AEAD_UNIT());
    const auto start = [&](std::uint32_t direction) {
        return init_AEAD(unit.get(), TLX_AEAD_AES128_GCM, key.data(), nonce.data(), 12, direction);
    };
    const auto update = [&] { return update_AEAD(unit.get(), out.data(), out.data(), 16); };
    const auto add = [&] { return add_AEAD_data(unit.get(), key.data(), 16); };
    EXPECT_EQ(update() + add() + finish_AEAD_encryption(unit.get(), out.data()), 3U) << "no key";
    EXPECT_EQ(start(1) + add() + update() + update(), 0U);
    EXPECT_EQ(add(), 1U) << "before and after";
    EXPECT_EQ(update(), 1U) << "ended";
    EXPECT_EQ(start(1) + update() + add(), 0U);
    EXPECT_EQ(update(), 1U) << "after the last associated data";
    EXPECT_EQ(start(0) + update(), 0U);
    EXPECT_EQ(finish_AEAD_encryption(unit.get(), out.data()), 1U) << "of a decryption";
    EXPECT_EQ(start(0), 0U);
    EXPECT_EQ(finish_AEAD_decryption(unit.get(), out.data(), 11), 1U) << "a tag too short";
    EXPECT_EQ(start(0), 0U);
    EXPECT_EQ(finish_AEAD_decryption(unit.get(), out.data(), 16), TLX_AEAD_BAD_TAG);
    EXPECT_EQ(start(1), 0U);
    EXPECT_EQ(start(2), 1U) << "no direction";
    EXPECT_EQ(update(), 1U) << "the beginning failed";
    EXPECT_EQ(init_AEAD(unit.get(), TLX_AEAD_AES128_GCM, key.data(), nonce.data(), 0, 1), 1U);
    EXPECT_EQ(init_AEAD(nullptr, TLX_AEAD_AES128_GCM, key.data(), nonce.data(), 12, 1), 1U);
    EXPECT_EQ(get_AEAD_key_length(TLX_AEAD_ARIA192_GCM), 24U);
    EXPECT_EQ(get_AEAD_key_length(TLX_CIPHER_AES128), 0U);
}

TEST_F(Authenticated, ReturnsOneWhenLibcryptoRunsOutOfMemory) {
    for (const Row &row : read_rows("aead.txt")) {
        if (row.fields.back() == "1" || row[0] != "gcm") continue;
        const unsigned failures = sweep_failing_libcrypto_allocations(
            [&row] { return seal(Message(row), kWays[1]) == "1" ? 1U : 0U; });
        EXPECT_EQ(failures > 0, kSharesLibcrypto);
        break;
    }
}

}  // namespace
