// Revocation in the verification by RFC 5280: lists, responses and the callback, a row for each rule.

#include <tlxpki/ocsp.h>
#include <tlxpki/ocsp_respond.h>

#include "support/allocation.hpp"
#include "support/crl_builder.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"
#include "support/signers.hpp"
#include "support/threads.hpp"
#include "support/verify_support.hpp"
#include "support/x509_files.hpp"
#include "support/x509_records.hpp"

namespace tlx_test {
namespace {

constexpr char kNow[] = "2024-05-06,07:08:09";

/// The words of an answer, "name=value". "_" stands for a space.
class Words {
  public:
    explicit Words(const std::string &text) {
        for (std::string word : split(text, ' ')) {
            std::replace(word.begin(), word.end(), '_', ' ');
            const std::size_t equals = std::min(word.find('='), word.size());
            values_[word.substr(0, equals)] = word.substr(std::min(equals + 1, word.size()));
        }
    }
    std::string operator()(const char *name, const std::string &fallback) const {
        return values_.contains(name) ? values_.at(name) : fallback;
    }
    std::uint32_t number(const char *name) const {
        return static_cast<std::uint32_t>(std::stoul((*this)(name, "0")));
    }

  private:
    std::map<std::string, std::string> values_;
};

String midnight(const std::string &day) {
    std::string digits = day;
    std::erase(digits, '-');
    return string_of(TLX_TAG_GENERALIZED_TIME, digits + "000000Z");
}

/// A response by words: "about=" a place in the chain, below which stands "of=" the CA, "status=", "by="
/// edits of a delegate of the first CA instead of that CA, "key=" another key to sign with, "id=" the type of
/// the responder ID, "from=", "until=", "digest=", and "bare" for one without certificates.
Octets make_response(const Chain &chain, const std::string &text) {
    const Words words(text);
    const Cert about = chain.at(words.number("about")).make();
    const Cert issuer = chain.at(words.number("about") + 1 + words.number("of")).make();
    CertSpec signer = chain.at(words.number("about") + 1);
    if (const std::string edits = words("by", "none"); edits != "none") {
        signer = EditedChain(3,
                             "0 subject=Responder; 0 key=3; 0 serial=77; 0 keyUsage!=03:0780; "
                             "0 extendedKeyUsage=30{06:2B06010505070309}; " +
                                 edits)
                     .chain[0];
    }
    const Cert responder = signer.make();
    OCSP_RESPONSE_DATA *data = nullptr;
    EXPECT_EQ(generate_OCSP_RESPONSE_DATA(&data, responder.get(), words.number("id"), 0, nullptr, 0), 0U);
    OCSP_CERT_ID *id = nullptr;
    const std::uint32_t digest = words("digest", "1") == "1" ? TLX_DIGEST_SHA1 : TLX_DIGEST_SHA256;
    EXPECT_EQ(generate_OCSP_CERT_ID(&id, about.get(), issuer.get(), digest), 0U);
    const Held<free_OCSP_CERT_ID> owner(id);
    const Held<free_OCSP_REVOKED_INFO> info(
        decoded(Seq_to_OCSP_REVOKED_INFO, "30{18:32303234303230333034303530365A A0{0A:04}}"));
    const std::string until = words("until", "2024-12-31");
    EXPECT_EQ(add_single_OCSP_RESPONSE(data, &id, words.number("status"), info.get(),
                                       midnight(words("from", "2024-05-06")).get(),
                                       until == "none" ? nullptr : midnight(until).get()),
              0U);
    const auto key = private_key(words("key", "-") == "-" ? signer.key : words.number("key"));
    BASIC_OCSP_RESPONSE *basic = nullptr;
    EXPECT_EQ(generate_BASIC_OCSP_RESPONSE_ex(&basic, data, responder.get(), key.get(), TLX_DIGEST_SHA256),
              0U);
    const Held<free_BASIC_OCSP_RESPONSE> made(basic);
    if (words("bare", "no") != "no") {
        free_X509_CERTIFICATES(basic->certs);
        basic->certs = nullptr;
    }
    return encoding_of(basic, TLX_ENCODER(BASIC_OCSP_RESPONSE_to_Seq));
}

/// Adds "crl WORDS", "ocsp WORDS" and "cert EDITS" of the first certificate of a chain of three.
void add_items(VERIFY_STORE *store, const Chain &chain, const std::string &items) {
    for (const std::string &item : split(items, '&')) {
        const std::string kind = item.substr(0, item.find(' '));
        const std::string words = item.substr(std::min(kind.size() + 1, item.size()));
        Octets octets;
        if (kind == "cert") {
            add(store, EditedChain(3, words).chain[0]);
        } else if (kind == "crl") {
            octets = encoding_of(make_crl(words).get(), TLX_ENCODER(X509_CRL_to_Seq));
            EXPECT_EQ(add_VERIFY_STORE_crl(store, octets.data(), size_of(octets)), 0U) << item;
        } else {
            octets = make_response(chain, words);
            EXPECT_EQ(add_VERIFY_STORE_ocsp(store, octets.data(), size_of(octets)), 0U) << item;
        }
    }
}

/// What is known of each certificate, the target first.
std::string states_of(const VERIFY_RESULT *result) {
    static const char *const kStates[] = {"-", "good", "revoked", "open", "exempt"};
    static const char *const kSources[] = {"", " crl", " ocsp"};
    std::string text;
    VERIFY_REVOCATION known;
    for (std::uint32_t i = get_VERIFY_RESULT_path_count(result); i-- > 0;) {
        EXPECT_EQ(get_VERIFY_RESULT_revocation(result, i, &known), 0U);
        EXPECT_EQ(known.text != nullptr, known.status != 0);
        text += (text.empty() ? "" : ", ") + std::string(kStates[known.state]) + kSources[known.source];
        if (known.state == TLX_REVOCATION_REVOKED) text += " " + std::to_string(known.reason);
        if (known.status != 0) text += " " + status_text(known.status).substr(4);
    }
    return text;
}

std::string verify(const VERIFY_STORE *store, const Octets &target, const VERIFY_SETTINGS &settings) {
    VERIFY_RESULT *made = nullptr;
    (void)verify_CERTIFICATE(store, nullptr, target.data(), size_of(target), &settings, &made);
    const Result result(made);
    return text_of(made) + " (" + states_of(made) + ")";
}

VERIFY_SETTINGS settings_of(const EditedChain &edited) {
    const auto number = [&edited](const char *name) {
        return edited.values.contains(name) ? static_cast<std::uint32_t>(std::stoul(edited.values.at(name)))
                                            : 0;
    };
    VERIFY_SETTINGS settings = {};
    settings.time = edited.time.get();
    settings.profile = edited.values.contains("profile") ? number("profile") : TLX_PROFILE_KOREAN_LEGACY;
    settings.revocation = number("mode");
    settings.response_age = number("age");
    settings.budget.candidates = number("candidates");
    settings.budget.signatures = number("signatures");
    return settings;
}

std::string revocation(const Row &row) {
    const EditedChain edited(row.number(1), std::string("time=") + kNow + "; " + row[2]);
    const Store store = store_of(edited.chain);
    add_items(store.get(), edited.chain, row[3]);
    return verify(store.get(), encode_certificate(edited.chain[0].make().get()), settings_of(edited));
}

/// What the callback is asked for, and what it adds.
struct Peer {
    std::string asked;
    std::map<std::uint32_t, std::string> items;
    Chain chain;
};

std::uint32_t fetch(void *context, const VERIFY_REQUEST *request, VERIFY_STORE *fetched) {
    auto &peer = *static_cast<Peer *>(context);
    peer.asked += std::to_string(request->kind) + " " + request->urls[0] + " of " +
                  std::to_string(request->url_count) + (request->issuer == nullptr ? "" : " below") + "; ";
    const std::string &items = peer.items[request->kind];
    if (items == "end") return 1;
    if (items == "issuer") add(fetched, peer.chain[1]);
    if (items != "issuer") add_items(fetched, peer.chain, items);
    return 0;
}

/// Edits, what the callback gives for issuers, lists and responses; what it was asked for, and the verdict.
std::string fetched(const Row &row) {
    const EditedChain edited(3, std::string("time=") + kNow + "; " + row[1]);
    Peer peer = {"", {{1, row[2]}, {2, row[3]}, {3, row[4]}}, edited.chain};
    const Store store = store_of({edited.chain[0], edited.chain[2]});
    if (row[2].empty()) add(store.get(), edited.chain[1]);
    VERIFY_SETTINGS settings = settings_of(edited);
    settings.fetch = fetch;
    settings.fetch_context = &peer;
    if (edited.values.contains("fetches")) settings.budget.fetches = 1;
    const std::string verdict =
        verify(store.get(), encode_certificate(edited.chain[0].make().get()), settings);
    return peer.asked + verdict;
}

/// Octets that are no list, or no response.
std::string refused(const Row &row) {
    const Store store(new_VERIFY_STORE());
    const Octets octets = der(row[2]);
    const auto add_to = row[1] == "crl" ? add_VERIFY_STORE_crl : add_VERIFY_STORE_ocsp;
    return status_text(add_to(store.get(), octets.data(), size_of(octets)));
}

class VerifyRevocation : public LeakFreeTest {
  protected:
    static void SetUpTestSuite() { make_signing_keys(); }
};

TEST_F(VerifyRevocation, EveryAllocationMayFail) {
    const EditedChain edited(3, std::string("time=") + kNow + "; mode=4");
    const Octets target = encode_certificate(edited.chain[0].make().get());
    const Octets list =
        encoding_of(make_crl("number=01 idp=30{84:FF} +05@Other").get(), TLX_ENCODER(X509_CRL_to_Seq));
    const Octets delta =
        encoding_of(make_crl("number=02 delta=01 idp=30{84:FF}").get(), TLX_ENCODER(X509_CRL_to_Seq));
    const Octets response = make_response(edited.chain, "by=0_signer=1");
    const Octets root = encode_certificate(edited.chain[2].make().get());
    const Octets ca = encode_certificate(edited.chain[1].make().get());
    const VERIFY_SETTINGS settings = settings_of(edited);
    const unsigned failures = sweep_failing_allocations([&] {
        const Store store(new_VERIFY_STORE());
        VERIFY_STORE *to = store.get();
        return to != nullptr && add_VERIFY_STORE_anchor(to, root.data(), size_of(root), 0) == 0 &&
               add_VERIFY_STORE_certificate(to, ca.data(), size_of(ca), 0) == 0 &&
               add_VERIFY_STORE_crl(to, list.data(), size_of(list)) == 0 &&
               add_VERIFY_STORE_crl(to, delta.data(), size_of(delta)) == 0 &&
               add_VERIFY_STORE_ocsp(to, response.data(), size_of(response)) == 0 &&
               verify_CERTIFICATE(to, nullptr, target.data(), size_of(target), &settings, nullptr) == 0;
    });
    EXPECT_GT(failures, 40U);
    const Store store(new_VERIFY_STORE());
    VERIFY_REVOCATION known;
    expect_refuses_null<std::uint32_t>(0x550B0049, add_VERIFY_STORE_crl, store.get(), list.data(), 1);
    expect_refuses_null<std::uint32_t>(0x550C0049, add_VERIFY_STORE_ocsp, store.get(), list.data(), 1);
    EXPECT_EQ(get_VERIFY_RESULT_revocation(nullptr, 0, &known), 1U);
}

TEST_F(VerifyRevocation, OneListServesManyThreads) {
    const EditedChain edited(2, std::string("time=") + kNow + "; mode=4");
    const Store store = store_of(edited.chain);
    add_items(store.get(), edited.chain, "crl +05 & ocsp");
    const Octets target = encode_certificate(edited.chain[0].make().get());
    const VERIFY_SETTINGS settings = settings_of(edited);
    const auto work = [&] {
        return verify(store.get(), target, settings) == "valid (good ocsp, -)" &&
               verify(store.get(), target, settings) == "valid (good ocsp, -)";
    };
    EXPECT_EQ(successes_on_threads(4, work), 4U);
}

TEST_F(VerifyRevocation, Rows) {
    expect_rows("verify_revocation.txt",
                {{"revocation", {revocation}}, {"fetched", {fetched}}, {"refused", {refused}}});
}

}  // namespace
}  // namespace tlx_test
