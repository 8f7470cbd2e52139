// OCSP with the openssl and ocsptool programs: their answers to our requests, and ours to theirs.
#include <gtest/gtest.h>
#include <tlxpki.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include "support/command.hpp"
#include "support/held.hpp"
#include "support/octets.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

using Request = Held<free_OCSP_REQUEST>;
using Response = Held<free_OCSP_RESPONSE>;

/// A CA, a responder below it, and certificates: "good", "bad", which is revoked, and "lost", which the list
/// of certificates lacks. openssl makes them once.
class Authority {
  public:
    static const Authority &instance() {
        static const Authority made;
        return made;
    }
    [[nodiscard]] const CommandFolder &folder() const { return folder_; }
    [[nodiscard]] OwnedCert cert(const std::string &name) const {
        return certificate_of(read_pem_file(folder_.path(name + ".pem")).front());
    }
    [[nodiscard]] Held<free_P8_PRIV_KEY_INFO> key(const std::string &name) const {
        const Octets octets = read_pem_file(folder_.path(name + ".key")).front();
        P8_PRIV_KEY_INFO *key = nullptr;
        EXPECT_EQ(
            TLX_READ_DER(P8_PRIV_KEY_INFO, &key, octets.data(), static_cast<std::uint32_t>(octets.size())),
            0U);
        return Held<free_P8_PRIV_KEY_INFO>(key);
    }

  private:
    Authority() {
        folder_.write("responder.ext", "subjectKeyIdentifier=hash\nextendedKeyUsage=OCSPSigning\n");
        folder_.write("user.ext", "subjectKeyIdentifier=hash\n");
        folder_.write("index.txt",
                      "V\t491231000000Z\t\t1001\tunknown\t/CN=good\n"
                      "R\t491231000000Z\t290102030405Z,keyCompromise\t1002\tunknown\t/CN=bad\n");
        folder_.run(
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj "
            "'/O=Org+OU=Unit/CN=CA' "
            "-multivalue-rdn -days 2");
        std::string serial = "0x1000";
        for (const std::string name : {"responder", "good", "bad", "lost"}) {
            const std::string extensions = name == "responder" ? "responder.ext" : "user.ext";
            folder_.run("openssl req -newkey rsa:2048 -nodes -keyout " + name + ".key -out " + name +
                        ".csr -subj /CN=" + name + " && openssl x509 -req -in " + name +
                        ".csr -CA ca.pem -CAkey ca.key -days 2 -set_serial " + serial + " -extfile " +
                        extensions + " -out " + name + ".pem");
            ++serial.back();
        }
    }
    CommandFolder folder_;
};

/// The record of a file; null when it cannot be read.
template <auto Free, typename T>
Held<Free> read_record(const std::string &name, std::uint32_t (*decoder)(const ASN1_UNIT *, T **)) {
    void *record = nullptr;
    const std::string octets = Authority::instance().folder().read(name);
    EXPECT_EQ(readDER_from_Buffer(&record, TLX_DECODER(decoder),
                                  reinterpret_cast<const std::uint8_t *>(octets.data()),
                                  static_cast<std::uint32_t>(octets.size())),
              0U)
        << name;
    return Held<Free>(static_cast<T *>(record));
}
void write_record(const std::string &name, const void *record, ASN1_ENCODER encoder) {
    const Octets octets = encoding_of(record, encoder);
    Authority::instance().folder().write(name, std::string(octets.begin(), octets.end()));
}

Request request_for(const X509_CERT *cert, const X509_CERT *ca, std::uint32_t digest) {
    OCSP_REQUEST *made = nullptr;
    EXPECT_EQ(generate_OCSP_REQUEST(&made, cert, ca, digest), 0U);
    return Request(made);
}

