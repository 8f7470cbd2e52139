// Revocation lists: entries and how they are found, which certificates a list is for, what can be relied on,
// and lists of openssl and certtool in both directions.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/command.hpp"
#include "support/crl_builder.hpp"
#include "support/signers.hpp"
#include "support/threads.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

class RevocationLists : public testing::Test {
  protected:
    static void SetUpTestSuite() { make_signing_keys(); }
};

using Revoked = Held<free_X509_REVOKED>;
using Time = Held<free_ASN1_TIME>;
using Name = Held<free_X509_NAME>;
Octets encoding_of(const Crl &crl) {
    return tlx_test::encoding_of(crl.get(), TLX_ENCODER(X509_CRL_to_Seq));
}

Crl decoded_list(const Octets &der) {
    void *crl = nullptr;
    (void)readDER_from_Buffer(&crl, TLX_DECODER(Seq_to_X509_CRL), der.data(),
                              static_cast<std::uint32_t>(der.size()));
    return Crl(static_cast<X509_CRL *>(crl));
}

/// The same list as others receive it; null for "-".
Crl list_of(const std::string &text) {
    return text == "-" ? nullptr : decoded_list(encoding_of(make_crl(text)));
}

/// "05", "05 reason 1"
std::string text_of(const X509_REVOKED *revoked) {
    const tlx::OwnedOctets<char> serial(BIGINT_to_hex(revoked->serialNumber));
    const std::uint32_t reason = get_X509_REVOKED_reason(revoked);
    return std::string(serial.get()) + (reason > 10 ? "" : " reason " + std::to_string(reason));
}

template <typename Find>
std::string found(Find find) {
    X509_REVOKED *made = nullptr;
    const std::uint32_t status = find(&made);
    const Revoked revoked(made);
    EXPECT_EQ(find(nullptr), status) << "without a record";
    EXPECT_EQ(made != nullptr, status == 0);
    return status == 0 ? text_of(made) : status_text(status);
}

std::string find(const Row &row) {
    const Number serial = number_of(row[3].c_str());
    const Name issuer = row[2] == "-" ? nullptr : name_of(row[2]);
    std::string result;
    // In a list as made and in the one that comes back, an index beforehand and after a change.
    for (const Crl &crl : {make_crl(row[1]), list_of(row[1])}) {
        for (int times = 0; times < 2; ++times) {
            result = found([&](X509_REVOKED **out) {
                return find_X509_CRL_revoked(crl.get(), issuer.get(), serial.get(), out);
            });
            EXPECT_EQ(result, row.fields.back());
            EXPECT_EQ(add_X509_CRL_revoked(crl.get(), entry_of("7F7F7F").get()), 0U);
        }
    }
    return result;
}

/// The target of a chain of "User" and "Root" after edits.
Cert user_of(const std::string &edits) {
    return EditedChain(2, edits).chain[0].make();
}

std::string revoked(const Row &row) {
    const Crl crl = list_of(row[1]);
    const Crl delta = list_of(row[2]);
    const Cert user = user_of(row[3]);
    return found([&](X509_REVOKED **out) {
        return find_X509_CRL_revoked_by_X509_CERT(crl.get(), delta.get(), user.get(), out);
    });
}

std::string delta(const Row &row) {
    return status_text(check_X509_CRL_delta(list_of(row[1]).get(), list_of(row[2]).get()));
}

/// Whether a list can be relied on at a time, with the root of the chain as its issuer.
std::string rely(const Row &row) {
    const Cert root = EditedChain(2, row[2]).chain[1].make();
    const Time time = time_of(row[3]);
    return status_text(verify_X509_CRL(list_of(row[1]).get(), root.get(), time.get()));
}

/// The status of a list of which an octet is another, counted from the first octet or, below 0, from the end.
std::string altered(const Row &row) {
    Octets octets = encoding_of(make_crl(row[1]));
    const int at = std::stoi(row[2]);
    octets[static_cast<std::size_t>(at < 0 ? static_cast<int>(octets.size()) + at : at)] ^= 1;
    const Crl crl = decoded_list(octets);
    const Cert root = valid_chain(1)[0].make();
    return crl == nullptr ? "none" : status_text(verify_SIG_X509_CRL(crl.get(), get_X509_SPKI(root.get())));
}

