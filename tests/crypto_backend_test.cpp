// What becomes of the library when libcrypto fails at its first use, and after libcrypto's end.
#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>

#include "support/chain_builder.hpp"
#include "support/libcrypto_faults.hpp"

namespace {

std::uint32_t digest() {
    const std::uint8_t message[] = {'a', 'b', 'c'};
    std::uint8_t octets[TLX_DIGEST_MAX_LENGTH];
    std::uint32_t len = 0;
    return Digest(TLX_DIGEST_SHA256, message, sizeof message, octets, &len);
}

std::uint32_t draw() {
    std::uint8_t octets[16];
    return RAND_BYTES(octets, sizeof octets);
}

/// The exit status of a process of its own that does this.
template <typename Task>
int in_a_process(Task task) {
    const pid_t process = fork();
    if (process == 0) _exit(task());
    int status = -1;
    return waitpid(process, &status, 0) == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Backend, RecoversFromAFailureAtItsFirstUse) {
    enum { kUntouched, kRecovered, kLost };
    unsigned counts[3] = {};
    for (unsigned n = 30; n < 5000; n += 97) {
        const int outcome = in_a_process([n] {
            tlx_test::fail_libcrypto_allocation(n);
            const bool failed = digest() != 0;
            tlx_test::fail_libcrypto_allocation(0);
            return digest() != 0 || draw() != 0 ? kLost : failed ? kRecovered : kUntouched;
        });
        ASSERT_GE(outcome, 0) << n << ": a crash";
        ++counts[outcome];
    }
    EXPECT_GT(counts[kRecovered], 0U);
    EXPECT_LE(counts[kLost], 2U) << "libcrypto keeps the failure of a few of its own first steps";
}

TEST(Backend, RefusesAfterLibcryptosEnd) {
    const int status = in_a_process([] {
        const std::uint8_t octets[16] = {};
        std::uint8_t out[32];
        std::uint32_t len = 0;
        const auto encrypt = [&] {
            return BlockCipher(TLX_CIPHER_AES128 | TLX_CIPHER_MODE_CBC, 1, octets, octets, out, &len, octets,
                               16);
        };
        // HAS-160 is our own, and needs no libcrypto.
        std::uint8_t r[256];
        std::uint32_t r_len = 0;
        const auto sign_rsa = [&] {
            const auto *rsa = static_cast<const RSA_UNIT *>(tlx_test::signing_key(0)->key);
            return sign_RSA(rsa, TLX_DIGEST_HAS160, TLX_RSA_MODE_PKCS1, octets, 16, r, &r_len);
        };
        const auto sign_kcdsa = [&] {
            const auto *kcdsa = static_cast<const KCDSA *>(tlx_test::signing_key(tlx_test::kKcdsaKey)->key);
            return sign_KCDSA_data(kcdsa, TLX_DIGEST_HAS160, octets, 16, r, &r_len, out, &len);
        };
        if (digest() + draw() + encrypt() + sign_rsa() + sign_kcdsa() != 0) return 1;
        tlx_test::end_libcrypto();
        return digest() + draw() + encrypt() + sign_rsa() + sign_kcdsa() == 5 ? 0 : 2;
    });
    EXPECT_EQ(status, 0);
}

}  // namespace

#endif
