// Ciphers against libcrypto: every identifier of the block ciphers, padding, pieces of any size, RC4.
#include <gtest/gtest.h>
#include <tlxcrypto/cipher.h>
#include <tlxcrypto/rc4.h>

#include <string>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_peer.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Owned<BLOCK_CIPHER_UNIT>;

// The identifiers of the modes ECB, CBC, CFB and OFB follow each other in steps of 0x20.
const struct {
    std::uint32_t id;
    std::string name;
    std::uint32_t key_length, block_length;
    std::string modes;
} kCiphers[] = {
    {0x01000100, "AES-128", 16, 16, "ECB CBC CFB OFB"},
    {0x01000200, "AES-192", 24, 16, "ECB CBC CFB OFB"},
    {0x01000300, "AES-256", 32, 16, "ECB CBC CFB OFB"},
    {0x02000100, "DES", 8, 8, "ECB CBC CFB OFB"},
    {0x02000200, "DES-EDE", 16, 8, "ECB CBC CFB OFB"},
    {0x02001200, "DES-EDE", 16, 8, "    CBC"},
    {0x02010200, "DES-EDE3", 24, 8, "ECB CBC CFB OFB"},
    {0x03000100, "ARIA-128", 16, 16, "ECB CBC CFB OFB"},
    {0x04000100, "SEED", 16, 16, "ECB CBC CFB OFB"},
    {0x06000100, "BF", 16, 8, "ECB CBC CFB OFB"},
    {0x07000100, "RC2", 16, 8, "    CBC"},
    {0x07000200, "RC2-40", 5, 8, "    CBC"},
    {0x05000100, "RC5, which Debian's lacks", 0, 0, ""},
    {0x05000160, "a mode of it", 0, 0, ""},
    {0x01000101, "none", 0, 0, ""},
    {0x01000180, "no mode", 0, 0, ""},
};

Octets count_up(std::size_t length, std::uint8_t first) {
    Octets octets(length);
    for (std::uint8_t &octet : octets)
        octet = first++;
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
        EXPECT_EQ(update_BlockCipher(unit.get(), out.data() + total, &size, in.data() + at, now), 0U);
        total += size;
    }
    EXPECT_EQ(final_BlockCipher(unit.get(), out.data() + total, &size), 0U);
    out.resize(total + size);
    return out;
}

TEST(BlockCipher, AgreesWithLibcryptoForEveryIdentifier) {
    const LeakCheck leaks;
    for (const auto &c : kCiphers) {
        for (std::uint32_t mode = 0; mode < 4; ++mode) {
            const std::uint32_t id = c.id + 0x20 * mode;
            const std::string suffix = 4 * mode < c.modes.size() ? c.modes.substr(4 * mode, 3) : "   ";
            const bool exists = suffix != "   ";
            SCOPED_TRACE(c.name + " " + suffix);
            const std::uint32_t iv_length = suffix == "ECB" ? 0 : c.block_length;
            EXPECT_EQ(get_KeyLength(id), exists ? c.key_length : 0);
            EXPECT_EQ(get_IVLength(id), exists ? iv_length : 0);
            EXPECT_EQ(get_BlockLength(id), exists ? c.block_length : 0);
            if (!exists) {
                EXPECT_EQ(run(id, 1, {1}, 1), Octets{});
                continue;
            }
            const bool triple_ecb = suffix == "ECB" && c.name.find("EDE") != std::string::npos;
            const std::string name = triple_ecb ? c.name : c.name + "-" + suffix;
            for (const std::size_t size : {0U, 1U, 8U, 15U, 16U, 1000U}) {
                const Octets data = count_up(size, 0x33);
                const Octets sealed =
                    peer::cipher(name, true, count_up(c.key_length, 1), count_up(iv_length, 0x80), data);
                EXPECT_EQ(run(id, 1, data), sealed) << size;
                EXPECT_EQ(run(id, 0, sealed), data) << size;
                for (const std::uint32_t piece : {1U, 7U, 16U}) {
                    EXPECT_EQ(run_in_pieces(id, 1, data, piece), sealed) << size << " by " << piece;
                    EXPECT_EQ(run_in_pieces(id, 0, sealed, piece), data) << size << " by " << piece;
                }
            }
        }
    }
}