TEST_F(RevocationLists, Rows) {
    // What the keys keep of their first use is no leak.
    for (const unsigned key : {0U, 1U, kKcdsaKey}) {
        CertSpec spec = valid_chain(1)[0];
        spec.key = spec.signer = key;
        const Cert cert = spec.make();
        EXPECT_EQ(verify_SIG_X509_CERT(cert.get(), get_X509_SPKI(cert.get())), 0U);
    }
    expect_rows("x509_crl.txt", {{"find", {find}},
                                 {"revoked", {revoked}},
                                 {"delta", {delta}},
                                 {"rely", {rely}},
                                 {"altered", {altered}}});
}

TEST_F(RevocationLists, ComeBackAsTheyWereUntilTheyChange) {
    const LeakCheck leaks;
    const Octets octets = encoding_of(make_crl("+05:1 +06 number=09"));
    const Crl crl = decoded_list(octets);
    const Crl copy(dup_X509_CRL(crl.get()));
    EXPECT_EQ(find_X509_CRL_revoked(copy.get(), nullptr, number_of("06").get(), nullptr), 0U);
    std::uint8_t *received = nullptr;
    const std::uint32_t size = get_X509_CRL_received(crl.get(), &received);
    const tlx::OwnedOctets<std::uint8_t> owner(received);
    EXPECT_EQ(Octets(received, received + size), octets);
    EXPECT_EQ(encoding_of(copy), octets);
    EXPECT_EQ(set_X509_CRL_nextUpdate(copy.get(), nullptr), 0U);
    EXPECT_EQ(get_X509_CRL_received(copy.get(), &received), 0U);
    EXPECT_EQ(get_X509_CRL_nextUpdate(decoded_list(encoding_of(copy)).get()), nullptr);
    EXPECT_EQ(encoding_of(crl), octets) << "a copy of its own";
    std::string entries;
    X509_REVOKED *entry = nullptr;
    std::uint32_t status = 0;
    for (std::uint32_t at = 0; (status = next_X509_CRL_revoked(copy.get(), &at, &entry)) == 0;)
        entries += text_of(entry) + "; ";
    const Revoked last(entry);
    EXPECT_EQ(status, 0x480F0047U);
    EXPECT_EQ(entries, "05 reason 1; 06; ");
    EXPECT_EQ(get_X509_CRL_count(copy.get()), 2U);
}

TEST_F(RevocationLists, RefuseMissingArguments) {
    const LeakCheck leaks;
    const Crl crl = list_of("+05 number=09");
    const Crl delta = list_of("number=0A delta=09");
    const Chain chain = valid_chain(2);
    const Cert user = chain[0].make(), root = chain[1].make();
    const Revoked entry = entry_of("05");
    const Time time = time_of("2024-06-01");
    const Number serial = number_of("05");
    X509_REVOKED *out = nullptr;
    BIGINT *number = nullptr;
    std::uint32_t at = 0;
    expect_refuses_null(0x48070049, gen_SIG_X509_CRL, crl.get(), signing_key(0));
    expect_refuses_null(0x48080049, verify_SIG_X509_CRL, crl.get(), get_X509_SPKI(root.get()));
    expect_refuses_null(0x480A0049, verify_X509_CRL, crl.get(), root.get(), nullptr);
    expect_refuses_null(0x480B0049, find_X509_CRL_revoked, crl.get(), nullptr, serial.get(), nullptr);
    expect_refuses_null(0x480C0049, find_X509_CRL_revoked_by_X509_CERT, crl.get(), nullptr, user.get(),
                        nullptr);
    expect_refuses_null(0x480D0049, check_X509_CRL_delta, crl.get(), delta.get());
    expect_refuses_null(0x480E0049, check_X509_CRL_scope, crl.get(), user.get());
    expect_refuses_null(0x480F0049, next_X509_CRL_revoked, crl.get(), &at, &out);
    expect_refuses_null(0x48100049, decode_X509_CRL_number, crl.get(), TLX_OID_CRL_NUMBER, &number);
    expect_refuses_null(1, add_X509_CRL_revoked, crl.get(), entry.get());
    expect_refuses_null(1, set_X509_CRL_number, crl.get(), TLX_OID_CRL_NUMBER, serial.get());
    expect_refuses_null(nullptr, create_X509_REVOKED, serial.get(), time.get(), 1);
    EXPECT_EQ(create_X509_REVOKED(serial.get(), time.get(), 11), nullptr);
    EXPECT_EQ(verify_X509_CRL_validity(Crl(new_X509_CRL()).get(), nullptr), 0x48090049U);
    EXPECT_EQ(decode_X509_CRL_number(crl.get(), TLX_OID_DELTA_CRL_INDICATOR, &number), 0x48100047U);
    const ASYMMETRIC_KEY odd = {TLX_KEY_ECC, signing_key(0)->key};
    EXPECT_EQ(gen_SIG_X509_CRL(crl.get(), &odd), 0x48070048U);
    EXPECT_EQ(gen_SIG_X509_CRL(Crl(new_X509_CRL()).get(), signing_key(0)), 0x48070049U);
}

