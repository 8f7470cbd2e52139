// tlxpki trustlist: shows, imports and makes certificate trust lists.
#include <iostream>
#include <set>

#include "block_kind.hpp"
#include "commands.hpp"
#include "describe.hpp"
#include "describe_message.hpp"
#include "key_file.hpp"
#include "message.hpp"
#include "output.hpp"
#include "public_part.hpp"
#include "record.hpp"
#include "status.hpp"
#include "terminal.hpp"
#include "token.hpp"
#include "verify.hpp"

namespace tool {

namespace {

using TrustList = Owned<CERT_TRUST_LIST, free_CERT_TRUST_LIST>;

/// The list that a message carries; null for other messages.
const CERT_TRUST_LIST *list_in(const P7_CONTENT_INFO *message) {
    if (type_of(message) != TLX_OID_PKCS7_SIGNED_DATA || message->content.any == nullptr) return nullptr;
    const P7_CONTENT_INFO *content = message->content.signedData->contentInfo;
    return content != nullptr && type_of(content) == TLX_OID_KISA_CTL ? content->content.trustList : nullptr;
}

// ---- show ----

/// Whether a list names a certificate by its digest.
class NamedCertificates {
  public:
    explicit NamedCertificates(const CERT_TRUST_LIST *list)
        : digest_(get_DigestID_from_OID(get_X509_ALGO_IDENTIFIER_OID(list->subjectAlgorithm))) {
        for (uint32_t i = 0; i < get_TRUSTED_SUBJECTS_count(list->trustedSubjects); ++i) {
            const auto *subject = get_TRUSTED_SUBJECTS_child(list->trustedSubjects, static_cast<int32_t>(i));
            identifiers_.insert(hex(octets_of(subject->subjectIdentifier)));
        }
    }
    [[nodiscard]] bool has(const X509_CERT *cert) const {
        uint8_t digest[TLX_DIGEST_MAX_LENGTH];
        const uint32_t size = X509_CERT_digest(cert, digest_, digest);
        return size <= sizeof digest && identifiers_.contains(hex({digest, size}));
    }

  private:
    uint32_t digest_;
    std::set<std::string> identifiers_;
};

/// A signed list as the message that it is, with the list in the place of the content.
Json describe_signed_list(const P7_CONTENT_INFO *message, const CERT_TRUST_LIST *list) {
    const NamedCertificates named(list);
    Json json = describe_message(message);
    Json described = {{"kind", "signed trust list"}};
    described.update(describe_trust_list(list));
    described["certificates"] = json.value("certificates", Json::array());
    int32_t place = 0;
    for (Json &certificate : described["certificates"]) {
        certificate["named"] =
            named.has(get_X509_CERTIFICATES_child(message->content.signedData->certificates, place++));
    }
    described["signers"] = json["signers"];
    return described;
}

Json describe_file(const std::string &path) {
    const Input input(path);
    const Block &block = input.blocks().front();
    expect_contents(block);
    Json json = {{"source", block.source}};
    if (kind_of(block) == Kind::kTrustList) {
        const TrustList list(decode_record(block, Seq_to_CERT_TRUST_LIST));
        json["kind"] = "trust list without a signature";
        json.update(describe_trust_list(list.get()));
        return json;
    }
    const Message message(decode_record(block, Seq_to_P7_CONTENT_INFO));
    const CERT_TRUST_LIST *list = list_in(message.get());
    if (list == nullptr) throw Failure(block.source + ": is no certificate trust list");
    json.update(describe_signed_list(message.get(), list));
    return json;
}

// ---- import ----

enum : uint32_t { kNoListMemory = 0x5410003C, kNoImportMemory = 0x5412003C, kNoSignerMemory = 0x4B30003C };

Certificates load_authorities(const TrustListOptions &options) {
    auto authorities = made<Certificates>(new_X509_CERTIFICATES());
    for (const std::string &path : options.authorities) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            must(add_X509_CERTIFICATES(authorities.get(), loaded.cert.get()));
        }
    }
    return authorities;
}

