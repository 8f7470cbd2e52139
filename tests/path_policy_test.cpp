// The valid-policy tree under certificates and the user's own policies, and its list operations.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"

namespace tlx_test {
namespace {

constexpr const char *kAny = kAnyPolicy;
constexpr const char *kNoTree = "no levels";

const CPV_SETTINGS kExplicit = {nullptr, 0, 255, 3};
const CPV_SETTINGS kNotExplicit = {nullptr, 0, 0, 3};

using PolicyNames = std::vector<const char *>;

/// A path whose certificates have these policies, from below the root's down to the target; an empty list
/// means no extension.
Certificates path_of(const std::vector<PolicyNames> &policies) {
    Chain chain = valid_chain(static_cast<unsigned>(policies.size()) + 1);
    for (std::size_t i = 0; i < policies.size(); ++i) {
        CertSpec &spec = chain[policies.size() - 1 - i].without(extension::kPolicies);
        if (!policies[i].empty()) spec.policies(policies[i]);
    }
    return make(chain);
}

// ---- What the certificates say ----

TEST(PolicyTree, IsThatOfTheCertificates) {
    const struct {
        const char *what;
        std::vector<PolicyNames> policies;
        const char *levels;    // below the root's; null for no tree
        std::uint32_t status;  // when an explicit policy is required
    } cases[] = {
        {"the root alone", {}, "", 0},
        {"the same everywhere", {{"1.1"}, {"1.1"}}, "; 1: 1.1; 2: 1.1", 0},
        {"one of two goes on", {{"1.1", "1.2"}, {"1.2"}}, "; 1: 1.2; 2: 1.2", 0},
        {"in their order", {{"1.2", "1.1"}, {"1.1", "1.2"}}, "; 1: 1.2 1.1; 2: 1.2 1.1", 0},
        {"nothing in common", {{"1.1"}, {"1.2"}}, nullptr, 0x53070119},
        {"lost on the way", {{"1.1", "1.2"}, {"1.3"}, {"1.1"}}, nullptr, 0x53070119},
        {"lost in between", {{"1.1"}, {"1.2"}, {"1.1"}, {"1.1"}}, nullptr, 0x53070119},
        {"any policy above", {{kAny}, {"1.1"}}, "; 1: 2.5.29.32.0; 2: 1.1", 0},
        {"any policy below a certain one", {{"1.1"}, {kAny}}, nullptr, 0x53070119},
        {"two parents", {{kAny, "1.1"}, {"1.1"}}, "; 1: 2.5.29.32.0 1.1; 2: 1.1 1.1", 0},
        {"any policy all along",
         {{kAny}, {kAny, "1.1"}, {kAny}},
         "; 1: 2.5.29.32.0; 2: 2.5.29.32.0; 3: 2.5.29.32.0",
         0},
        {"twice", {{"1.1", "1.1"}, {"1.1", "1.2", "1.1"}}, "; 1: 1.1; 2: 1.1", 0},
        {"three levels", {{"1.1", "1.3"}, {kAny, "1.3"}, {"1.3", "1.2"}}, "; 1: 1.3; 2: 1.3; 3: 1.3", 0},
        {"texts that begin alike", {{"1.1", "1.11"}, {"1.11"}}, "; 1: 1.11; 2: 1.11", 0},
        {"a target without policies", {{"1.1"}, {}}, nullptr, 0x5310011C},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.what);
        const Certificates path = path_of(each.policies);
        const LeakCheck leaks;
        const std::string tree =
            each.levels == nullptr ? kNoTree : std::string("0: 2.5.29.32.0") + each.levels;
        node_LIST *list = nullptr;
        EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, &list, &kExplicit, nullptr), each.status);
        EXPECT_EQ(text_of_tree(Tree(list).get()), each.status == 0 ? tree : "null");
        list = nullptr;
        EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, &list, &kNotExplicit, nullptr), 0U);
        EXPECT_EQ(text_of_tree(Tree(list).get()), tree);
    }
}

