// KISA's list of hardware tokens: whose signature verifies, and what a cleaned driver holds.
#include <gtest/gtest.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Value = Held<free_KISA_HSM_SIGNATURE_VALUE>;

/// The digits of a signature with SHA-1 by the first RSA key.
std::string signature_of(const Octets &octets) {
    const auto *key = static_cast<const RSA_UNIT *>(signing_key(0)->key);
    Octets signature(get_RSA_length(key));
    auto length = static_cast<std::uint32_t>(signature.size());
    EXPECT_EQ(sign_RSA(key, TLX_DIGEST_SHA1, TLX_RSA_MODE_PKCS1, octets.data(),
                       static_cast<std::uint32_t>(octets.size()), signature.data(), &length),
              0U);
    std::string digits = hex_of(signature.data(), length);
    std::erase(digits, ' ');
    return digits;
}

/// A list with a signature under a tag: "03:00" or "04:".
Value list_of(const std::string &signed_part, const std::string &tag) {
    const std::string signature = signature_of(der(signed_part));
    return Value(decoded(Seq_to_KISA_HSM_SIGNATURE_VALUE,
                         "30{" + signed_part + " 30{06:2A03} 30{30{} 02:05} " + tag + signature + "}"));
}

Cert certificate_of(const std::string &name) {
    if (name.find('.') == std::string::npos)
        return signer_spec(static_cast<unsigned>(std::stoul(name))).make();
    return tlx_test::certificate_of(read_file(name));
}

void edit(KISA_HSM_SIGNATURE_VALUE &value, const std::string &what) {
    if (what == "spoil") value.signedPart->data[value.signedPart->length - 1] ^= 1;
    if (what == "cut") value.signedPart->length = 0;
    if (what == "no-part") free_ASN1_STRING(std::exchange(value.signedPart, nullptr));
    if (what == "no-signature") free_ASN1_STRING(std::exchange(value.signature, nullptr));
}

TEST(TokenList, Rows) {
    make_signing_keys();
    const auto verify = [](const Row &row) {
        const Value value = list_of(row[1], row[2]);
        edit(*value, row[3]);
        return std::to_string(value->kind) + " " +
               status_text(verify_KISA_HSM_SIGNATURE_VALUE(value.get(), certificate_of(row[4]).get()));
    };
    expect_rows("token_list.txt", {{"verify", {verify}}});
}

TEST(TokenList, NullArguments) {
    make_signing_keys();
    const LeakCheck leaks;
    const Value value = list_of("30{30{} 30{}}", "04:");
    const Cert cert = signer_spec(0).make();
    expect_refuses_null(0x30020049, verify_KISA_HSM_SIGNATURE_VALUE, value.get(), cert.get());
}

TEST(TokenList, CleanedDriversHaveFreshNames) {
    const LeakCheck leaks;
    const Held<free_KISA_HSM_DRIVER_INFO> driver(
        decoded(Seq_to_KISA_HSM_DRIVER_INFO, "30{13:41 13:42 86:61 02:05 82:62}"));
    clean_KISA_HSM_DRIVER_INFO(driver.get());
    for (const GENERAL_NAME *name : {driver->name1, driver->name2}) {
        ASSERT_NE(name, nullptr);
        EXPECT_EQ(name->choice, 0U);
        EXPECT_EQ(name->value.any, nullptr);
    }
    EXPECT_EQ(driver->string1, nullptr);
    EXPECT_EQ(driver->number, nullptr);
}

}  // namespace
}  // namespace tlx_test
