// Block ciphers against libcrypto for every identifier, padding, pieces of any size.
#include <gtest/gtest.h>
#include <tlxcrypto/cipher.h>

#include <string>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_key_peer.hpp"
#include "support/openssl_peer.hpp"

namespace {

namespace peer = tlx_test::openssl;
using namespace tlx_test;
using Unit = Owned<BLOCK_CIPHER_UNIT>;

const struct Cipher {
    std::uint32_t id;
    const char *name;
    std::uint32_t key_length;
    std::uint32_t iv_length;
    std::uint32_t block_length;
} kCiphers[] = {
    {0x01000100, "AES-128-ECB", 16, 0, 16},   {0x01000120, "AES-128-CBC", 16, 16, 16},
    {0x01000140, "AES-128-CFB", 16, 16, 16},  {0x01000160, "AES-128-OFB", 16, 16, 16},
    {0x01000200, "AES-192-ECB", 24, 0, 16},   {0x01000220, "AES-192-CBC", 24, 16, 16},
    {0x01000240, "AES-192-CFB", 24, 16, 16},  {0x01000260, "AES-192-OFB", 24, 16, 16},
    {0x01000300, "AES-256-ECB", 32, 0, 16},   {0x01000320, "AES-256-CBC", 32, 16, 16},
    {0x01000340, "AES-256-CFB", 32, 16, 16},  {0x01000360, "AES-256-OFB", 32, 16, 16},
    {0x02000100, "DES-ECB", 8, 0, 8},         {0x02000120, "DES-CBC", 8, 8, 8},
    {0x02000140, "DES-CFB", 8, 8, 8},         {0x02000160, "DES-OFB", 8, 8, 8},
    {0x02000200, "DES-EDE", 16, 0, 8},        {0x02000220, "DES-EDE-CBC", 16, 8, 8},
    {0x02000240, "DES-EDE-CFB", 16, 8, 8},    {0x02000260, "DES-EDE-OFB", 16, 8, 8},
    {0x02001220, "DES-EDE-CBC", 16, 8, 8},    {0x02010200, "DES-EDE3", 24, 0, 8},
    {0x02010220, "DES-EDE3-CBC", 24, 8, 8},   {0x02010240, "DES-EDE3-CFB", 24, 8, 8},
    {0x02010260, "DES-EDE3-OFB", 24, 8, 8},   {0x03000100, "ARIA-128-ECB", 16, 0, 16},
    {0x03000120, "ARIA-128-CBC", 16, 16, 16}, {0x03000140, "ARIA-128-CFB", 16, 16, 16},
    {0x03000160, "ARIA-128-OFB", 16, 16, 16}, {0x04000100, "SEED-ECB", 16, 0, 16},
    {0x04000120, "SEED-CBC", 16, 16, 16},     {0x04000140, "SEED-CFB", 16, 16, 16},
    {0x04000160, "SEED-OFB", 16, 16, 16},     {0x06000100, "BF-ECB", 16, 0, 8},
    {0x06000120, "BF-CBC", 16, 8, 8},         {0x06000140, "BF-CFB", 16, 8, 8},
    {0x06000160, "BF-OFB", 16, 8, 8},         {0x07000120, "RC2-CBC", 16, 8, 8},
    {0x07000220, "RC2-40-CBC", 5, 8, 8},
};

Octets count_up(std::size_t length, std::uint8_t first) {
    Octets octets(length);
    for (std::uint8_t &octet : octets)
        octet = first++;
    return octets;
}

std::uint32_t run(std::uint32_t id, std::uint32_t direction, const Octets &in, Octets &out) {
    const Octets key = count_up(32, 1);
    const Octets iv = count_up(16, 0x80);
    out.assign(in.size() + 16, 0xEE);
    std::uint32_t length = 99;
    const std::uint32_t status = BlockCipher(id, direction, key.data(), iv.data(), out.data(), &length,
                                             in.data(), static_cast<std::uint32_t>(in.size()));
    if (status == 0) {
        out.resize(length);
    } else {
        EXPECT_EQ(length, 0U);
    }
    return status;
}

TEST(BlockCipher, AgreesWithLibcryptoForEveryIdentifier) {
    const LeakCheck leaks;
    for (const Cipher &c : kCiphers) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(get_KeyLength(c.id), c.key_length);
        EXPECT_EQ(get_IVLength(c.id), c.iv_length);
        EXPECT_EQ(get_BlockLength(c.id), c.block_length);
        for (const std::size_t length : {0U, 1U, 8U, 15U, 16U, 1000U}) {
            const Octets data = count_up(length, 0x33);
            Octets ours;
            ASSERT_EQ(run(c.id, 1, data, ours), 0U);
            EXPECT_EQ(ours, peer::cipher(c.name, true, count_up(c.key_length, 1), count_up(c.iv_length, 0x80),
                                         data))
                << length;
            Octets back;
            ASSERT_EQ(run(c.id, 0, ours, back), 0U);
            EXPECT_EQ(back, data);
        }
    }
}

