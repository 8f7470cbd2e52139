// Requests, the verification of responses and the answers in them, with rows as scripts.
#include <gtest/gtest.h>
#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

constexpr std::uint32_t kNoNonce = 999;  // null octets
constexpr unsigned kCaKey = 1;

using Data = Held<free_OCSP_RESPONSE_DATA>;
using Basic = Held<free_BASIC_OCSP_RESPONSE>;
using Response = Held<free_OCSP_RESPONSE>;
using Request = Held<free_OCSP_REQUEST>;
using Id = Held<free_OCSP_CERT_ID>;

/// An hour from the beginning of 2030 on.
String hour_text(std::uint32_t hour) {
    const auto two = [](std::uint32_t number) { return std::to_string(100 + number).substr(1); };
    return string_of(TLX_TAG_GENERALIZED_TIME, "203001" + two(1 + hour / 24) + two(hour % 24) + "0000Z");
}
Held<free_ASN1_TIME> hour_time(std::uint32_t hour) {
    return Held<free_ASN1_TIME>(generalizedTimeToASN1_TIME(hour_text(hour).get()));
}

/// The certificates: the CA, the one asked about, and the responder's as a row edits it; "ca" is the CA.
struct Parties {
    explicit Parties(const std::string &edits) {
        const Chain chain = valid_chain(3);
        ca = chain[1].make();
        user = chain[0].make();
        if (edits == "ca") {
            responder = chain[1].make();
            key = kCaKey;
            return;
        }
        const EditedChain edited(
            3, "0 subject=Responder; 0 key=3; 0 serial=77; 0 extendedKeyUsage=30{06:2B06010505070309}; " +
                   edits);
        responder = edited.chain[0].make();
        key = edited.chain[0].key;
    }

    Cert ca, user, responder;
    unsigned key = 0;
};

/// A response made step by step, read again and looked at.
class Script {
  public:
    explicit Script(const std::string &edits) : parties_(edits) {}
    std::string run(const std::string &text) { return run_steps(text, steps_); }

    /// Flips a bit of each octet of the data in turn. How many of the alterations that can be read are
    /// refused; all have to be.
    unsigned refused_alterations() {
        constexpr std::size_t kHeader = 4;  // of the response
        Octets octets = encoding_of(basic_.get(), TLX_ENCODER(BASIC_OCSP_RESPONSE_to_Seq));
        const Octets data = encoding_of(basic_->tbsResponseData, TLX_ENCODER(OCSP_RESPONSE_DATA_to_Seq));
        unsigned refused = 0;
        for (std::size_t place = kHeader; place < kHeader + data.size(); ++place) {
            octets[place] ^= 1;
            if (reread(octets) == 0) {
                EXPECT_NE(verify({12}), 0U) << "octet " << place;
                ++refused;
            }
            octets[place] ^= 1;
        }
        return refused;
    }
    /// Verifies, and takes the answer, with each allocation failing in turn. The last result.
    std::uint32_t sweep() {
        const auto time = hour_time(12);
        const Octets octets = encoding_of(basic_.get(), TLX_ENCODER(BASIC_OCSP_RESPONSE_to_Seq));
        const Response response(new_OCSP_RESPONSE());
        response->responseBytes = new_OCSP_RESPONSE_BYTES();
        response->responseBytes->responseType = oid_of("1.3.6.1.5.5.7.48.1.1").release();
        response->responseBytes->response = string_of(TLX_TAG_OCTET_STRING, octets).release();
        // Memory that runs out inside a check looks like one that fails.
        const Statuses expected = {0x501B003C, 0x501B0047, 0x501B0054, 0x501B0106, 0x501B0113,
                                   0x501B0118, 0x501B0104, 0x501C003C, 0x501C0104, 0x50110104};
        std::uint32_t last = 77;
        sweep_statuses(expected, [&] {
            return last = verify_BASIC_OCSP_RESPONSE(basic_.get(), parties_.ca.get(), nullptr, time.get());
        });
        sweep_statuses(expected, [&] {
            OCSP_ANSWER answer;
            return last = check_OCSP_RESPONSE(response.get(), parties_.user.get(), parties_.ca.get(),
                                              nonce_.data(), 4, time.get(), &answer);
        });
        return last;
    }