TEST_F(RevocationLists, AllocationsMayFail) {
    const Crl indirect = make_crl("+05 +06@Other +06@Root number=01 idp=30{84:FF}");
    const Octets octets = encoding_of(indirect);
    const Name other = name_of("Other");
    const Number serial = number_of("06");
    const Chain chain = valid_chain(2);
    const Cert user = chain[0].make(), root = chain[1].make();
    const Time time = time_of("2024-06-01");
    const Revoked entry = entry_of("07:1");
    const unsigned failures =
        sweep_statuses({0x480B003C, 0x480B0104, 0x48060104, 0x48020104, 0x480A0104, 0x480E0104, 1}, [&] {
            const Crl crl = decoded_list(octets);
            if (crl == nullptr) return 0x48020104U;
            X509_REVOKED *out = nullptr;
            std::uint32_t status = find_X509_CRL_revoked(crl.get(), other.get(), serial.get(), &out);
            const Revoked owner(out);
            if (status != 0) return status;
            if (status = check_X509_CRL_scope(crl.get(), user.get()); status != 0) return status;
            return add_X509_CRL_revoked(crl.get(), entry.get());
        });
    EXPECT_GT(failures, 30U);
    sweep_statuses({0x4807003B, 0x48070103, 1},
                   [&] { return gen_SIG_X509_CRL(indirect.get(), signing_key(0)); });
    expect_making_may_fail([&] { return create_X509_REVOKED(serial.get(), time.get(), 1); },
                           free_X509_REVOKED);
}

/// Two of the threads' searches may both begin to make the index.
TEST_F(RevocationLists, AreSearchedByThreadsAtOnce) {
    const LeakCheck leaks;
    for (int times = 0; times < 20; ++times) {
        const Crl crl = list_of("+01 +02 +03 +04 +05:1 +06 +07 +08 +09");
        const Number serial = number_of("05");
        EXPECT_EQ(
            successes_on_threads(
                4, [&] { return find_X509_CRL_revoked(crl.get(), nullptr, serial.get(), nullptr) == 0; }),
            4U);
    }
}

/// A table that compared all equal ones would take minutes.
TEST_F(RevocationLists, WithEqualSerialNumbersAreSearchedAsFast) {
    const Revoked entry = entry_of("05");
    const Crl crl = make_crl("");
    for (int i = 0; i < 200000; ++i)
        ASSERT_EQ(add_X509_CRL_revoked(crl.get(), entry.get()), 0U);
    EXPECT_EQ(find_X509_CRL_revoked(crl.get(), nullptr, number_of("05").get(), nullptr), 0U);
    EXPECT_EQ(find_X509_CRL_revoked(crl.get(), nullptr, number_of("06").get(), nullptr), 0x480B0047U);
}