TEST(PolicyTree, TellsWhichLevelsAreCritical) {
    Chain chain = valid_chain(4);
    chain[1].policies({kPolicy, "1.5"}, true);
    chain[0].policies({kPolicy});
    const auto path = make(chain);
    node_LIST *list = nullptr;
    EXPECT_EQ(validate_certpath(path.get(), nullptr, &list), 0U);
    EXPECT_EQ(text_of_tree(list), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1!; 3: 1.2.3.1");
    free_node_LIST(list);
}

TEST(PolicyTree, TakesEachPolicyOfACertificateOnce) {
    // Without a set, each level would multiply the nodes by the number of repetitions.
    const PolicyNames repeated(50, "1.1");
    PolicyNames with_any(50, kAny);
    with_any.push_back("1.1");
    const auto path = path_of({with_any, with_any, with_any, repeated});
    node_LIST *list = nullptr;
    EXPECT_EQ(validate_certpath(path.get(), nullptr, &list), 0U);
    EXPECT_EQ(text_of_tree(list),
              "0: 2.5.29.32.0; 1: 2.5.29.32.0 1.1; 2: 2.5.29.32.0 1.1 1.1; 3: 2.5.29.32.0 1.1 1.1 1.1; "
              "4: 1.1 1.1 1.1 1.1");
    free_node_LIST(list);
}

TEST(PolicyTree, HasSoManyNodesAtMost) {
    // Beside anyPolicy, each level has as many nodes more as a certificate has policies.
    std::vector<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.push_back("1.2.3." + std::to_string(i));
    PolicyNames names = {kAny};
    for (const std::string &text : texts)
        names.push_back(text.c_str());
    const struct {
        std::size_t certificates;
        std::uint32_t status;
        std::int32_t stopped_at;
    } cases[] = {{13, 0, -1}, {14, 0x53100047, 0}};
    for (const auto &c : cases) {
        const Certificates path = path_of(std::vector<PolicyNames>(c.certificates, names));
        const LeakCheck leaks;
        node_LIST *list = nullptr;
        std::int32_t stopped_at = 0;
        EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, &list, &kNotExplicit, &stopped_at), c.status);
        EXPECT_EQ(stopped_at, c.stopped_at);
        free_node_LIST(list);
    }
}

// ---- What the user accepts ----

TEST(UserPolicies, AreConsumedAsFarAsTheyAreCompared) {
    const std::vector<PolicyNames> two = {{"1.1", "1.2"}, {"1.1", "1.2"}};
    const std::vector<PolicyNames> three = {{"1.1", "1.2", "1.3"}, {"1.1", "1.2", "1.3"}};
    const std::vector<PolicyNames> any = {{kAny}, {kAny}};
    const std::vector<PolicyNames> none = {{}, {}};
    const std::vector<PolicyNames> lost = {{"1.1"}, {"1.2"}};
    const std::vector<PolicyNames> late = {{"1.1", "1.2", "1.3"}, {"1.3"}};
    const char *const all_of_two = "0: 2.5.29.32.0; 1: 1.1 1.2; 2: 1.1 1.2";
    const struct {
        const char *what;
        std::vector<PolicyNames> policies;
        PolicyNames user;
        std::uint32_t status;
        const char *tree, *left;
    } cases[] = {
        {"the last is accepted", two, {"1.2"}, 0, "0: 2.5.29.32.0; 1: 1.2; 2: 1.2", ""},
        {"all that follow one that is kept are kept", two, {"1.1"}, 0, all_of_two, ""},
        {"from the second on", three, {"1.2"}, 0, "0: 2.5.29.32.0; 1: 1.2 1.3; 2: 1.2 1.3", ""},
        {"several", three, {"1.9", "1.3", "1.9"}, 0, "0: 2.5.29.32.0; 1: 1.3; 2: 1.3", ""},
        {"none is accepted", two, {"1.9"}, 0x53070119, kNoTree, ""},
        {"an empty set accepts none", two, {}, 0x53070119, kNoTree, ""},
        {"any policy accepts all", two, {kAny}, 0, all_of_two, "2.5.29.32.0"},
        {"what comes before it is compared", two, {"1.9", kAny, "1.2"}, 0, all_of_two, "2.5.29.32.0 1.2"},
        // 1.2 has no children, but comes after 1.1, which was removed.
        {"the tree as it stands", late, {kAny}, 0, "0: 2.5.29.32.0; 1: 1.2 1.3; 2: 1.3", "2.5.29.32.0"},
        {"any policy of the certificates is not the user's", any, {"1.1"}, 0x53070119, kNoTree, ""},
        {"the root alone", {}, {"1.1"}, 0x53070119, kNoTree, ""},
        {"the root alone, and any policy", {}, {kAny}, 0, "0: 2.5.29.32.0", "2.5.29.32.0"},
        {"nothing to compare", lost, {"1.1", kAny}, 0x53070119, kNoTree, "1.1 2.5.29.32.0"},
        {"validation failed before", none, {"1.1"}, 0x5310011C, "0: null; 1: null", "1.1"},
    };
    for (const auto &each : cases) {
        SCOPED_TRACE(each.what);
        const Certificates path = path_of(each.policies);
        const LeakCheck leaks;
        const Policies user = policy_list(each.user);
        const Tree tree(new_node_LIST());
        node_LIST *list = tree.get();
        EXPECT_EQ(validate_certpath_ex(path.get(), user.get(), &list, nullptr, nullptr), each.status);
        EXPECT_EQ(text_of_tree(tree.get()), each.tree);
        EXPECT_EQ(text_of_policies(user.get()), each.left);
    }
}

