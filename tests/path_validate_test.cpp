// Validating paths: one row for every step that can fail, and for every surprise that passes.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "support/rows.hpp"
#include "support/x509_files.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kDefaults = {nullptr, 0, 255, 3};

/// "good", or the status and where validation stopped: "53100054 at 0".
std::string validate(const X509_CERTIFICATES *given, const CPV_SETTINGS &settings = kDefaults) {
    const LeakCheck leaks;
    const Certificates path(dup_X509_CERTIFICATES(given));
    std::int32_t stopped_at = -2;
    node_LIST *made = nullptr;
    const std::uint32_t status = validate_certpath_ex(path.get(), nullptr, &made, &settings, &stopped_at);
    const Tree tree(made);
    EXPECT_EQ(made != nullptr, status == 0);
    if (status == 0 && stopped_at == -1) return "good";
    return status_text(status) + " at " + std::to_string(stopped_at);
}
std::string validate(const Chain &chain, const CPV_SETTINGS &settings = kDefaults) {
    return validate(make(chain).get(), settings);
}

TEST(Validation, Rows) {
    validate(EditedChain(4, "* key=4; * signer=4").chain);  // sets up each key once
    expect_rows("path_validate.txt", {{"validate", {[](const Row &row) {
                                           const EditedChain edited(row.number(1), row[2]);
                                           return validate(edited.chain, edited.settings());
                                       }}}});
}

TEST(Validation, TakesAThousandCertificates) {
    const Cert root = valid_chain(1)[0].make();
    const Certificates path(new_X509_CERTIFICATES());
    while (get_X509_CERTIFICATES_count(path.get()) < TLX_CPV_MAX_CERTIFICATES)
        ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "good");
    ASSERT_EQ(add_X509_CERTIFICATES(path.get(), root.get()), 0U);
    EXPECT_EQ(validate(path.get()), "53070047 at -1");
}

TEST(Validation, RefusesWhatIsNoPath) {
    EXPECT_EQ(validate(static_cast<X509_CERTIFICATES *>(nullptr)), "53070049 at -1");
    EXPECT_EQ(validate(Chain()), "5307002B at -1");
    EXPECT_EQ(validate_certpath(nullptr, nullptr, nullptr), 0x53070049U);

    const Certificates path = make(valid_chain(3));
    push_STACK_value(path.get(), new_X509_CERT());
    EXPECT_EQ(validate(path.get()), "53100049 at 3") << "an empty certificate is not self-issued";
    void *empty = remove_STACK_value(path.get(), 3);
    insert_STACK_value(path.get(), empty, 1);
    EXPECT_EQ(validate(path.get()), "53100054 at 1");
    push_STACK_value(path.get(), nullptr);
    EXPECT_EQ(validate(path.get()), "53100049 at 4") << "no certificate at all";
}

TEST(Validation, EmptiesATreeThatItIsGivenAndKeepsWhatItBuilt) {
    Chain chain = valid_chain(3);
    const Certificates good = make(chain);
    chain[0].signer = 3;
    const Certificates bad = make(chain);
    const LeakCheck leaks;
    const Octets before = encoding_of(good.get(), TLX_ENCODER(X509_CERTIFICATES_to_Seq));
    const Tree tree(new_node_LIST());
    node_LIST *list = tree.get();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(validate_certpath(good.get(), nullptr, &list), 0U);
        EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1");
    }
    EXPECT_EQ(validate_certpath(nullptr, nullptr, &list), 0x53070049U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1") << "untouched";
    EXPECT_EQ(validate_certpath(bad.get(), nullptr, &list), 0x53100054U);
    EXPECT_EQ(text_of_tree(tree.get()), "0: 2.5.29.32.0; 1: 1.2.3.1");
    EXPECT_EQ(list, tree.get());
    EXPECT_EQ(encoding_of(good.get(), TLX_ENCODER(X509_CERTIFICATES_to_Seq)), before) << "no change";
}

// ---- Settings ----

/// The settings of the process, which set no time.
std::string settings_text() {
    const ASN1_TIME somewhen = {};
    CPV_SETTINGS settings = {&somewhen, 9, 9, 9};
    get_CPV_SETTINGS(&settings);
    EXPECT_EQ(settings.time, nullptr);
    EXPECT_EQ(settings.initial_any_policy_inhibit, get_initial_any_policy_inhibit());
    EXPECT_EQ(settings.initial_explicit_policy, get_initial_explicit_policy());
    EXPECT_EQ(settings.max_certificatePath_length, get_max_certificatePath_length());
    return std::to_string(settings.initial_any_policy_inhibit) + " " +
           std::to_string(settings.initial_explicit_policy) + " " +
           std::to_string(settings.max_certificatePath_length);
}

TEST(Settings, OfTheProcessAreStoredAsStatedAndUsed) {
    EXPECT_EQ(settings_text(), "0 255 3");
    const Certificates path = make(EditedChain(3, "1 -certificatePolicies").chain);
    std::int32_t stopped_at = 7;
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, &stopped_at), 0x5310011CU);
    EXPECT_EQ(stopped_at, 1);
    set_initial_explicit_policy(0);
    EXPECT_EQ(validate_certpath(path.get(), nullptr, nullptr), 0U);
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, nullptr, nullptr, nullptr), 0U);
    EXPECT_EQ(validate(path.get(), kDefaults), "5310011C at 1") << "settings of one's own";

    set_initial_any_policy_inhibit(7);
    set_initial_policy_mapping_inhibit(1);
    EXPECT_EQ(get_initial_policy_mapping_inhibit(), 0U) << "mappings are not processed";
    for (const std::int32_t refused : {0, -1})
        EXPECT_EQ(set_max_certificatePath_length(refused), 1U);
    EXPECT_EQ(settings_text(), "7 0 3");
    EXPECT_EQ(set_max_certificatePath_length(1), 0U);
    EXPECT_EQ(settings_text(), "7 0 1");
    get_CPV_SETTINGS(nullptr);

    set_initial_any_policy_inhibit(0);
    set_initial_explicit_policy(255);
    EXPECT_EQ(set_max_certificatePath_length(3), 0U);
}

}  // namespace
}  // namespace tlx_test