/// Takes the certificates of a list. 0, or why the list is refused.
uint32_t import_list(const TrustListOptions &options, const P7_CONTENT_INFO *message,
                     X509_CERTIFICATES *certificates) {
    if (options.unverified) {
        must(add_CERTIFICATES_from_CTL(certificates, message));
        return 0;
    }
    const Certificates authorities = load_authorities(options);
    const StrictSettings settings(options.strict, {}, options.time);
    const uint32_t status =
        add_CERTIFICATES_from_CTL_of_authority_ex(certificates, message, authorities.get(), &settings.get());
    if (status == kNoListMemory || status == kNoImportMemory || status == kNoSignerMemory) {
        throw std::bad_alloc();
    }
    return status;
}

void write_certificates(const std::string &path, const X509_CERTIFICATES *certificates) {
    std::string all;
    for (uint32_t i = 0; i < get_X509_CERTIFICATES_count(certificates); ++i) {
        const X509_CERT *cert = get_X509_CERTIFICATES_child(certificates, static_cast<int32_t>(i));
        char *text = nullptr;
        const uint32_t size = TLX_WRITE_PEM(X509_CERT, cert, "CERTIFICATE", &text);
        const Text owner(text);
        if (text == nullptr) throw Failure(path + ": a certificate cannot be encoded");
        all.append(text, size);
    }
    write_octets(path, {reinterpret_cast<const uint8_t *>(all.data()), all.size()});
}

Json describe_import(const TrustListOptions &options, uint32_t status,
                     const X509_CERTIFICATES *certificates) {
    Json json = {{"source", source_of(options.file)}, {"verified", !options.unverified && status == 0}};
    if (status != 0) {
        json["status"] = exact_status_json(status);
        return json;
    }
    json["output"] = options.output;
    json["certificates"] = Json::array();
    for (uint32_t i = 0; i < get_X509_CERTIFICATES_count(certificates); ++i) {
        json["certificates"].push_back(
            name_text(get_X509_subject(get_X509_CERTIFICATES_child(certificates, static_cast<int32_t>(i)))));
    }
    return json;
}

void print_import(const Json &json) {
    std::cout << printable(json["source"].get<std::string>()) << ": ";
    if (json.contains("status")) {
        std::cout << coloured("NOT VALID", Colour::kRed) << '\n';
        print_text(std::cout, json["status"], 2);
        return;
    }
    const std::size_t count = json["certificates"].size();
    std::cout << count << (count == 1 ? " certificate" : " certificates") << " written to "
              << printable(json["output"].get<std::string>()) << '\n';
    for (const Json &subject : json["certificates"]) {
        std::cout << "  " << printable(subject.get<std::string>()) << '\n';
    }
}

// ---- make ----

X509_TIME *time_after(int32_t days) {
    const auto calendar = made<Time>(getCurrentGMTime());
    if (add_ASN1_TIME_days(calendar.get(), days) != 0) throw Failure("--days reaches beyond the year 9999");
    auto time = made<Owned<X509_TIME, free_X509_TIME>>(new_X509_TIME());
    must(set_X509_TIME(time.get(), calendar.get()));
    return time.release();
}

void add_subject(CERT_TRUST_LIST *list, const X509_CERT *cert) {
    uint8_t digest[TLX_DIGEST_MAX_LENGTH];
    const uint32_t size = X509_CERT_digest(cert, TLX_DIGEST_SHA256, digest);
    const auto subject =
        made<Owned<TRUSTED_CERTIFICATE, free_TRUSTED_CERTIFICATE>>(new_TRUSTED_CERTIFICATE());
    subject->subjectIdentifier = made<String>(new_ASN1_STRING()).release();
    if (size > sizeof digest) throw std::bad_alloc();
    must(set_ASN1_STRING_value(subject->subjectIdentifier, TLX_TAG_OCTET_STRING, digest, size));
    must(add_TRUSTED_SUBJECTS_child(list->trustedSubjects, subject.get(), -1));
}

