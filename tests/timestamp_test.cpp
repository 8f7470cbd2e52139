// Requests for time stamps, and what authorities answer.
#include <gtest/gtest.h>
#include <tlxpki/objects.h>
#include <tlxpki/timestamp.h>

#include "support/command.hpp"
#include "support/der_text.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

using Request = Held<free_CMS_TIMESTAMP_REQUEST>;
using Response = Held<free_CMS_TIMESTAMP_RESPONSE>;
using Info = Held<free_CMS_TST_INFO>;

const char *const kTime = "32303236313132323230303030305A";

std::uint32_t size_of(const Octets &octets) {
    return static_cast<std::uint32_t>(octets.size());
}

std::string replaced(std::string text, const std::string &name, const std::string &value) {
    for (std::size_t at = 0; (at = text.find(name, at)) != text.npos; at += value.size())
        text.replace(at, name.size(), value);
    return text;
}

/// The members of TSTInfo after its version.
std::string members(const std::string &digest, const std::string &time, const std::string &more) {
    return "06:2A03 30{30{06:" + digest + "} 04:AABB} 02:05 18:" + time + " " + more;
}

std::string make_request(const Row &row) {
    const Octets octets = hex(row[2]);
    CMS_TIMESTAMP_REQUEST *made = nullptr;
    std::uint32_t status =
        (row[3] == "octets" ? generate_CMS_TIMESTAMP_REQUEST : generate_CMS_TIMESTAMP_REQUEST_of_digest)(
            &made, row.number(1), octets.data(), size_of(octets));
    const Request request(made);
    if (status == 0 && !row[5].empty()) {
        const Held<free_OBJECT_IDENTIFIER> oid(text_to_OBJECT_IDENTIFIER(row[5].c_str()));
        status = set_CMS_TIMESTAMP_REQUEST_policy(made, oid.get());
    }
    if (status == 0 && !row[4].empty()) {
        status = generate_CMS_TIMESTAMP_REQUEST_nonce(made, row.number(4));
        if (status == 0) return get_BIGINT_bits(made->nonce) > 450 ? "nonce" : "short nonce";
    }
    if (status != 0) return status_text(status);
    const Octets written = encoding_of(made, TLX_ENCODER(CMS_TIMESTAMP_REQUEST_to_Seq));
    return written == der(row.fields.back()) ? row.fields.back() : hex_of(written.data(), written.size());
}

std::string read_token(const Row &row) {
    const std::string rest = members("2B0E03021A", row[2], "");
    std::string text = replaced("30{" + row[1] + "}", "$info", "30{02:01 $rest}");
    text = replaced(replaced(text, "$rest", rest), "$type", "06:2A864886F70D0109100104");
    const Held<free_CMS_CONTENT_INFO> token(decoded(Seq_to_CMS_CONTENT_INFO, text));
    CMS_TST_INFO *info = nullptr;
    const std::uint32_t status = decode_CMS_TST_INFO(token.get(), &info);
    const Info owner(info);
    EXPECT_EQ(info != nullptr, status == 0);
    return status_text(status);
}

Response response_of(const std::string &status, const std::string &more) {
    const bool other_algorithm = more == "other algorithm";
    std::string info = members(other_algorithm ? "2A03" : "2B0E03021A", kTime,
                               more.starts_with("other") || more == "none" ? "" : more);
    if (more == "other digest") info = replaced(info, "AABB", "AABC");
    const std::string token =
        " 30{06:2A864886F70D010702 A0{30{02:03 31{} 30{06:2A864886F70D0109100104 A0{04{30{02:01 " + info +
        "}}}} 31{}}}}";
    return Response(
        decoded(Seq_to_CMS_TIMESTAMP_RESPONSE, "30{" + status + (more == "none" ? "" : token) + "}"));
}

Request request_of(const std::string &more) {
    return Request(
        decoded(Seq_to_CMS_TIMESTAMP_REQUEST, "30{02:01 30{30{06:2B0E03021A 05:} 04:AABB} " + more + "}"));
}

std::string check_answer(const Row &row) {
    CMS_TST_INFO *info = nullptr;
    const std::uint32_t status =
        check_CMS_TIMESTAMP_RESPONSE(response_of(row[1], row[2]).get(), request_of(row[3]).get(), &info);
    const Info owner(info);
    EXPECT_EQ(info != nullptr, status == 0);
    return status_text(status);
}

std::string match(const Row &row) {
    const Octets octets = hex(row[2]);
    const Held<free_CMS_MESSAGE_IMPRINT> imprint(decoded(Seq_to_CMS_MESSAGE_IMPRINT, row[1]));
    return status_text(match_CMS_MESSAGE_IMPRINT(imprint.get(), octets.data(), size_of(octets)));
}

TEST(TimeStamps, Rows) {
    expect_rows("timestamp.txt", {{"request", {make_request}},
                                  {"token", {read_token}},
                                  {"answer", {check_answer}},
                                  {"match", {match}}});
}

