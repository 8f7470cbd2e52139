#include "support/chain_builder.hpp"

#include <gtest/gtest.h>
#include <tlxpki.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "support/der_text.hpp"
#include "support/kcdsa_vectors.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

void expect_done(std::uint32_t status, const std::string &what) {
    EXPECT_EQ(status, 0U) << "while making a test certificate: " << what;
}

String oid_of(const std::string &dotted) {
    return string_of(TLX_TAG_OBJECT_IDENTIFIER, dotted);
}

struct KeyPair {
    Held<free_ASYMMETRIC_KEY> secret{new_ASYMMETRIC_KEY()};
    Held<free_X509_PUBKEY> open{new_X509_PUBKEY()};
};

const KeyPair &key_pair(unsigned number) {
    static const auto pairs = [] {
        std::array<KeyPair, kRsaKeys + 1> made;
        for (unsigned i = 0; i < kRsaKeys; ++i) {
            const Held<free_RSA_UNIT> unit(new_RSA_UNIT());
            const std::string path = TLX_TEST_DATA "/keys/rsa-" + std::to_string(i) + ".pem";
            expect_done(readPKCS1_from_File(unit.get(), nullptr, 0, path.c_str()), path);
            expect_done(set_ASYMMETRIC_KEY(made[i].secret.get(), TLX_KEY_RSA, unit.get()), path);
            expect_done(set_X509_PUBKEY_rsa(made[i].open.get(), unit.get()), path);
        }
        const Kcdsa unit = kcdsa_key("A1024B160HAS160");
        expect_done(set_ASYMMETRIC_KEY(made[kKcdsaKey].secret.get(), TLX_KEY_KCDSA, unit.get()) |
                        set_X509_PUBKEY_kcdsa(made[kKcdsaKey].open.get(), unit.get()),
                    "KCDSA key");
        return made;
    }();
    return pairs.at(number);
}

/// Hexadecimal digits of octets, or of the characters of a text.
std::string digits_of(const auto &octets) {
    std::string digits;
    for (const auto octet : octets)
        digits += status_text(static_cast<std::uint8_t>(octet)).substr(6);
    return digits;
}

/// The encodings of what a certificate is made of, in the notation of der_text.hpp. A name without common
/// name is empty.
std::string name_text(const std::string &common_name) {
    if (common_name.empty()) return "30{}";
    return "30{31{30{06:550406 13:4B52}} 31{30{06:550403 0C:" + digits_of(common_name) + "}}}";
}

/// A GeneralizedTime of "2020-01-01,00:00:00".
std::string time_text(std::string time) {
    std::erase_if(time, [](char c) { return c < '0' || c > '9'; });
    return "18:" + digits_of(time + "Z") + " ";
}

/// Of a dotted text, or of a name in the registry.
std::string oid_text(const std::string &name) {
    const String id(text_to_OBJECT_IDENTIFIER(name.c_str()));
    const Node node = new_node();
    expect_done(encodeToBERObjectIdentifier(node.get(), TLX_TAG_OBJECT_IDENTIFIER, id.get(),
                                            id == nullptr ? 0 : id->length, 0),
                name);
    std::string digits = hex_of(node.get());
    std::erase(digits, ' ');
    return "06:" + digits.substr(4) + " ";
}

std::string extensions_text(const std::vector<ExtensionSpec> &extensions) {
    std::string text;
    for (const ExtensionSpec &each : extensions)
        text += "30{" + oid_text(each.name) + (each.critical ? "01:FF " : "") +
                "04:" + digits_of(der(each.value)) + "}";
    return "A3{30{" + text + "}}";
}