  private:
    /// Type of the responder ID (3 by the hash of the key), octets of the nonce.
    std::uint32_t begin(const Numbers &n) {
        OCSP_RESPONSE_DATA *data = nullptr;
        const std::uint8_t *nonce = n[1] == kNoNonce ? nullptr : nonce_.data();
        const std::uint32_t status =
            n[0] == 3
                ? generate_OCSP_RESPONSE_DATA_withKeyHash(&data, parties_.responder.get(), 0, nonce, n[1])
                : generate_OCSP_RESPONSE_DATA(&data, parties_.responder.get(), n[0], 0, nonce, n[1]);
        data_.reset(data);
        return status;
    }
    /// Status, hours of the updates (next 99 for none), and 1 for an answer about another certificate, 2 for
    /// one of another CA.
    std::uint32_t answer(const Numbers &n) {
        OCSP_CERT_ID *id = nullptr;
        const Cert other = valid_chain(3)[2].make();
        const X509_CERT *about = n[3] == 1 ? parties_.ca.get() : parties_.user.get();
        EXPECT_EQ(generate_OCSP_CERT_ID(&id, about, n[3] == 2 ? other.get() : parties_.ca.get(), digest_),
                  0U);
        const Id owner(id);
        const Held<free_OCSP_REVOKED_INFO> info(
            decoded(Seq_to_OCSP_REVOKED_INFO, "30{18:32303239303130313030303030305A A0{0A:04}}"));
        return add_single_OCSP_RESPONSE(data_.get(), &id, n[0], info.get(), hour_text(n[1]).get(),
                                        n[2] == 99 ? nullptr : hour_text(n[2]).get());
    }
    /// A critical extension by its row: of the whole response, or (1) of the first answer.
    std::uint32_t add_critical(const Numbers &n) {
        OCSP_SINGLE_RESPONSE *single = get_OCSP_SINGLE_RESPONSES_child(data_->responses, 0);
        X509_EXTENSIONS *&list = n[1] == 1 ? single->singleExtensions : data_->responseExtensions;
        if (list == nullptr) list = new_X509_EXTENSIONS();
        const String value = string_of(TLX_TAG_OCTET_STRING, "x");
        const Held<free_X509_EXTENSION> extension(
            create_X509_EXTENSION_by_OID_index(nullptr, static_cast<std::int32_t>(n[0]), 0xFF, value.get()));
        return add_X509_EXTENSION(list, extension.get(), -1);
    }
    std::uint32_t sign(const Numbers &n) {
        const auto key = private_key(n[1] == 0 ? parties_.key : n[1]);
        BASIC_OCSP_RESPONSE *basic = nullptr;
        const std::uint32_t status = generate_BASIC_OCSP_RESPONSE_ex(
            &basic, data_.get(), parties_.responder.get(), key.get(), n[0] == 0 ? TLX_DIGEST_SHA256 : n[0]);
        if (status == 0) static_cast<void>(data_.release());
        basic_.reset(basic);
        return status;
    }
    /// Moves the certificates from the response to the caller.
    std::uint32_t take_certificates() {
        certs_.reset(std::exchange(basic_->certs, nullptr));
        return 0;
    }
    std::uint32_t reread(const Octets &octets) {
        BASIC_OCSP_RESPONSE *basic = nullptr;
        const std::uint32_t status = TLX_READ_DER(BASIC_OCSP_RESPONSE, &basic, octets.data(),
                                                  static_cast<std::uint32_t>(octets.size()));
        basic_.reset(basic);
        return status;
    }
    std::uint32_t verify(const Numbers &n) {
        const auto time = hour_time(n[0]);
        const std::uint32_t status =
            verify_BASIC_OCSP_RESPONSE(basic_.get(), parties_.ca.get(), certs_.get(), time.get());
        EXPECT_EQ(verfy_BASIC_OCSP_RESPONSE(basic_.get(), parties_.ca.get(), certs_.get(), time.get()),
                  status);
        return status;
    }
    /// Hour, octets of the nonce (1000 and up for others of that length), responseStatus, and 1 for a
    /// question about another certificate. An answer comes out as its status, reason, and 1 for each time:
    /// revoked, next.
    std::uint32_t check(const Numbers &n) {
        OCSP_RESPONSE_BYTES *bytes = nullptr;
        OCSP_RESPONSE *made = nullptr;
        EXPECT_EQ(generate_OCSP_RESPONSE_BYTES(&bytes, basic_.get()), 0U);
        EXPECT_EQ(generate_OCSP_RESPONSE(&made, bytes, static_cast<std::int32_t>(n[2])), 0U);
        const Response response(made);
        const Octets other(40, 0x33);
        const bool none = n[1] == kNoNonce;
        const std::uint8_t *nonce = none ? nullptr : n[1] < kNoNonce ? nonce_.data() : other.data();
        OCSP_ANSWER answer = {};
        answer.status = 77;
        const std::uint32_t status = check_OCSP_RESPONSE(
            response.get(), n[3] == 1 ? parties_.responder.get() : parties_.user.get(), parties_.ca.get(),
            nonce, none ? 0 : n[1] % 1000, hour_time(n[0]).get(), &answer);
        EXPECT_EQ(answer.status == 77, status != 0);
        if (status != 0) return status;
        EXPECT_NE(answer.producedAt.day, 0);
        EXPECT_EQ(answer.thisUpdate.year, 130);
        return answer.status * 1000 + answer.reason * 100 + (answer.revocationTime.year == 129 ? 10U : 0U) +
               (answer.nextUpdate.day != 0 ? 1U : 0U);
    }