/// A list without subjects, from now on.
TrustList start_list(const TrustListOptions &options) {
    constexpr int32_t kSubjectUsage = 838;
    auto list = made<TrustList>(new_CERT_TRUST_LIST());
    const auto usage = made<Oid>(index_to_OBJECT_IDENTIFIER(kSubjectUsage));
    const auto digest = made<Oid>(index_to_OBJECT_IDENTIFIER(TLX_OID_SHA256));
    list->subjectUsage = made<Oids>(new_OBJECT_IDENTIFIERS()).release();
    must(add_OBJECT_IDENTIFIERS(list->subjectUsage, usage.get()));
    list->sequenceNumber = made<Owned<BIGINT, free_BIGINT>>(new_BIGINT()).release();
    must(set_BIGINT_word(list->sequenceNumber, options.number));
    list->thisUpdate = time_after(0);
    list->nextUpdate = time_after(static_cast<int32_t>(options.days));
    list->subjectAlgorithm =
        made<Owned<X509_ALGO_IDENTIFIER, free_X509_ALGO_IDENTIFIER>>(new_X509_ALGO_IDENTIFIER()).release();
    must(set_X509_ALGO_IDENTIFIER_OID(list->subjectAlgorithm, digest.get()));
    list->trustedSubjects =
        made<Owned<TRUSTED_SUBJECTS, free_TRUSTED_SUBJECTS>>(new_TRUSTED_SUBJECTS()).release();
    return list;
}

/// Adds a certificate to those of signed data unless it is there.
void add_certificate(P7_CONTENT_INFO *message, const X509_CERT *cert) {
    const X509_CERTIFICATES *certificates = message->content.signedData->certificates;
    if (get_X509_CERTS_index_by_X509_CERT(certificates, cert) >= 0) return;
    must(add_PKCS7_Certificate(message, cert));
}

/// Adds signers with their certificates. The tokens outlive the message.
void add_signers(P7_CONTENT_INFO *message, const SignOptions &options, Tokens &tokens) {
    Password password(options.password_file);
    for (std::size_t i = 0; i < options.certs.size(); ++i) {
        const LoadedCertificate signer = load_certificate(options.certs[i], tokens);
        const X509_CERT *cert = signer.cert.get();
        const Key key = load_private_key(options.keys[i], password, tokens, KeyUse::kSign);
        expect_key_of(signer, options.keys[i], key.get());
        add_certificate(message, cert);
        if (add_PKCS7_Signature_withEncryptedAlgorithm(message, cert, key.get(), TLX_OID_SHA256,
                                                       TLX_P7_RSA_PKCS1, nullptr) == nullptr) {
            throw Failure(signer.source + ": the certificate cannot name a signer");
        }
    }
}

}  // namespace

int run_trust_list_show(const TrustListOptions &options) {
    print_document(describe_file(options.file), options.json);
    return kGood;
}

int run_trust_list_import(const TrustListOptions &options) {
    expect_room_for_json(options.json, options.output);
    if (options.unverified != options.authorities.empty()) {
        throw Failure("give --authority, or --unverified to take a list of anybody");
    }
    const Message message = read_message(options.file);
    if (list_in(message.get()) == nullptr) {
        throw Failure(source_of(options.file) + ": is no signed trust list");
    }
    const auto certificates = made<Certificates>(new_X509_CERTIFICATES());
    const uint32_t status = import_list(options, message.get(), certificates.get());
    if (status == 0) write_certificates(options.output, certificates.get());
    const Json document = describe_import(options, status, certificates.get());
    if (options.json) {
        print_json(std::cout, document);
    } else if (status != 0 || options.output != "-") {
        print_import(document);
    }
    return status == 0 ? kGood : kNotValid;
}

int run_trust_list_make(const TrustListOptions &options) {
    expect_room_for_json(options.json, options.output);
    Tokens tokens(options.signer.pin_file);
    const Message message = new_message(TLX_OID_PKCS7_SIGNED_DATA);
    const TrustList list = start_list(options);
    for (const std::string &path : options.certificates) {
        for (const LoadedCertificate &loaded : load_certificates(path)) {
            add_subject(list.get(), loaded.cert.get());
            add_certificate(message.get(), loaded.cert.get());
        }
    }
    const auto content = made<Message>(gen_PKCS7_from_CERT_TRUST_LIST(list.get()));
    must(set_PKCS7_Content(message.get(), content.get()));
    add_signers(message.get(), options.signer, tokens);
    const uint32_t status = sign_PKCS7_withAttributes(message.get(), nullptr, 0, 0, nullptr);
    if (status != 0) throw Failure("the list cannot be signed: " + exact_status_sentence(status));
    write_message(options.output, message.get(), options.signer.der);
    if (options.json) {
        Json document = {{"source", options.output}};
        document.update(describe_signed_list(message.get(), list.get()));
        print_json(std::cout, document);
    }
    return kGood;
}

}  // namespace tool