void edit(CertSpec &spec, const std::string &member, const std::string &value) {
    static const std::map<std::string, std::string CertSpec::*> texts = {{"subject", &CertSpec::subject},
                                                                         {"issuer", &CertSpec::issuer},
                                                                         {"serial", &CertSpec::serial},
                                                                         {"from", &CertSpec::from},
                                                                         {"until", &CertSpec::until}};
    if (const auto text = texts.find(member); text != texts.end()) {
        spec.*text->second = value;
    } else if (member == "key" || member == "signer") {
        (member == "key" ? spec.key : spec.signer) = static_cast<unsigned>(std::stoul(value));
    } else if (member == "version") {
        spec.version = static_cast<std::uint8_t>(std::stoul(value));
    } else if (member == "self-issued") {
        spec.issuer = spec.subject;
        spec.signer = spec.key;
    } else if (member == "policies") {
        spec.policies(value);
    } else if (member == "extensions") {
        spec.extensions.emplace();
        if (value == "none") spec.extensions.reset();
    } else if (member == "authority") {
        const std::size_t name = value.find(','), serial = value.find(',', name + 1);
        spec.with({.key_id = value.substr(0, name),
                   .issuer = value.substr(name + 1, serial - name - 1),
                   .serial = value.substr(serial + 1)});
    } else if (member[0] == '-') {
        spec.without(member.substr(1));
    } else {
        const bool critical = member.back() == '!';
        spec.with(critical ? member.substr(0, member.size() - 1) : member, value, critical);
    }
}

}  // namespace

Kcdsa kcdsa_key(const std::string &section) {
    return kcdsa_unit(*std::ranges::find(kcdsa_vectors(), section, &KcdsaVector::name), "xy");
}

const ASYMMETRIC_KEY *signing_key(unsigned number) {
    return key_pair(number).secret.get();
}

CertSpec &CertSpec::with(const std::string &name, std::string_view value, bool critical) {
    without(name);
    extensions->push_back({name, std::string(value), critical});
    return *this;
}

CertSpec &CertSpec::with(const AuthorityKeyId &authority) {
    std::string members;
    if (!authority.key_id.empty()) members += "80:" + authority.key_id + " ";
    if (!authority.issuer.empty()) members += "A1{A4{" + name_text(authority.issuer) + "}}";
    if (!authority.serial.empty()) members += "82:" + authority.serial;
    return with("authorityKeyIdentifier", "30{" + members + "}");
}

CertSpec &CertSpec::policies(const std::string &dotted) {
    std::string list;
    for (const std::string &each : split(dotted, ' '))
        list += "30{" + oid_text(each) + "}";
    return with("certificatePolicies", "30{" + list + "}");
}

CertSpec &CertSpec::without(const std::string &name) {
    if (!extensions) extensions.emplace();
    std::erase_if(*extensions, [&name](const ExtensionSpec &each) { return each.name == name; });
    return *this;
}

Cert CertSpec::make() const {
    // A key and a signature of another kind, which are then replaced.
    const std::string text = "30{30{A0{02:" + digits_of(Octets{version}) + "} 02:00" + serial +
                             " 30{06:2A03}" + name_text(issuer) + "30{" + time_text(from) + time_text(until) +
                             "}" + name_text(subject) + "30{30{06:2A03} 03:00}" +
                             (extensions ? extensions_text(*extensions) : "") + "} 30{06:2A03} 03:00}";
    X509_CERT *made = nullptr;
    expect_done(Seq_to_X509_CERT(der_node(text).get(), &made), text);
    Cert cert(made);
    expect_done(set_X509_pub_key(made, key_pair(key).open.get()), "key");
    const char *const algorithm = signer == kKcdsaKey ? "1.2.410.200004.1.22" : "1.2.840.113549.1.1.11";
    expect_done(set_X509_signature(made, oid_of(algorithm).get()), "algorithm");
    if (is_signed) expect_done(gen_SIG_X509_Cert(made, signing_key(signer)), "signature of " + subject);
    return cert;
}

