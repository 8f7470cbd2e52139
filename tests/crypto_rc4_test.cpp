// RC4: RFC 6229's key stream, libcrypto, keys of any length.
#include <gtest/gtest.h>
#include <tlxcrypto/rc4.h>

#include "support/allocation.hpp"
#include "support/crypto_values.hpp"
#include "support/openssl_key_peer.hpp"

namespace {

using namespace tlx_test;
using Unit = Owned<RC4_UNIT>;

TEST(Rc4, GivesThePublishedKeyStream) {
    const LeakCheck leaks;
    const Unit unit(new_RC4_UNIT());
    // RFC 6229, key 0x0102030405, offset 0.
    const Octets key = {1, 2, 3, 4, 5};
    const Octets expected = {0xB2, 0x39, 0x63, 0x05, 0xF0, 0x3D, 0xC0, 0x27,
                             0xCC, 0xC3, 0x52, 0x4A, 0x0A, 0x11, 0x18, 0xA8};
    ASSERT_EQ(init_RC4(unit.get(), key.data(), 5), 0U);
    Octets stream(16);
    ASSERT_EQ(update_RC4(unit.get(), stream.data(), stream.data(), 16), 0U);
    EXPECT_EQ(stream, expected);
}

TEST(Rc4, TakesKeysOfAnyLengthAndPiecesOfAnySize) {
    const LeakCheck leaks;
    const Unit unit(new_RC4_UNIT());
    const Octets data(500, 0x11);
    for (const std::uint32_t key_length : {1U, 5U, 16U, 32U, 64U, 65U, 256U}) {
        SCOPED_TRACE(key_length);
        Octets key(key_length);
        for (std::uint32_t i = 0; i < key_length; ++i)
            key[i] = static_cast<std::uint8_t>(3 * i + 1);
        ASSERT_EQ(init_RC4(unit.get(), key.data(), key_length), 0U);
        Octets out(data.size());
        ASSERT_EQ(update_RC4(unit.get(), out.data(), data.data(), 123), 0U);
        ASSERT_EQ(update_RC4(unit.get(), out.data() + 123, data.data() + 123, 377), 0U);
        EXPECT_EQ(out, openssl::cipher("RC4", true, key, {}, data));
    }
}

TEST(Rc4, RefusesBadArgumentsAndOrder) {
    const Unit unit(new_RC4_UNIT());
    std::uint8_t octets[257] = {};
    EXPECT_EQ(update_RC4(unit.get(), octets, octets, 1), 1U) << "before init";
    EXPECT_EQ(init_RC4(nullptr, octets, 5), 1U);
    EXPECT_EQ(init_RC4(unit.get(), nullptr, 5), 1U);
    EXPECT_EQ(init_RC4(unit.get(), octets, 257), 1U);
    ASSERT_EQ(init_RC4(unit.get(), octets, 256), 0U);
    EXPECT_EQ(update_RC4(unit.get(), nullptr, octets, 1), 1U);
    EXPECT_EQ(update_RC4(unit.get(), octets, nullptr, 1), 1U);
    EXPECT_EQ(update_RC4(unit.get(), nullptr, nullptr, 0), 0U);
    EXPECT_EQ(init_RC4(unit.get(), octets, 0), 1U);
    EXPECT_EQ(update_RC4(unit.get(), octets, octets, 1), 1U) << "a failed init leaves no key";
}

TEST(Rc4, SurvivesFailingAllocations) {
    const unsigned failures = sweep_failing_allocations([] {
        const Unit unit(new_RC4_UNIT());
        return unit != nullptr;
    });
    EXPECT_EQ(failures, 1U);
}

}  // namespace