TEST(BlockCipher, RefusesBadPaddingAndWipes) {
    const LeakCheck leaks;
    // Encrypted without padding: the last octets of the plaintext decide.
    const struct {
        const char *what;
        std::uint8_t before_last, last;
        std::uint32_t status;
    } kCases[] = {
        {"no octet of padding", 0, 0, TLX_CIPHER_BAD_PADDING},
        {"more than a block", 17, 17, TLX_CIPHER_BAD_PADDING},
        {"octets that differ", 3, 2, TLX_CIPHER_BAD_PADDING},
        {"two octets", 2, 2, 0},
        {"one octet", 9, 1, 0},
    };
    for (const auto &c : kCases) {
        Octets plain(32, 0x55);
        plain[30] = c.before_last;
        plain[31] = c.last;
        // Two blocks of the padded encryption are the encryption without padding.
        Octets sealed = peer::cipher("AES-256-CBC", true, kKey, Octets(16), plain);
        sealed.resize(32);
        Octets out(32, 0xEE);
        std::uint32_t size = 99;
        EXPECT_EQ(BlockCipher(0x01000320, 0, kKey.data(), nullptr, out.data(), &size, sealed.data(), 32),
                  c.status)
            << c.what << ", without an IV, which is zero then";
        EXPECT_EQ(size, c.status == 0 ? 32U - c.last : 0U) << c.what;
        EXPECT_EQ(out[0], c.status == 0 ? 0x55 : 0) << c.what << ": plaintext left behind";
    }
    run(0x01000320, 0, Octets(31), TLX_CIPHER_BAD_PADDING);
    run(0x01000300, 0, {}, TLX_CIPHER_BAD_PADDING);
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST(BlockCipher, RefusesBadArgumentsAndOrder) {
    const LeakCheck leaks;
    EXPECT_EQ(sweep_failing_allocations([] { return Unit(new_BLOCK_CIPHER_UNIT()) != nullptr; }), 1U);
    const Unit owned(new_BLOCK_CIPHER_UNIT());
    BLOCK_CIPHER_UNIT *unit = owned.get();
    const std::uint8_t *key = kKey.data();
    std::uint8_t out[64];
    std::uint32_t size = 9;
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_iv(unit, &size), nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(update_BlockCipher(unit, out, &size, out, 16), 1U) << "before init";
    EXPECT_EQ(final_BlockCipher(unit, out, &size), 1U) << "before init";
    EXPECT_EQ(init_BlockCipher(unit, 0x01000120, key, kIv.data(), 2), 1U) << "no direction";
    ASSERT_EQ(init_BlockCipher(unit, 0x01000120, key, kIv.data(), 1), 0U);
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_id(unit), 0x01000120U);
    EXPECT_EQ(update_BlockCipher(unit, out, &size, nullptr, 16), 1U);
    EXPECT_EQ(update_BlockCipher(unit, out, &size, out, 0x7FFFFF01), 1U) << "too much at once";
    EXPECT_EQ(update_BlockCipher(unit, nullptr, &size, nullptr, 0), 0U);
    EXPECT_EQ(final_BlockCipher(unit, nullptr, &size), 1U);
    EXPECT_EQ(final_BlockCipher(unit, out, &size), 0U) << "still under way";
    std::uint8_t plain[64];
    ASSERT_EQ(init_BlockCipher(unit, 0x01000120, key, kIv.data(), 0), 0U);
    EXPECT_EQ(update_BlockCipher(unit, plain, &size, out, 16), 0U);
    EXPECT_EQ(final_BlockCipher(unit, plain, &size), 0U);
    EXPECT_EQ(final_BlockCipher(unit, plain, &size), 1U) << "it has ended, and has no padding to be bad";
    const std::uint8_t *kept = get_BLOCK_CIPHER_UNIT_iv(unit, &size);
    EXPECT_EQ(Octets(kept, kept + size), kIv) << "the first IV, not the last block";
    EXPECT_EQ(init_BlockCipher(unit, 0x01000120, nullptr, kIv.data(), 1), 1U);
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_id(unit), 0U);
    EXPECT_EQ(BlockCipher(0x01000120, 1, key, kIv.data(), nullptr, &size, out, 1), 1U);
}

TEST(Rc4, AgreesWithLibcryptoForKeysOfAnyLength) {
    const LeakCheck leaks;
    EXPECT_EQ(sweep_failing_allocations([] { return Owned<RC4_UNIT>(new_RC4_UNIT()) != nullptr; }), 1U);
    const Owned<RC4_UNIT> unit(new_RC4_UNIT());
    std::uint8_t octets[257] = {1, 2, 3, 4, 5};
    EXPECT_EQ(update_RC4(unit.get(), octets, octets, 1), 1U) << "before init";
    // RFC 6229, key 0x0102030405, offset 0.
    ASSERT_EQ(init_RC4(unit.get(), octets, 5), 0U);
    Octets stream(16);
    ASSERT_EQ(update_RC4(unit.get(), stream.data(), stream.data(), 16), 0U);
    EXPECT_EQ(hex(stream), "B2396305F03DC027CCC3524A0A1118A8");

    const Octets data(500, 0x11);
    for (const std::uint32_t key_length : {1U, 5U, 16U, 32U, 64U, 65U, 256U}) {
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