TEST(OcspPeer, AnswersOfOpenssl) {
    const Authority &authority = Authority::instance();
    const OwnedCert ca = authority.cert("ca");
    struct Row {
        const char *name;
        std::uint32_t status, reason;
    };
    const Row rows[] = {
        {"good", TLX_OCSP_GOOD, 0}, {"bad", TLX_OCSP_REVOKED, 1}, {"lost", TLX_OCSP_UNKNOWN, 0}};
    for (const std::string signer : {"-rsigner responder.pem -rkey responder.key",
                                     "-rsigner responder.pem -rkey responder.key -resp_key_id -rmd sha512",
                                     "-rsigner ca.pem -rkey ca.key -nmin 5"}) {
        for (const Row &row : rows) {
            SCOPED_TRACE(signer + " " + row.name);
            const OwnedCert cert = authority.cert(row.name);
            const bool is_good = row.status == TLX_OCSP_GOOD;
            const Request request =
                request_for(cert.get(), ca.get(), is_good ? TLX_DIGEST_SHA256 : TLX_DIGEST_SHA1);
            if (!is_good) {
                EXPECT_EQ(generate_OCSP_REQUEST_nonce(request.get(), 32), 0U);
            }
            write_record("request.der", request.get(), TLX_ENCODER(OCSP_REQUEST_to_Seq));
            authority.folder().run("openssl ocsp -index index.txt -CA ca.pem -reqin request.der -respout " +
                                   std::string("response.der ") + signer);
            const Response response = read_record<free_OCSP_RESPONSE>("response.der", Seq_to_OCSP_RESPONSE);
            OCSP_ANSWER answer;
            const auto check = [&](const X509_CERT *about) {
                return check_OCSP_RESPONSE(response.get(), about, ca.get(),
                                           get_OCSP_REQUEST_nonce(request.get()),
                                           get_OCSP_REQUEST_nonce_length(request.get()), nullptr, &answer);
            };
            EXPECT_EQ(check(cert.get()), 0U);
            EXPECT_EQ(answer.status, row.status);
            EXPECT_EQ(answer.reason, row.reason);
            EXPECT_EQ(answer.revocationTime.year, row.status == TLX_OCSP_REVOKED ? 129 : 0);
            EXPECT_EQ(check(ca.get()), 0x501C0047U) << "about another certificate";
        }
    }
}

/// What openssl signs of the data with the responder's key.
Octets signed_by_openssl(const OCSP_RESPONSE_DATA *data) {
    write_record("data.der", data, TLX_ENCODER(OCSP_RESPONSE_DATA_to_Seq));
    const CommandFolder &folder = Authority::instance().folder();
    folder.run("openssl dgst -sha256 -sign responder.key -out data.sig data.der");
    const std::string signature = folder.read("data.sig");
    return Octets(signature.begin(), signature.end());
}

/// Answers what a request asks, as a responder does; with the key at hand, or elsewhere.
Response respond(const OCSP_REQUEST *request, bool elsewhere) {
    const Authority &authority = Authority::instance();
    const OwnedCert ca = authority.cert("ca"), bad = authority.cert("bad"),
                    responder = authority.cert("responder");
    const auto key = authority.key("responder");
    const Held<free_ASN1_TIME> now(getCurrentGMTime());
    const String time(asn1TimeToGENERALIZED_TIME(now.get(), 2));
    const Held<free_OCSP_REVOKED_INFO> info(new_OCSP_REVOKED_INFO());
    info->revocationTime = dup_ASN1_STRING(time.get());
    OCSP_RESPONSE_DATA *data = nullptr;
    EXPECT_EQ(
        generate_OCSP_RESPONSE_DATA_withKeyHash(&data, responder.get(), 0, get_OCSP_REQUEST_nonce(request),
                                                get_OCSP_REQUEST_nonce_length(request)),
        0U);
    const OCSP_SINGLE_REQUESTS *list = request->tbsRequest->requestList;
    for (std::int32_t i = 0; get_OCSP_SINGLE_REQUESTS_child(list, i) != nullptr; ++i) {
        OCSP_CERT_ID *id = get_OCSP_SINGLE_REQUESTS_child(list, i)->reqCert;
        EXPECT_EQ(match_OCSP_CERT_ID(id, ca.get()), 0U);
        const bool revoked = cmp_BIGINT(id->serialNumber, get_X509_serial(bad.get())) == 0;
        EXPECT_EQ(add_single_OCSP_RESPONSE(data, &id, revoked ? TLX_OCSP_REVOKED : TLX_OCSP_GOOD, info.get(),
                                           time.get(), nullptr),
                  0U);
    }
    BASIC_OCSP_RESPONSE *basic = nullptr;
    OCSP_RESPONSE_BYTES *bytes = nullptr;
    OCSP_RESPONSE *response = nullptr;
    if (elsewhere) {
        const Octets signature = signed_by_openssl(data);
        EXPECT_EQ(
            set_BASIC_OCSP_RESPONSE_signature(&basic, data, responder.get(), TLX_DIGEST_SHA256,
                                              signature.data(), static_cast<std::uint32_t>(signature.size())),
            0U);
    } else {
        EXPECT_EQ(
            generate_BASIC_OCSP_RESPONSE_ex(&basic, data, responder.get(), key.get(), TLX_DIGEST_SHA256), 0U);
    }
    EXPECT_EQ(generate_OCSP_RESPONSE_BYTES(&bytes, basic), 0U);
    EXPECT_EQ(generate_OCSP_RESPONSE(&response, bytes, TLX_OCSP_SUCCESSFUL), 0U);
    free_BASIC_OCSP_RESPONSE(basic);
    return Response(response);
}

