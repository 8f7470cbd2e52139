// Ciphers against libcrypto: every identifier of the block ciphers, padding, pieces of any size, RC4.

#include <algorithm>
#include <numeric>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"
#include "support/rows.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Held<free_BLOCK_CIPHER_UNIT>;

constexpr std::uint32_t kAes128Cbc = 0x01000120;
constexpr std::uint32_t kAes256Cbc = 0x01000320;

Octets count_up(std::size_t length, int first) {
    Octets octets(length);
    std::iota(octets.begin(), octets.end(), static_cast<std::uint8_t>(first));
    return octets;
}

const Octets kKey = count_up(32, 1);
const Octets kIv = count_up(16, 0x80);

/// The output in one call, in place; empty when the status is not 0.
Octets run(std::uint32_t id, std::uint32_t direction, const Octets &in, std::uint32_t expected_status = 0) {
    Octets out = in;
    out.resize(in.size() + 16);
    std::uint32_t size = 99;
    EXPECT_EQ(BlockCipher(id, direction, kKey.data(), kIv.data(), out.data(), &size, out.data(), length(in)),
              expected_status);
    out.resize(size);
    return out;
}

/// The output of a unit that is fed piece by piece.
Octets run_in_pieces(std::uint32_t id, std::uint32_t direction, const Octets &in, std::uint32_t piece) {
    const Unit unit(new_BLOCK_CIPHER_UNIT());
    EXPECT_EQ(init_BlockCipher(unit.get(), id, kKey.data(), kIv.data(), direction), 0U);
    Octets out(in.size() + 32);
    std::uint32_t total = 0;
    std::uint32_t size = 0;
    for (std::uint32_t at = 0; at < in.size(); at += piece) {
        const std::uint32_t now = std::min(piece, length(in) - at);
        const std::uint32_t ready = get_BLOCK_CIPHER_UNIT_output(unit.get(), now);
        EXPECT_EQ(update_BlockCipher(unit.get(), out.data() + total, &size, in.data() + at, now), 0U);
        EXPECT_EQ(size, ready);
        total += size;
    }
    const std::uint32_t most = get_BLOCK_CIPHER_UNIT_final(unit.get());
    EXPECT_EQ(final_BlockCipher(unit.get(), out.data() + total, &size), 0U);
    EXPECT_TRUE(direction == 1 ? size == most : size <= most) << size;
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_output(unit.get(), 16) + get_BLOCK_CIPHER_UNIT_final(unit.get()), 0U);
    out.resize(total + size);
    return out;
}

/// The lengths of key, IV and block of an identifier, which works as libcrypto's cipher of the name does.
std::string agree(const Row &row) {
    const std::uint32_t id = row.number(1);
    const std::uint32_t key_length = get_KeyLength(id);
    const std::uint32_t iv_length = get_IVLength(id);
    for (const std::size_t size : {0U, 1U, 16U, 100U}) {
        if (key_length == 0) continue;
        const Octets data = count_up(size, 0x33);
        const Octets sealed =
            peer::cipher(row[2], true, count_up(key_length, 1), count_up(iv_length, 0x80), data);
        EXPECT_EQ(run(id, 1, data), sealed) << size;
        EXPECT_EQ(run(id, 0, sealed), data) << size;
        for (const std::uint32_t piece : {1U, 7U}) {
            EXPECT_EQ(run_in_pieces(id, 1, data, piece), sealed) << size << " by " << piece;
            EXPECT_EQ(run_in_pieces(id, 0, sealed, piece), data) << size << " by " << piece;
        }
    }
    EXPECT_TRUE(key_length != 0 || run(id, 1, {1}, 1).empty());
    return std::to_string(key_length) + " " + std::to_string(iv_length) + " " +
           std::to_string(get_BlockLength(id));
}

/// What becomes of 32 octets that were encrypted without padding: the last of the plaintext decide.
std::string unpad(const Row &row) {
    Octets plain(32, 0x55);
    plain[30] = static_cast<std::uint8_t>(row.number(1));
    plain[31] = static_cast<std::uint8_t>(row.number(2));
    // Two blocks of the padded encryption are the encryption without padding.
    Octets sealed = peer::cipher("AES-256-CBC", true, kKey, Octets(16), plain);
    sealed.resize(32);
    Octets out(32, 0xEE);
    std::uint32_t size = 99;
    // Without an IV, which is zero then.
    const std::uint32_t status =
        BlockCipher(kAes256Cbc, 0, kKey.data(), nullptr, out.data(), &size, sealed.data(), 32);
    EXPECT_EQ(out[0], status == 0 ? 0x55 : 0) << "plaintext left behind";
    EXPECT_TRUE(status == 0 || (status == TLX_CIPHER_BAD_PADDING && size == 0));
    return status == 0 ? std::to_string(size) : "bad";
}