TEST(TimeStamps, ArgumentsAndMemory) {
    const Octets octets(20);
    CMS_TIMESTAMP_REQUEST *made = nullptr;
    expect_refuses_null(0x52C00049, generate_CMS_TIMESTAMP_REQUEST, &made, TLX_DIGEST_SHA1, octets.data(),
                        20);
    expect_refuses_null(0x52C10049, generate_CMS_TIMESTAMP_REQUEST_of_digest, &made, TLX_DIGEST_SHA1,
                        octets.data(), 20);
    sweep_failing_allocations([&] {
        CMS_TIMESTAMP_REQUEST *request = nullptr;
        std::uint32_t status = generate_CMS_TIMESTAMP_REQUEST(&request, TLX_DIGEST_SHA256, nullptr, 0);
        const Request owner(request);
        EXPECT_TRUE(status == 0 || status == 0x52C0003C) << status_text(status);
        if (status != 0) return false;
        status = generate_CMS_TIMESTAMP_REQUEST_nonce(request, 8);
        EXPECT_TRUE(status == 0 || status == 0x52C2003C) << status_text(status);
        return status == 0;
    });
    const Response response = response_of("30{02:00}", "02:07");
    const Request request = request_of("06:2A03 02:07");
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST_nonce(nullptr, 8), 0x52C20049U);
    expect_refuses_null(0x52C30049, set_CMS_TIMESTAMP_REQUEST_policy, request.get(),
                        static_cast<const OBJECT_IDENTIFIER *>(request->reqPolicy));
    CMS_TST_INFO *info = nullptr;
    expect_refuses_null(0x52C40049, decode_CMS_TST_INFO,
                        static_cast<const CMS_CONTENT_INFO *>(response->timeStampToken), &info);
    EXPECT_EQ(check_CMS_TIMESTAMP_RESPONSE(nullptr, request.get(), &info), 0x52C50049U);
    EXPECT_EQ(check_CMS_TIMESTAMP_RESPONSE(response.get(), nullptr, &info), 0x52C50049U);
    EXPECT_EQ(check_CMS_TIMESTAMP_RESPONSE(response.get(), request.get(), nullptr), 0U);
    EXPECT_EQ(get_CMS_MESSAGE_IMPRINT_digest(nullptr), 0U);
    EXPECT_EQ(match_CMS_MESSAGE_IMPRINT(nullptr, octets.data(), 1), 0x52C60049U);
    sweep_failing_allocations([&] {
        const std::uint32_t status = check_CMS_TIMESTAMP_RESPONSE(response.get(), request.get(), nullptr);
        EXPECT_TRUE(status == 0 || TLX_STATUS_REASON(status) == TLX_REASON_NOT_DECODED)
            << status_text(status);
        return status == 0;
    });
}

TEST(TimeStamps, OpensslAnswersAndVerifies) {
    const CommandFolder folder;
    folder.write("tsa.cnf",
                 "[tsa]\ndefault_tsa = t\n[t]\nserial = serial\nsigner_digest = sha256\n"
                 "default_policy = 1.2.3.4\ndigests = sha512\n");
    CMS_TIMESTAMP_REQUEST *made = nullptr;
    const std::string content = "Content";
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST(&made, TLX_DIGEST_SHA512,
                                             reinterpret_cast<const std::uint8_t *>(content.data()), 7),
              0U);
    const Request request(made);
    const Held<free_OBJECT_IDENTIFIER> policy(text_to_OBJECT_IDENTIFIER("1.2.3.4"));
    EXPECT_EQ(set_CMS_TIMESTAMP_REQUEST_policy(made, policy.get()), 0U);
    EXPECT_EQ(generate_CMS_TIMESTAMP_REQUEST_nonce(made, 8), 0U);
    const Octets written = encoding_of(made, TLX_ENCODER(CMS_TIMESTAMP_REQUEST_to_Seq));
    folder.write("asked", {written.begin(), written.end()});
    folder.run(
        "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout tsa.p8 -out tsa.pem "
        "-subj /CN=tsa -addext extendedKeyUsage=critical,timeStamping && "
        "openssl ts -reply -config tsa.cnf -queryfile asked -signer tsa.pem -inkey tsa.p8 -out answered && "
        "openssl ts -verify -in answered -queryfile asked -CAfile tsa.pem");
    const std::string answered = folder.read("answered");
    CMS_TIMESTAMP_RESPONSE *read = nullptr;
    CMS_TST_INFO *info = nullptr;
    EXPECT_EQ(
        TLX_READ_DER(CMS_TIMESTAMP_RESPONSE, &read, reinterpret_cast<const std::uint8_t *>(answered.data()),
                     static_cast<std::uint32_t>(answered.size())),
        0U);
    const Response response(read);
    EXPECT_EQ(check_CMS_TIMESTAMP_RESPONSE(read, made, &info), 0U);
    const Info owner(info);
    EXPECT_EQ(get_CMS_MESSAGE_IMPRINT_digest(info->messageImprint), TLX_DIGEST_SHA512);
}

}  // namespace
}  // namespace tlx_test