TEST(OcspPeer, OpensslTakesOurAnswers) {
    const CommandFolder &folder = Authority::instance().folder();
    const std::string asked = "-issuer ca.pem -cert good.pem -cert bad.pem ";
    folder.run("openssl ocsp " + asked + "-reqout theirs.der");
    const Request request = read_record<free_OCSP_REQUEST>("theirs.der", Seq_to_OCSP_REQUEST);
    EXPECT_EQ(get_OCSP_REQUEST_nonce_length(request.get()), 18U) << "an OCTET STRING of 16 octets";
    for (const bool elsewhere : {false, true}) {
        write_record("ours.der", respond(request.get(), elsewhere).get(), TLX_ENCODER(OCSP_RESPONSE_to_Seq));
        const std::string said =
            folder.run("openssl ocsp -no_nonce -reqin theirs.der -respin ours.der -CAfile ca.pem " + asked);
        for (const char *line : {"Response verify OK", "good.pem: good", "bad.pem: revoked"})
            EXPECT_NE(said.find(line), said.npos) << said;
        EXPECT_EQ(said.find("once"), said.npos) << said;
    }
}

TEST(OcspPeer, OcsptoolTakesOurAnswers) {
    const CommandFolder &folder = Authority::instance().folder();
    folder.run("ocsptool -q --load-issuer ca.pem --load-cert good.pem --outfile theirs2.der");
    const Request request = read_record<free_OCSP_REQUEST>("theirs2.der", Seq_to_OCSP_REQUEST);
    write_record("ours2.der", respond(request.get(), false).get(), TLX_ENCODER(OCSP_RESPONSE_to_Seq));
    const std::string said = folder.run("ocsptool -e --load-trust ca.pem --load-response ours2.der");
    EXPECT_NE(said.find("Success"), said.npos) << said;
    const Request ours = request_for(Authority::instance().cert("good").get(),
                                     Authority::instance().cert("ca").get(), TLX_DIGEST_SHA256);
    write_record("ours3.der", ours.get(), TLX_ENCODER(OCSP_REQUEST_to_Seq));
    EXPECT_NE(folder.run("ocsptool -i --load-request ours3.der").find("SHA256"), std::string::npos);
}

TEST(OcspPeer, SignedRequestsOfOpenssl) {
    const Authority &authority = Authority::instance();
    authority.folder().run(
        "openssl ocsp -issuer ca.pem -cert good.pem -signer good.pem -signkey good.key -reqout signed.der");
    const Request request = read_record<free_OCSP_REQUEST>("signed.der", Seq_to_OCSP_REQUEST);
    EXPECT_EQ(verify_OCSP_REQUEST(request.get(), nullptr), 0U);
    EXPECT_EQ(verify_OCSP_REQUEST(request.get(), authority.cert("bad").get()), 0x502D0054U);
}

}  // namespace
}  // namespace tlx_test