    const Parties parties_;
    std::uint32_t digest_ = TLX_DIGEST_SHA1;
    Octets nonce_ = Octets(40, 0x5A);
    Data data_;
    Basic basic_;
    Held<free_X509_CERTIFICATES> certs_;
    const Steps steps_ = {
        {"digest", [this](const Numbers &n) { return digest_ = n[0], 0U; }},
        {"data", [this](const Numbers &n) { return begin(n); }},
        {"answer", [this](const Numbers &n) { return answer(n); }},
        {"critical", [this](const Numbers &n) { return add_critical(n); }},
        {"sign", [this](const Numbers &n) { return sign(n); }},
        {"take", [this](const Numbers &) { return take_certificates(); }},
        {"drop",
         [this](const Numbers &) {
             free_X509_CERTIFICATES(std::exchange(basic_->certs, nullptr));
             return 0U;
         }},
        {"algorithm",
         [this](const Numbers &n) {
             const Held<free_OBJECT_IDENTIFIER> oid(
                 index_to_OBJECT_IDENTIFIER(static_cast<std::int32_t>(n[0])));
             return set_X509_ALGO_IDENTIFIER_OID(basic_->signatureAlgorithm, oid.get());
         }},
        {"good-after-all",
         [this](const Numbers &) {
             get_OCSP_SINGLE_RESPONSES_child(basic_->tbsResponseData->responses, 0)->certStatus->status = 0;
             return 0U;
         }},
        {"reread",
         [this](const Numbers &) {
             return reread(encoding_of(basic_.get(), TLX_ENCODER(BASIC_OCSP_RESPONSE_to_Seq)));
         }},
        {"spoil",
         [this](const Numbers &) {
             basic_->signature->data[basic_->signature->length - 1] ^= 1;
             return 0U;
         }},
        {"verify", [this](const Numbers &n) { return verify(n); }},
        {"check", [this](const Numbers &n) { return check(n); }},
    };
};

TEST(OcspVerify, Steps) {
    make_signing_keys();
    expect_rows("ocsp_verify.txt",
                {{"response", {[](const Row &row) { return Script(row[1]).run(row[2]); }}}});
}

/// No octet of what is signed may change, not even one that the records drop.
TEST(OcspVerify, EveryOctetCounts) {
    make_signing_keys();
    Script made("0 signer=1");
    ASSERT_EQ(made.run("data 0 4; answer 1 11 13; critical 367 1; sign; reread; verify 12"), "0 0 0 0 0 0");
    EXPECT_GT(made.refused_alterations(), 150U);
}