Chain valid_chain(unsigned length) {
    Chain chain(length);
    for (unsigned depth = 0; depth < length; ++depth) {
        const bool is_user = depth > 0 && depth + 1 == length;
        CertSpec &spec = chain[length - 1 - depth];
        const CertSpec &issuer = depth == 0 ? spec : chain[length - depth];
        spec.subject = depth == 0 ? "Root" : is_user ? "User" : "CA " + std::to_string(depth);
        spec.serial = digits_of(Octets{static_cast<std::uint8_t>(depth + 1)});
        spec.key = depth % kRsaKeys;
        spec.issuer = issuer.subject;
        spec.signer = issuer.key;
        spec.with("subjectKeyIdentifier", "04:" + spec.serial);
        spec.with({.key_id = issuer.serial, .issuer = {}, .serial = {}});
        spec.policies("1.2.3.1");
        spec.with("keyUsage", is_user ? "03:0780" : "03:0106", true);
        if (!is_user) spec.with("basicConstraints", "30{01:FF}", true);
    }
    return chain;
}

std::vector<std::string> split(const std::string &text, char separator) {
    std::vector<std::string> parts;
    std::istringstream rest(text);
    for (std::string part; std::getline(rest, part, separator);)
        if (!trimmed(part).empty()) parts.push_back(trimmed(part));
    return parts;
}

EditedChain::EditedChain(unsigned length, const std::string &edits) : chain(valid_chain(length)) {
    for (const std::string &text : split(edits, ';')) {
        const std::size_t space = text.find(' ');
        const std::size_t equals = std::min(text.find('='), text.size());
        const std::string value = equals < text.size() ? text.substr(equals + 1) : "";
        if (text[0] == '*') {
            for (CertSpec &each : chain)
                edit(each, text.substr(2, equals - 2), value);
        } else if (space < equals) {
            edit(chain.at(std::stoul(text)), text.substr(space + 1, equals - space - 1), value);
        } else if (text.starts_with("take")) {
            Chain taken;
            for (const std::string &place : split(value, ' '))
                taken.push_back(chain.at(std::stoul(place)));
            chain = taken;
        } else {
            values[text.substr(0, equals)] = value;
        }
    }
    if (values.contains("time")) time.reset(charToASN1_TIME(values["time"].c_str()));
}

CPV_SETTINGS EditedChain::settings() const {
    const auto number = [this](const char *name) { return std::stoi(values.at(name)); };
    return {time.get(), static_cast<std::uint32_t>(number("inhibit")),
            static_cast<std::uint32_t>(number("explicit")), number("most")};
}

Certificates make(const Chain &chain) {
    Certificates path(new_X509_CERTIFICATES());
    for (const CertSpec &spec : chain)
        expect_done(add_X509_CERTIFICATES(path.get(), spec.make().get()), spec.subject);
    return path;
}

Anchors anchors_of(const Chain &certificates) {
    Anchors anchors(new_TRUST_ANCHORS());
    for (const CertSpec &spec : certificates) {
        const Held<free_TRUST_ANCHOR> anchor(create_TRUST_ANCHOR_from_X509_CERT(spec.make().get()));
        expect_done(add_TRUST_ANCHORS(anchors.get(), anchor.get()), spec.subject);
    }
    return anchors;
}

Policies policy_list(const std::string &dotted) {
    Policies list(new_OBJECT_IDENTIFIERS());
    for (const std::string &each : split(dotted, ' '))
        expect_done(push_STACK_value(list.get(), oid_of(each).release()), each);
    return list;
}

std::string subjects_of(const X509_CERTIFICATES *path) {
    std::string subjects;
    for (std::uint32_t i = 0; i < get_X509_CERTIFICATES_count(path); ++i) {
        const X509_NAME *name =
            get_X509_subject(get_X509_CERTIFICATES_child(path, static_cast<std::int32_t>(i)));
        if (i > 0) subjects += ", ";
        subjects += octets(get_X509_NAME_CHILD(name, 1)->data);
    }
    return subjects;
}

}  // namespace tlx_test