/// Steps with a unit for AES-128 in CBC mode, in one buffer.
std::string run_on_unit(const Row &row) {
    const Unit owned(new_BLOCK_CIPHER_UNIT());
    BLOCK_CIPHER_UNIT *unit = owned.get();
    const std::uint8_t *key = kKey.data();
    const std::uint8_t *iv = kIv.data();
    std::uint8_t buffer[64] = {};
    std::uint32_t size = 9;
    using N = const Numbers &;
    const Steps steps = {
        {"init", [&](N n) { return init_BlockCipher(unit, kAes128Cbc, key, iv, n[0]); }},
        {"init-null", [&](N n) { return init_BlockCipher(unit, kAes128Cbc, nullptr, iv, n[0]); }},
        {"update", [&](N n) { return update_BlockCipher(unit, buffer, &size, buffer, n[0]); }},
        {"update-null", [&](N n) { return update_BlockCipher(unit, buffer, &size, nullptr, n[0]); }},
        {"final", [&](N) { return final_BlockCipher(unit, buffer, &size); }},
        {"final-null", [&](N) { return final_BlockCipher(unit, nullptr, &size); }},
        {"seal-null", [&](N n) { return BlockCipher(kAes128Cbc, 1, key, iv, nullptr, &size, buffer, n[0]); }},
        {"size", [&](N) { return size; }},
        {"id", [&](N) { return get_BLOCK_CIPHER_UNIT_id(unit); }},
        {"iv",
         [&](N) {
             const std::uint8_t *kept = get_BLOCK_CIPHER_UNIT_iv(unit, &size);
             return kept != nullptr && Octets(kept, kept + size) == kIv ? 1U : 0U;
         }},
    };
    return run_steps(row[1], steps);
}

TEST(BlockCipher, Rows) {
    expect_rows("cipher.txt", {{"cipher", {agree}}, {"padding", {unpad}}, {"steps", {run_on_unit}}});
    EXPECT_EQ(sweep_failing_allocations([] { return Unit(new_BLOCK_CIPHER_UNIT()) != nullptr; }), 1U);
    run(kAes256Cbc, 0, Octets(31), TLX_CIPHER_BAD_PADDING);
    run(0x01000300, 0, {}, TLX_CIPHER_BAD_PADDING);
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST(Rc4, AgreesWithLibcryptoForKeysOfAnyLength) {
    const LeakCheck leaks;
    EXPECT_EQ(sweep_failing_allocations([] { return Held<free_RC4_UNIT>(new_RC4_UNIT()) != nullptr; }), 1U);
    const Held<free_RC4_UNIT> unit(new_RC4_UNIT());
    std::uint8_t octets[257] = {};
    EXPECT_EQ(update_RC4(unit.get(), octets, octets, 1), 1U) << "before init";
    const Octets data(500, 0x11);
    for (const std::uint32_t key_length : {1U, 64U, 65U, 256U}) {
        const Octets key = count_up(key_length, 7);
        ASSERT_EQ(init_RC4(unit.get(), key.data(), key_length), 0U);
        Octets out(data.size());
        ASSERT_EQ(update_RC4(unit.get(), out.data(), data.data(), 123), 0U);
        ASSERT_EQ(update_RC4(unit.get(), out.data() + 123, data.data() + 123, 377), 0U);
        EXPECT_EQ(out, peer::cipher("RC4", true, key, {}, data)) << key_length;
    }
    EXPECT_EQ(update_RC4(unit.get(), octets, nullptr, 1), 1U);
    EXPECT_EQ(init_RC4(unit.get(), nullptr, 5), 1U);
    EXPECT_EQ(init_RC4(unit.get(), octets, 257), 1U);
    EXPECT_EQ(init_RC4(unit.get(), octets, 0), 1U);
    EXPECT_EQ(update_RC4(unit.get(), octets, octets, 1), 1U) << "a failed init leaves no key";
}

}  // namespace