/// A request for the user's certificate, which its owner may sign.
Request make_request(const Parties &parties, std::uint32_t digest) {
    OCSP_REQUEST *request = nullptr;
    EXPECT_EQ(generate_OCSP_REQUEST(&request, parties.user.get(), parties.ca.get(), digest), 0U);
    return Request(request);
}

Request reread(const OCSP_REQUEST *request, std::size_t flipped = 0) {
    Octets octets = encoding_of(request, TLX_ENCODER(OCSP_REQUEST_to_Seq));
    if (flipped != 0) octets[flipped] ^= 1;
    OCSP_REQUEST *again = nullptr;
    EXPECT_EQ(TLX_READ_DER(OCSP_REQUEST, &again, octets.data(), static_cast<std::uint32_t>(octets.size())),
              0U);
    return Request(again);
}

TEST(OcspRequest, NamesTheCertificateAndCarriesANonce) {
    make_signing_keys();
    const LeakCheck leaks;
    const Parties parties("ca");
    const Request request = make_request(parties, TLX_DIGEST_SHA256);
    OCSP_REQUEST *more = request.get();
    EXPECT_EQ(generate_OCSP_REQUEST(&more, parties.responder.get(), parties.ca.get(), TLX_DIGEST_SHA1), 0U);
    const OCSP_SINGLE_REQUESTS *list = request->tbsRequest->requestList;
    ASSERT_EQ(get_OCSP_SINGLE_REQUESTS_count(list), 2U);
    const OCSP_CERT_ID *id = get_OCSP_SINGLE_REQUESTS_child(list, 0)->reqCert;
    EXPECT_EQ(id->issuerKeyHash->length, 32);
    EXPECT_EQ(cmp_BIGINT(id->serialNumber, get_X509_serial(parties.user.get())), 0);
    EXPECT_EQ(match_OCSP_CERT_ID(id, parties.ca.get()), 0U);
    EXPECT_EQ(match_OCSP_CERT_ID(id, parties.user.get()), 0x501D0106U);
    const Id unknown(decoded(Seq_to_OCSP_CERT_ID, "30{30{06:2A03} 04: 04: 02:01}"));
    EXPECT_EQ(match_OCSP_CERT_ID(unknown.get(), parties.ca.get()), 0x501D0048U);

    EXPECT_EQ(get_OCSP_REQUEST_nonce(request.get()), nullptr);
    EXPECT_EQ(get_OCSP_REQUEST_nonce_length(request.get()), 0U);
    for (const std::uint32_t octets : {1U, 128U, 32U})
        EXPECT_EQ(generate_OCSP_REQUEST_nonce(request.get(), octets), 0U);
    const Request again = reread(request.get());
    ASSERT_EQ(get_OCSP_REQUEST_nonce_length(again.get()), 34U) << "an OCTET STRING of 32 octets";
    EXPECT_EQ(get_OCSP_REQUEST_nonce(again.get())[0], 0x04);
    EXPECT_EQ(get_X509_EXTENSION_count(again->tbsRequest->requestExtensions), 1U);
    EXPECT_EQ(generate_OCSP_REQUEST_nonce(request.get(), 0), 0x502B002BU);
    EXPECT_EQ(generate_OCSP_REQUEST_nonce(request.get(), 129), 0x502B002BU);
    const std::uint8_t bare[5] = {1, 2, 3, 4, 5};
    EXPECT_EQ(set_OCSP_REQUEST_nonce(again.get(), bare, 5), 0U);
    EXPECT_EQ(get_OCSP_REQUEST_nonce_length(again.get()), 5U);

    OCSP_REQUEST *none = nullptr;
    EXPECT_EQ(generate_OCSP_REQUEST(&none, parties.user.get(), parties.ca.get(), TLX_DIGEST_MD5),
              0x501E002BU);
    const Cert empty(new_X509_CERT());
    EXPECT_EQ(generate_OCSP_REQUEST(&none, empty.get(), parties.ca.get(), TLX_DIGEST_SHA1), 0x501E003BU);
    EXPECT_EQ(generate_OCSP_REQUEST(&none, parties.user.get(), empty.get(), TLX_DIGEST_SHA1), 0x501E003BU);
    expect_refuses_null(0x501E0049, generate_OCSP_REQUEST, &none, parties.user.get(), parties.ca.get(),
                        TLX_DIGEST_SHA1);
    expect_refuses_null(0x501F0049, set_OCSP_REQUEST_nonce, request.get(), bare, 5);
    EXPECT_EQ(none, nullptr);
}

