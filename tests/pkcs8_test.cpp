// The members of PKCS #8 containers and of the parameters of password-based encryption.
#include <tlxpki.h>

#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Pkcs8 = LeakFreeTest;
using Container = Held<free_PKCS8>;
using Param = Held<free_P5_PBE_PARAM>;
using Algorithm = Held<free_X509_ALGO_IDENTIFIER>;

constexpr std::uint8_t kSalt[] = {1, 2, 3};
constexpr char kPbes1[] = "30{04:010203 02:0800}";
constexpr char kPbes2[] = "30{30{06:2A864886F70D01050C 30{04:010203 02:0800}} 30{06:2A831A8C9A440104 04:00}}";

Algorithm seed_cbc() {
    return Algorithm(decoded(Seq_to_X509_ALGO_IDENTIFIER, "30{06:2A831A8C9A440104 04:00}"));
}

std::string text(const PKCS8 *container) {
    return encoded<P8_ENCRYPTED_KEY>(P8_ENCRYPTED_KEY_to_Seq, container);
}

std::string text(const P5_PBE_PARAM *param) {
    return encoded<P5_PBE_PARAM>(P5_PBE_PARAM_to_Seq, param);
}

TEST_F(Pkcs8, ContainerIsPutTogetherFromItsMembers) {
    const Container container(new_PKCS8());
    const String data(string_of(TLX_TAG_OCTET_STRING, "data"));
    const String oid = oid_of("1.2.840.113549.1.5.13");
    EXPECT_EQ(get_OID_PKCS8(container.get()), nullptr);
    EXPECT_EQ(set_encryptedData_PKCS8(container.get(), data.get()), 0U);
    EXPECT_EQ(text(container.get()), hex_of_text("30{04:64617461}"));
    EXPECT_EQ(set_OID_PKCS8(container.get(), oid_of("1.2.3").get()), 0U);
    const Param param(decoded(Seq_to_P5_PBE_PARAM, kPbes2));
    EXPECT_EQ(set_PKCS8_P5_PBE_PARAM(container.get(), param.get()), 0U);
    EXPECT_EQ(set_OID_PKCS8(container.get(), oid.get()), 0U) << "keeps the parameters";
    EXPECT_EQ(text(container.get()),
              hex_of_text("30{30{06:2A864886F70D01050D " + std::string(kPbes2) + "} 04:64617461}"));
    EXPECT_STREQ(reinterpret_cast<const char *>(get_OID_PKCS8(container.get())->data),
                 "1.2.840.113549.1.5.13");
    EXPECT_EQ(get_encryptedData_PKCS8(container.get())->length, 4);
    const Param read(get_PKCS8_P5_PBE_PARAM(container.get()));
    EXPECT_EQ(text(read.get()), hex_of_text(kPbes2));
    expect_refuses_null(1U, set_OID_PKCS8, container.get(), oid.get());
    expect_refuses_null(nullptr, get_PKCS8_P5_PBE_PARAM, container.get());
    EXPECT_EQ(set_encryptedData_PKCS8(nullptr, data.get()), 1U);
    EXPECT_EQ(set_PKCS8_P5_PBE_PARAM(nullptr, param.get()), 0x4C080049U);
    EXPECT_EQ(set_PKCS8_P5_PBE_PARAM(container.get(), nullptr), 0x4C060049U);
}

TEST_F(Pkcs8, ContainerWithoutMemoryStaysWhole) {
    const Param param(decoded(Seq_to_P5_PBE_PARAM, kPbes2));
    const String oid = oid_of("1.2.3");
    sweep_statuses({1}, [&] {
        const Container container(new_PKCS8());
        return container == nullptr ? 1 : set_OID_PKCS8(container.get(), oid.get());
    });
    sweep_statuses({1, 0x4C060103, 0x4C08003C}, [&] {
        const Container container(new_PKCS8());
        return container == nullptr ? 1 : set_PKCS8_P5_PBE_PARAM(container.get(), param.get());
    });
}

TEST_F(Pkcs8, ParametersAreReplaced) {
    const Param param(new_P5_PBE_PARAM());
    const Algorithm cipher = seed_cbc();
    EXPECT_EQ(set_P5_PBE_PARAM(param.get(), kSalt, 3, 2048, cipher.get()), 0U);
    EXPECT_EQ(text(param.get()), hex_of_text(kPbes2));
    EXPECT_EQ(set_P5_PBE_PARAM(param.get(), nullptr, 3, 1, nullptr), 1U) << "no salt changes nothing";
    EXPECT_EQ(text(param.get()), hex_of_text(kPbes2));
    EXPECT_EQ(set_P5_PBE_PARAM(param.get(), kSalt, 3, 2048, nullptr), 0U);
    EXPECT_EQ(text(param.get()), hex_of_text(kPbes1));
    EXPECT_EQ(set_P5_PBE_PARAM(nullptr, kSalt, 3, 2048, nullptr), 1U);
    EXPECT_EQ(set_P5_PBE_PARAM(param.get(), kSalt, 3, 2048, cipher.get()), 0U);
    sweep_statuses({1}, [&] { return set_P5_PBE_PARAM(param.get(), kSalt, 3, 2048, cipher.get()); });
}

}  // namespace
}  // namespace tlx_test