TEST_F(RevocationLists, OfOpensslAreReadAndOursByOpensslAndCerttool) {
    const CommandFolder folder;
    folder.run(
        "openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -subj /C=KR/CN=CA -days 2 && "
        "printf '[ca]\\ndatabase=index\\ndefault_md=sha256\\ncrlnumber=number\\ncrl_extensions=e\\n"
        "[e]\\nauthorityKeyIdentifier=keyid\\n' > ca.cnf && echo 0A > number && "
        "printf 'R\\t300101000000Z\\t240203000000Z,keyCompromise\\t05\\tunknown\\t/CN=a\\n"
        "R\\t300101000000Z\\t240204000000Z,keyTime,20240101000000Z\\t0FFF0000000000000001\\tunknown\\t/"
        "CN=b\\n' > index && "
        "openssl ca -config ca.cnf -name ca -gencrl -crldays 2 -keyfile ca.key -cert ca.pem -out ca.crl");
    void *read = nullptr;
    ASSERT_EQ(readPEM_from_File(&read, TLX_DECODER(Seq_to_X509_CRL), folder.path("ca.crl").c_str()), 0U);
    const Crl crl(static_cast<X509_CRL *>(read));
    const OwnedCert ca = certificate_of(read_pem_file(folder.path("ca.pem"))[0]);
    EXPECT_EQ(verify_X509_CRL(crl.get(), ca.get(), nullptr), 0U);
    EXPECT_EQ(get_X509_CRL_version(crl.get()), 1U);
    BIGINT *number = nullptr;
    EXPECT_EQ(decode_X509_CRL_number(crl.get(), TLX_OID_CRL_NUMBER, &number), 0U);
    EXPECT_EQ(get_BIGINT_word(Number(number).get()), 10U);
    X509_REVOKED *out = nullptr;
    EXPECT_EQ(find_X509_CRL_revoked(crl.get(), nullptr, number_of("0FFF0000000000000001").get(), &out), 0U);
    const Revoked suspect(out);
    const Time since(get_X509_REVOKED_invalidityDate(suspect.get()));
    EXPECT_EQ(cmp_ASN1_TIME(since.get(), time_of("2024-01-01").get()), 0);

    EXPECT_EQ(add_X509_CRL_revoked(crl.get(), entry_of("ABCDEF:9").get()), 0U);
    EXPECT_EQ(set_X509_CRL_number(crl.get(), TLX_OID_CRL_NUMBER, number_of("0B").get()), 0U);
    EXPECT_NE(verify_X509_CRL(crl.get(), ca.get(), nullptr), 0U);
    std::uint8_t *tbs = nullptr;
    std::uint32_t length = 0;
    ASSERT_EQ(get_X509_CRL_octets(crl.get(), &tbs, &length), 0U);
    folder.write("tbs", std::string(tbs, tbs + length));
    tlx_free(tbs);
    folder.run("openssl dgst -sha256 -sign ca.key -out signature tbs");
    const std::string signature = folder.read("signature");
    EXPECT_EQ(set_X509_CRL_sig_value(crl.get(), get_X509_SPKI(ca.get()),
                                     reinterpret_cast<const std::uint8_t *>(signature.data()),
                                     static_cast<std::uint32_t>(signature.size())),
              0U);
    const std::string label = "X509 CRL";
    EXPECT_NE(writePEM_to_FILE(crl.get(), TLX_ENCODER(X509_CRL_to_Seq), label.data(),
                               static_cast<std::uint32_t>(label.size()), folder.path("ours.crl").c_str()),
              0xFFFFFFFFU);
    const std::string shown = folder.run("openssl crl -in ours.crl -CAfile ca.pem -noout -text -crlnumber");
    for (const char *part : {"verify OK", "Serial Number: ABCDEF", "Privilege Withdrawn", "crlNumber=0x0B"})
        EXPECT_NE(shown.find(part), shown.npos) << part << "\n" << shown;
    const std::string gnutls = folder.run("certtool --crl-info --infile ours.crl");
    EXPECT_NE(gnutls.find("Revoked certificates (3)"), gnutls.npos) << gnutls;
}

}  // namespace
}  // namespace tlx_test
