// Parameters of RSASSA-PSS and RSAES-OAEP, with the openssl program as peer.
#include <gtest/gtest.h>
#include <tlxpki/pkcs1_param.h>

#include <string_view>

#include "keyinfo/key_records.hpp"
#include "support/allocation.hpp"
#include "support/command.hpp"
#include "support/rows.hpp"
#include "support/x509_records.hpp"
#include "x509/certificate_records.hpp"

TLX_OWNS(RSASSA_PSS_PARAM);
TLX_OWNS(RSAES_OAEP_PARAM);

namespace tlx_test {
namespace {

using Pss = tlx::Owned<RSASSA_PSS_PARAM>;
using Oaep = tlx::Owned<RSAES_OAEP_PARAM>;
using Oid = tlx::Owned<OBJECT_IDENTIFIER>;
using Algorithm = tlx::Owned<X509_ALGO_IDENTIFIER>;

Oid oid(const char *name) {
    return Oid(get_OBJECT_IDENTIFIER(name, 0));
}
Oid oid(std::uint32_t index) {
    return Oid(get_OBJECT_IDENTIFIER(nullptr, index));
}
/// Steps on new records and an algorithm identifier, then the encodings of the three.
std::string set(const Row &row) {
    const Pss pss(new_RSASSA_PSS_PARAM());
    const Oaep oaep(new_RSAES_OAEP_PARAM());
    const Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    const std::uint8_t label[] = {'a', 'b', 'c'};
    using N = const Numbers &;
    const auto index = [](N n) { return static_cast<std::int32_t>(n[0]); };
    const auto size = [](N n) { return static_cast<std::int32_t>(n[1]); };
    const Steps steps = {
        {"pss-hash", [&](N n) { return set_RSASSA_PSS_PARAM_hashAlgorithm(pss.get(), index(n)); }},
        {"pss-mask", [&](N n) { return set_RSASSA_PSS_PARAM_maskGenAlgorithm(pss.get(), index(n)); }},
        {"pss-mask-of",
         [&](N n) { return set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(pss.get(), oid(n[0]).get()); }},
        {"pss-salt",
         [&](N n) { return set_RSASSA_PSS_PARAM_trailerField(pss.get(), static_cast<std::uint8_t>(n[0])); }},
        {"pss-clean-hash", [&](N) { return clean_X509_ALGO_IDENTIFIER(pss->hashAlgorithm), 0U; }},
        {"pss-into-algorithm",
         [&](N) { return set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM(algorithm.get(), pss.get()); }},
        {"oaep-hash", [&](N n) { return set_RSAES_OAEP_PARAM_hashAlgorithm(oaep.get(), index(n)); }},
        {"oaep-mask", [&](N n) { return set_RSAES_OAEP_PARAM_maskGenAlgorithm(oaep.get(), index(n)); }},
        {"oaep-mask-of",
         [&](N n) { return set_RSAES_OAEP_PARAM_maskGenAlgorithm_OID(oaep.get(), oid(n[0]).get()); }},
        {"oaep-clean-mask", [&](N) { return clean_X509_ALGO_IDENTIFIER(oaep->maskGenAlgorithm), 0U; }},
        {"oaep-source",
         [&](N n) { return set_RSAES_OAEP_PARAM_pSourceAlgorithm(oaep.get(), index(n), label, size(n)); }},
        {"oaep-source-without-label",
         [&](N n) {
             return set_RSAES_OAEP_PARAM_pSourceAlgorithm_OID(oaep.get(), oid(n[0]).get(), nullptr, size(n));
         }},
        {"oaep-into-algorithm",
         [&](N) { return set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM(algorithm.get(), oaep.get()); }},
    };
    std::string result = run_steps(row[1], steps);
    result += ", " + encoded(RSASSA_PSS_PARAM_to_Seq, Pss(dup_RSASSA_PSS_PARAM(pss.get())).get());
    result += ", " + encoded(RSAES_OAEP_PARAM_to_Seq, Oaep(dup_RSAES_OAEP_PARAM(oaep.get())).get());
    if (algorithm->parameters != nullptr) result += ", " + hex_of(algorithm->parameters);
    EXPECT_EQ(algorithm->algorithm, nullptr) << "left to the caller";
    return result;
}

TEST(Params, Rows) {
    expect_rows("pkcs1_param.txt", {{"set", {set}}});
}

TEST(Params, RefuseMissingArguments) {
    const LeakCheck leaks;
    const Pss pss(new_RSASSA_PSS_PARAM());
    const Algorithm algorithm(new_X509_ALGO_IDENTIFIER());
    const Oaep oaep(new_RSAES_OAEP_PARAM());
    expect_refuses_null(0x49120049, set_RSASSA_PSS_PARAM_hashAlgorithm_OID, pss.get(), oid("SHA256").get());
    expect_refuses_null(0x49130049, set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID, pss.get(),
                        oid("id-mgf1").get());
    expect_refuses_null(0x49140049, set_RSASSA_PSS_PARAM_trailerField, pss.get(), 20);
    expect_refuses_null(0x490F0049, set_X509_ALGO_IDENTIFIER_with_RSASSA_PSS_PARAM, algorithm.get(),
                        pss.get());
    expect_refuses_null(0x490F0049, set_X509_ALGO_IDENTIFIER_with_RSAES_OAEP_PARAM, algorithm.get(),
                        oaep.get());
}

/// The element right after the first occurrence of a mark.
Node element_after(const std::string &der, std::string_view digits) {
    const Octets mark = hex(digits);
    const std::size_t at = der.find(std::string(mark.begin(), mark.end())) + mark.size();
    return Node(decodeToDERSequence_n(reinterpret_cast<const std::uint8_t *>(der.data()) + at,
                                      static_cast<std::uint32_t>(der.size() - at)));
}

TEST(Params, OfOpensslAreRead) {
    const CommandFolder folder;
    folder.run(
        "openssl genpkey -quiet -algorithm RSA-PSS -pkeyopt rsa_keygen_bits:1024"
        " -pkeyopt rsa_pss_keygen_md:sha256 -pkeyopt rsa_pss_keygen_mgf1_md:sha384"
        " -pkeyopt rsa_pss_keygen_saltlen:32 -out key.pem 2>&1;"
        "openssl pkey -in key.pem -pubout -outform DER -out public.der");
    const Pss pss(new_RSASSA_PSS_PARAM());
    RSASSA_PSS_PARAM *out = pss.get();
    const Node node = element_after(folder.read("public.der"), "06 09 2A 86 48 86 F7 0D 01 01 0A");
    ASSERT_EQ(Seq_to_RSASSA_PSS_PARAM(node.get(), &out), 0U);
    EXPECT_EQ(get_BIGINT_word(pss->saltLength), 32U);
    EXPECT_EQ(encoded(RSASSA_PSS_PARAM_to_Seq, pss.get()), hex_of(node.get()));

    folder.run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout key.pem -out cert.pem -subj /CN=x &&"
        "openssl cms -encrypt -binary -in cert.pem -outform DER -out message.der -recip cert.pem"
        " -keyopt rsa_padding_mode:oaep -keyopt rsa_oaep_md:sha512"
        " -keyopt rsa_mgf1_md:sha256 -keyopt rsa_oaep_label:616263");
    const Oaep oaep(new_RSAES_OAEP_PARAM());
    RSAES_OAEP_PARAM *out_oaep = oaep.get();
    const Node oaep_node = element_after(folder.read("message.der"), "06 09 2A 86 48 86 F7 0D 01 01 07");
    ASSERT_EQ(Seq_to_RSAES_OAEP_PARAM(oaep_node.get(), &out_oaep), 0U);
    EXPECT_EQ(hex_of(oaep->pSourceAlgorithm->parameters), "04 03 61 62 63");
    EXPECT_EQ(encoded(RSAES_OAEP_PARAM_to_Seq, oaep.get()), hex_of(oaep_node.get()));
}

TEST(Params, MemoryMayRunOutInSetters) {
    const Oid mgf1 = oid("id-mgf1");
    EXPECT_GT(
        sweep_failing_allocations([&] {
            const Pss pss(new_RSASSA_PSS_PARAM());
            if (!pss) return false;
            const std::uint32_t status = set_RSASSA_PSS_PARAM_maskGenAlgorithm_OID(pss.get(), mgf1.get());
            EXPECT_TRUE(status == 0 || status == 0x4913003C || status == 0x49130103) << std::hex << status;
            return status == 0;
        }),
        5U);
}

}  // namespace
}  // namespace tlx_test