TEST(UserPolicies, MayBeManyAndOfAnyShape) {
    PolicyNames names;
    for (int i = 0; i < 500; ++i)
        names.push_back("1.2.3.4.5.6.7.8.9");
    const auto path = path_of({{"1.1"}, {"1.1"}});
    const LeakCheck leaks;
    const auto user = policy_list(names);
    push_STACK_value(user.get(), nullptr);
    push_STACK_value(user.get(), new_ASN1_STRING());
    node_LIST *list = nullptr;
    EXPECT_EQ(validate_certpath_ex(path.get(), user.get(), &list, &kNotExplicit, nullptr), 0U);
    EXPECT_EQ(text_of_tree(list), kNoTree);
    EXPECT_EQ(text_of_policies(user.get()), "");
    free_node_LIST(list);
}

// ---- List operations ----

/// A level of nodes with these policies.
VALID_POLICY_NODES *level_of(const PolicyNames &policies) {
    VALID_POLICY_NODES *nodes = new_VALID_POLICY_NODES();
    for (const char *policy : policies) {
        VALID_POLICY_NODE *node = new_VALID_POLICY_NODE();
        node->data = new_VALID_POLICY_DATA();
        node->data->valid_policy = string_of(TLX_TAG_OBJECT_IDENTIFIER, policy).release();
        node->data->expected_policy_set = policy_list({policy}).release();
        node->data->criticality_indicator = 255;
        push_STACK_value(nodes, node);
    }
    return nodes;
}

/// Adds a level; the list keeps a copy.
std::uint32_t add_level(node_LIST *list, const PolicyNames &policies) {
    VALID_POLICY_NODES *nodes = level_of(policies);
    const std::uint32_t status = add_VALID_POLICY_TREE_LIST(list, nodes);
    free_VALID_POLICY_NODES(nodes);
    return status;
}