TEST(BlockCipher, StreamsInAnyPieces) {
    const LeakCheck leaks;
    const Octets data = count_up(333, 7);
    const Octets key = count_up(32, 1);
    const Octets iv = count_up(16, 0x80);
    const Unit unit(new_BLOCK_CIPHER_UNIT());
    for (const std::uint32_t id : {0x01000320U, 0x04000140U, 0x02010200U}) {
        Octets whole;
        ASSERT_EQ(run(id, 1, data, whole), 0U);
        for (const std::size_t piece : {1U, 7U, 16U, 200U}) {
            for (const std::uint32_t direction : {1U, 0U}) {
                SCOPED_TRACE(std::to_string(id) + " by " + std::to_string(piece));
                const Octets &in = direction == 1 ? data : whole;
                Octets out(in.size() + 32);
                std::uint32_t total = 0;
                std::uint32_t length = 0;
                ASSERT_EQ(init_BlockCipher(unit.get(), id, key.data(), iv.data(), direction), 0U);
                for (std::size_t at = 0; at < in.size(); at += piece) {
                    const std::size_t now = std::min(piece, in.size() - at);
                    ASSERT_EQ(update_BlockCipher(unit.get(), out.data() + total, &length, in.data() + at,
                                                 static_cast<std::uint32_t>(now)),
                              0U);
                    total += length;
                }
                ASSERT_EQ(final_BlockCipher(unit.get(), out.data() + total, &length), 0U);
                out.resize(total + length);
                EXPECT_EQ(out, direction == 1 ? whole : data);
            }
        }
    }
}

TEST(BlockCipher, RefusesBadPaddingAndWipes) {
    const LeakCheck leaks;
    const Octets key = count_up(32, 1);
    const Octets iv(16);
    // Encrypted without padding: the last octet of the plaintext decides.
    const struct {
        const char *what;
        std::uint8_t last;
        std::uint8_t before_last;
        std::uint32_t status;
    } kCases[] = {
        {"no octet of padding", 0, 0, TLX_CIPHER_BAD_PADDING},
        {"more than a block", 17, 17, TLX_CIPHER_BAD_PADDING},
        {"octets that differ", 2, 3, TLX_CIPHER_BAD_PADDING},
        {"two octets", 2, 2, 0},
        {"one octet", 1, 9, 0},
    };
    for (const auto &c : kCases) {
        Octets plain(32, 0x55);
        plain[31] = c.last;
        plain[30] = c.before_last;
        // Two blocks of the padded encryption are the encryption without padding.
        Octets sealed = peer::cipher("AES-256-CBC", true, key, iv, plain);
        sealed.resize(32);
        Octets out(32, 0xEE);
        std::uint32_t length = 99;
        EXPECT_EQ(BlockCipher(0x01000320, 0, key.data(), nullptr, out.data(), &length, sealed.data(), 32),
                  c.status)
            << c.what;
        EXPECT_EQ(length, c.status == 0 ? 32U - c.last : 0U) << c.what;
        if (c.status != 0) {
            EXPECT_EQ(Octets(out.begin(), out.begin() + 16), Octets(16))
                << c.what << ": plaintext left behind";
        }
    }
    Octets out;
    EXPECT_EQ(run(0x01000320, 0, Octets(31), out), TLX_CIPHER_BAD_PADDING) << "not whole blocks";
    EXPECT_EQ(run(0x01000300, 0, {}, out), TLX_CIPHER_BAD_PADDING) << "not one block";
    EXPECT_EQ(run(0x01000360, 0, {}, out), 0U) << "OFB does not pad";
    EXPECT_TRUE(peer::error_queue_is_empty());
}