TEST(OcspRequest, SignaturesOfRsaAndKcdsa) {
    make_signing_keys();
    const LeakCheck leaks;
    const Parties parties("ca");
    for (const unsigned number : {0U, kKcdsaKey}) {
        const Cert signer = signer_spec(number).make();
        const Cert other = signer_spec(2).make();
        const auto key = private_key(number);
        const Request request = make_request(parties, TLX_DIGEST_SHA1);
        EXPECT_EQ(verify_OCSP_REQUEST(request.get(), nullptr), 0x502D002BU) << "not signed";
        ASSERT_EQ(sign_OCSP_REQUEST(request.get(), signer.get(), key.get(), TLX_DIGEST_SHA256), 0U);
        EXPECT_EQ(verify_OCSP_REQUEST(request.get(), nullptr), 0U);
        const Request again = reread(request.get());
        EXPECT_EQ(again->tbsRequest->requestorName->choice, 4U);
        EXPECT_EQ(verify_OCSP_REQUEST(again.get(), nullptr), 0U);
        EXPECT_EQ(verify_OCSP_REQUEST(again.get(), other.get()), number == 0 ? 0x502D0054U : 0x502D0048U);
        const Octets tbs = encoding_of(again->tbsRequest, TLX_ENCODER(OCSP_TBS_REQUEST_to_Seq));
        const Request altered = reread(again.get(), 4 + tbs.size() - 1);  // the serial number
        EXPECT_EQ(verify_OCSP_REQUEST(altered.get(), nullptr), 0x502D0054U);
        EXPECT_EQ(generate_OCSP_REQUEST_nonce(again.get(), 32), 0U);
        EXPECT_EQ(verify_OCSP_REQUEST(again.get(), nullptr), 0x502D0054U) << "changed after signing";
        free_X509_CERTIFICATES(std::exchange(again->optionalSignature->certs, nullptr));
        EXPECT_EQ(verify_OCSP_REQUEST(again.get(), nullptr), 0x502D0047U);
        const auto no_key = private_key(8);
        EXPECT_EQ(sign_OCSP_REQUEST(again.get(), signer.get(), no_key.get(), TLX_DIGEST_SHA256), 0x502C002BU);
        expect_refuses_null(0x502C0049, sign_OCSP_REQUEST, request.get(), signer.get(), key.get(),
                            TLX_DIGEST_SHA256);
    }
}

TEST(OcspVerify, AllocationsMayFail) {
    make_signing_keys();
    const Parties parties("1 key=1");
    const Cert signer = signer_spec(0).make();
    const auto key = private_key(0);
    const auto ask = [&] {
        OCSP_REQUEST *made = nullptr;
        std::uint32_t status =
            generate_OCSP_REQUEST(&made, parties.user.get(), parties.ca.get(), TLX_DIGEST_SHA256);
        const Request request(made);
        if (status == 0) status = generate_OCSP_REQUEST_nonce(made, 32);
        if (status == 0) status = sign_OCSP_REQUEST(made, signer.get(), key.get(), TLX_DIGEST_SHA256);
        return status == 0 ? verify_OCSP_REQUEST(made, nullptr) : status;
    };
    EXPECT_EQ(ask(), 0U);
    sweep_statuses({0x501E003C, 0x502B003C, 0x502C003C, 0x502C001C, 0x50040103, 0x502D003C}, ask);
    for (const char *const id : {"0", "1", "3"}) {
        Script made("1 key=1");
        const std::string begun = std::string("data ") + id + " 4; answer 1 11 13; sign; reread";
        ASSERT_EQ(made.run(begun), "0 0 0 0");
        EXPECT_EQ(made.sweep(), 0U);
    }
}

}  // namespace
}  // namespace tlx_test