std::string printed(const node_LIST *list) {
    testing::internal::CaptureStdout();
    print_VALID_POLICY_TREE_LIST(list);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string depths_of(const node_LIST *list) {
    std::string depths;
    for (; list != nullptr; list = list->next)
        depths += std::to_string(list->depth) + (list->marker == TLX_NODE_LIST_MARKER ? " " : "? ");
    return depths;
}

TEST(PolicyTreeList, AddsReversesRemovesAndCounts) {
    const LeakCheck leaks;
    node_LIST *list = new_node_LIST();
    EXPECT_EQ(depths_of(list), "-1? ");
    EXPECT_EQ(get_count_from_node_LIST(list), 0U);
    for (const char *policy : {"1.1", "1.2", "1.3", "1.4"})
        EXPECT_EQ(add_level(list, {policy}), 0U);
    EXPECT_EQ(depths_of(list), "0 1 2 3 ");
    EXPECT_EQ(get_count_from_node_LIST(list), 4U);
    list = reverse_node_LIST(list);
    EXPECT_EQ(depths_of(list), "3 2 1 0 ");
    list = reverse_node_LIST(list);
    remove_node_LIST(list, 9);
    remove_node_LIST(list, 4);
    EXPECT_EQ(depths_of(list), "0 1 2 3 ");
    remove_node_LIST(list, 3);
    EXPECT_EQ(depths_of(list), "0 1 2 ");
    remove_node_LIST(list, 1);
    EXPECT_EQ(depths_of(list), "0 ");
    EXPECT_EQ(add_level(list, {}), 0U);
    EXPECT_EQ(depths_of(list), "0 1 ");
    remove_node_LIST(list, 0);
    EXPECT_EQ(text_of_tree(list), kNoTree);
    EXPECT_EQ(add_level(list, {"1.5"}), 0U) << "it is as new";
    EXPECT_EQ(text_of_tree(list), "0: 1.5");
    free_node_LIST(list);

    EXPECT_EQ(reverse_node_LIST(nullptr), nullptr);
    remove_node_LIST(nullptr, 0);
    EXPECT_EQ(get_count_from_node_LIST(nullptr), 0U);
    free_node_LIST(nullptr);
}

TEST(PolicyTreeList, IsUnchangedWhenALevelCannotBeAdded) {
    const Tree tree(new_node_LIST());
    VALID_POLICY_NODES *nodes = level_of({"1.1", "1.2"});
    for (const char *const before : {kNoTree, "0: 1.1"}) {
        const std::uint32_t count = get_count_from_node_LIST(tree.get());
        const unsigned failures = sweep_failing_allocations([&] {
            const std::uint32_t status = add_VALID_POLICY_TREE_LIST(tree.get(), nodes);
            if (status == 0) {
                remove_node_LIST(tree.get(), count);
                return true;
            }
            EXPECT_EQ(status, 0x530B003CU);
            EXPECT_EQ(text_of_tree(tree.get()), before);
            return false;
        });
        EXPECT_GT(failures, 10U);
        EXPECT_EQ(add_level(tree.get(), {"1.1"}), 0U);
    }
    free_VALID_POLICY_NODES(nodes);
}

TEST(PolicyTreeList, KeepsCopiesAndPrintsLevelsThatHaveNodes) {
    const LeakCheck leaks;
    const Tree tree(new_node_LIST());
    VALID_POLICY_NODES *nodes = level_of({"1.1", "1.2"});
    EXPECT_EQ(add_VALID_POLICY_TREE_LIST(nullptr, nodes), 0x530B0049U);
    EXPECT_EQ(add_VALID_POLICY_TREE_LIST(tree.get(), nullptr), 0x530B0049U);
    for (const PolicyNames &level : {PolicyNames{"1.1"}, PolicyNames{"1.2"}})
        EXPECT_EQ(add_level(tree.get(), level), 0U);
    EXPECT_EQ(nodes_of(tree->next)[0]->data->criticality_indicator, 255U);
    push_STACK_value(nodes, new_VALID_POLICY_NODE());  // without data
    EXPECT_EQ(add_VALID_POLICY_TREE_LIST(tree.get(), nodes), 0U);
    free_VALID_POLICY_NODES(nodes);
    free_VALID_POLICY_NODES(std::exchange(tree->next->nodes, nullptr));
    EXPECT_EQ(printed(tree.get()),
              "[depth = 0] -----------------------\n"
              "[0] Valid Policy : 1.1\n"
              "[depth = 2] -----------------------\n"
              "[0] Valid Policy : 1.1\n"
              "[1] Valid Policy : 1.2\n"
              "[2] Valid Policy : \n");
    tree->marker = 63;
    EXPECT_EQ(printed(tree.get()), "") << "a head that is no level";
    EXPECT_EQ(printed(nullptr), "");
}

}  // namespace
}  // namespace tlx_test
