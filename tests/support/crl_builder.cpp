#include "support/crl_builder.hpp"

#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>

#include "support/der_text.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

Held<free_X509_TIME> written(const std::string &day) {
    Held<free_X509_TIME> time(new_X509_TIME());
    EXPECT_EQ(set_X509_TIME(time.get(), time_of(day).get()), 0U) << day;
    return time;
}

/// Adds an extension with elements in the notation of der_text.hpp.
void extend(X509_EXTENSIONS *&extensions, const std::string &oid, const std::string &value, bool critical) {
    if (extensions == nullptr) extensions = new_X509_EXTENSIONS();
    const String id(text_to_OBJECT_IDENTIFIER(oid.c_str()));
    const String data = string_of(TLX_TAG_OCTET_STRING, der(value));
    const Held<free_X509_EXTENSION> made(
        create_X509_EXTENSION_by_OID(nullptr, id.get(), critical ? 0xFF : 0, data.get()));
    EXPECT_EQ(add_X509_EXTENSION(extensions, made.get(), -1), 0U) << oid;
}

}  // namespace

Held<free_X509_NAME> name_of(const std::string &common_name) {
    return Held<free_X509_NAME>(
        dup_X509_NAME(get_X509_subject(CertSpec{.subject = common_name, .issuer = {}}.make().get())));
}

Held<free_ASN1_TIME> time_of(const std::string &day) {
    return Held<free_ASN1_TIME>(charToASN1_TIME((day + ",00:00:00").c_str()));
}

Held<free_X509_REVOKED> entry_of(const std::string &text) {
    const std::size_t colon = text.find(':'), at = text.find('@');
    const std::uint32_t reason =
        colon < text.size() ? static_cast<std::uint32_t>(std::stoul(text.substr(colon + 1))) : 0;
    const Number serial = number_of(text.substr(0, text.find_first_of(":@!")).c_str());
    Held<free_X509_REVOKED> revoked(create_X509_REVOKED(serial.get(), time_of("2024-02-03").get(), reason));
    if (text.ends_with('!')) extend(revoked->extensions, "1.2.3.4", "05:", true);
    if (at == text.npos) return revoked;
    const std::string issuer = text.substr(at + 1);
    const Octets name = issuer == "?" ? der("86:41") : [&] {
        const Held<free_GENERAL_NAME> general(create_GENERAL_NAME_directoryName(name_of(issuer).get()));
        return encoding_of(general.get(), TLX_ENCODER(GENERAL_NAME_to_Seq));
    }();
    std::string digits = hex_of(name.data(), name.size());
    std::erase(digits, ' ');
    extend(revoked->extensions, "certificateIssuer", "30{=" + digits + "}", true);
    return revoked;
}

Crl make_crl(const std::string &text) {
    std::map<std::string, std::string> values = {{"issuer", "Root"},
                                                 {"key", "0"},
                                                 {"from", "2024-01-01"},
                                                 {"until", "2024-12-31"},
                                                 {"algorithm", "RSA-SHA256"}};
    Crl crl(new_X509_CRL());
    for (std::string word : split(text, ' ')) {
        std::ranges::replace(word, '_', ' ');
        const std::size_t equals = std::min(word.find('='), word.size());
        if (word[0] != '+') values[word.substr(0, equals)] = word.substr(std::min(equals + 1, word.size()));
        if (word[0] == '+') {
            EXPECT_EQ(add_X509_CRL_revoked(crl.get(), entry_of(word.substr(1)).get()), 0U) << word;
        }
    }
    const auto number = [&](const char *name, std::int32_t index) {
        if (!values.contains(name)) return;
        EXPECT_EQ(set_X509_CRL_number(crl.get(), index, number_of(values[name].c_str()).get()), 0U);
    };
    number("number", TLX_OID_CRL_NUMBER);
    number("delta", TLX_OID_DELTA_CRL_INDICATOR);
    if (values.contains("aki"))
        extend(crl->extensions, "authorityKeyIdentifier", "30{80:" + values["aki"] + "}", false);
    if (values.contains("idp")) extend(crl->extensions, "issuingDistributionPoint", values["idp"], true);
    if (values.contains("unknown")) extend(crl->extensions, "1.2.3.4", "05:", true);
    const String algorithm(text_to_OBJECT_IDENTIFIER(values["algorithm"].c_str()));
    EXPECT_EQ(set_X509_CRL_version(crl.get(), 1), 0U);
    EXPECT_EQ(set_X509_CRL_signature(crl.get(), algorithm.get()), 0U);
    EXPECT_EQ(set_X509_CRL_issuer(crl.get(), name_of(values["issuer"]).get()), 0U);
    EXPECT_EQ(set_X509_CRL_thisUpdate(crl.get(), written(values["from"]).get()), 0U);
    if (values["until"] != "none") {
        EXPECT_EQ(set_X509_CRL_nextUpdate(crl.get(), written(values["until"]).get()), 0U);
    }
    EXPECT_EQ(gen_SIG_X509_CRL(crl.get(), signing_key(static_cast<unsigned>(std::stoul(values["key"])))), 0U)
        << text;
    return crl;
}

}  // namespace tlx_test
