// The virtual identifier of a certificate, and the random number that it is made with.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/chain_builder.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

/// The random number of an encoding of a BIT STRING, as the attribute of a private key holds it.
std::string key_with(const std::string &random) {
    return "30{02:00 30{06:2B6570} 04:AA A0{30{06:2A8648 31{05:}} 30{06:2A831A8C9A440A010103 31{" + random +
           "}}}}";
}

std::string made(const Row &row) {
    const Held<free_P8_PRIV_KEY_INFO> info(decoded(Seq_to_P8_PRIV_KEY_INFO, key_with(row[3])));
    const String hash = oid_of(row[1].c_str());
    VID *vid = nullptr;
    const std::uint32_t status =
        gen_KISA_VID(hash.get(), row[2].data(), static_cast<std::uint32_t>(row[2].size()),
                     get_PRIV_KEY_random(info.get()), &vid);
    const Held<free_VID> owner(vid);
    if (status != 0) return status_text(status);
    std::string digits = hex_of(vid->virtualID->data, static_cast<std::size_t>(vid->virtualID->length));
    std::erase(digits, ' ');
    return digits;
}

std::string verified(const Row &row) {
    const Held<free_P8_PRIV_KEY_INFO> info(decoded(Seq_to_P8_PRIV_KEY_INFO, key_with(row[3])));
    const Cert cert = CertSpec{.subject = "User", .issuer = "CA"}.with("subjectAltName", row[1]).make();
    return status_text(verify_KISA_VID(cert.get(), row[2].data(), static_cast<std::uint32_t>(row[2].size()),
                                       get_PRIV_KEY_random(info.get())));
}

TEST(VirtualId, Rows) {
    signing_key(0);
    expect_rows("virtual_id.txt", {{"make", {made}}, {"verify", {verified}}});
}

TEST(VirtualId, MeetsFailingAllocations) {
    const Held<free_P8_PRIV_KEY_INFO> info(
        decoded(Seq_to_P8_PRIV_KEY_INFO, key_with("03:00000102030405060708090A0B0C0D0E0F10111213")));
    const BIT_STRING *random = get_PRIV_KEY_random(info.get());
    const String hash = oid_of("2.16.840.1.101.3.4.2.1");
    const char *number = "1234567890";
    sweep_statuses({0x4760003C}, [&] {
        VID *vid = nullptr;
        const std::uint32_t status = gen_KISA_VID(hash.get(), number, 10, random, &vid);
        free_VID(vid);
        return status;
    });
    const Cert cert = CertSpec{.subject = "User", .issuer = "CA"}.without("subjectAltName").make();
    VID *out = nullptr;
    expect_refuses_null(0x47600049, gen_KISA_VID, hash.get(), number, 10, random, &out);
    expect_refuses_null(0x47610049, verify_KISA_VID, cert.get(), number, 10, random);
    EXPECT_EQ(verify_KISA_VID(cert.get(), number, 10, random), 0x47610047U) << "no subjectAltName";
    EXPECT_EQ(get_PRIV_KEY_random(nullptr), nullptr);
}

}  // namespace
}  // namespace tlx_test