TEST(BlockCipher, WorksInPlace) {
    Octets expected;
    const Octets data = count_up(100, 3);
    ASSERT_EQ(run(0x03000120, 1, data, expected), 0U);
    Octets buffer = data;
    buffer.resize(116);
    const Octets key = count_up(16, 1);
    const Octets iv = count_up(16, 0x80);
    std::uint32_t length = 0;
    ASSERT_EQ(BlockCipher(0x03000120, 1, key.data(), iv.data(), buffer.data(), &length, buffer.data(), 100),
              0U);
    buffer.resize(length);
    EXPECT_EQ(buffer, expected);
}

TEST(BlockCipher, UnknownAndMissingCiphersFail) {
    const LeakCheck leaks;
    // RC5 is not part of Debian's libcrypto; the others are no identifiers of ciphers.
    for (const std::uint32_t id : {0x05000100U, 0x05000120U, 0x05000140U, 0x05000160U, 0U, 0x01000101U,
                                   0x01000180U, 0x07000240U, 0x20000001U}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(get_KeyLength(id), 0U);
        EXPECT_EQ(get_IVLength(id), 0U);
        EXPECT_EQ(get_BlockLength(id), 0U);
        Octets out;
        EXPECT_EQ(run(id, 1, {1, 2, 3}, out), 1U);
    }
}

TEST(BlockCipher, RefusesBadArgumentsAndOrder) {
    const LeakCheck leaks;
    const Octets key = count_up(16, 1);
    const Octets iv = count_up(16, 0x80);
    const Unit unit(new_BLOCK_CIPHER_UNIT());
    std::uint8_t out[64];
    std::uint32_t length = 9;
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_iv(unit.get(), &length), nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(update_BlockCipher(unit.get(), out, &length, out, 16), 1U) << "before init";
    EXPECT_EQ(final_BlockCipher(unit.get(), out, &length), 1U) << "before init";
    EXPECT_EQ(init_BlockCipher(nullptr, 0x01000120, key.data(), iv.data(), 1), 1U);
    EXPECT_EQ(init_BlockCipher(unit.get(), 0x01000120, key.data(), iv.data(), 2), 1U);
    ASSERT_EQ(init_BlockCipher(unit.get(), 0x01000120, key.data(), iv.data(), 1), 0U);
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_id(unit.get()), 0x01000120U);
    EXPECT_EQ(update_BlockCipher(unit.get(), nullptr, &length, out, 16), 1U);
    EXPECT_EQ(update_BlockCipher(unit.get(), out, nullptr, out, 16), 1U);
    EXPECT_EQ(update_BlockCipher(unit.get(), out, &length, nullptr, 16), 1U);
    EXPECT_EQ(update_BlockCipher(unit.get(), out, &length, out, 0x7FFFFF01), 1U) << "too much at once";
    EXPECT_EQ(update_BlockCipher(unit.get(), nullptr, &length, nullptr, 0), 0U);
    EXPECT_EQ(final_BlockCipher(unit.get(), nullptr, &length), 1U);
    EXPECT_EQ(final_BlockCipher(unit.get(), out, &length), 0U);
    EXPECT_EQ(length, 16U);
    EXPECT_EQ(final_BlockCipher(unit.get(), out, &length), 1U) << "it has ended";
    const std::uint8_t *kept = get_BLOCK_CIPHER_UNIT_iv(unit.get(), &length);
    ASSERT_EQ(length, 16U);
    EXPECT_EQ(Octets(kept, kept + 16), iv) << "the first IV, not the last block";
    EXPECT_EQ(init_BlockCipher(unit.get(), 0x01000120, nullptr, iv.data(), 1), 1U);
    EXPECT_EQ(get_BLOCK_CIPHER_UNIT_id(unit.get()), 0U);
    EXPECT_EQ(BlockCipher(0x01000120, 1, key.data(), iv.data(), nullptr, &length, out, 1), 1U);
    EXPECT_EQ(BlockCipher(0x01000120, 1, key.data(), iv.data(), out, nullptr, out, 1), 1U);
}

TEST(BlockCipher, SurvivesFailingAllocations) {
    const unsigned failures = sweep_failing_allocations([] {
        const Unit unit(new_BLOCK_CIPHER_UNIT());
        return unit != nullptr;
    });
    EXPECT_EQ(failures, 1U);
}

}  // namespace
