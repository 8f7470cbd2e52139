// The valid-policy tree under certificates and the user's own policies, and its list operations.
#include <gtest/gtest.h>
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/chain_builder.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

const CPV_SETTINGS kExplicit = {nullptr, 0, 255, 3};
const CPV_SETTINGS kNotExplicit = {nullptr, 0, 0, 3};

/// A path whose certificates have these policies, from below the root's down to the target's; "-" means no
/// extension.
Certificates path_of(const std::vector<std::string> &policies) {
    Chain chain = valid_chain(static_cast<unsigned>(policies.size()) + 1);
    for (std::size_t i = 0; i < policies.size(); ++i) {
        CertSpec &spec = chain[policies.size() - 1 - i].without("certificatePolicies");
        if (policies[i] != "-") spec.policies(policies[i]);
    }
    return make(chain);
}

/// The status with an explicit policy, and the tree, which is the same without one.
std::string tree_of(const Row &row) {
    const Certificates path = path_of(split(row[1], ';'));
    const LeakCheck leaks;
    node_LIST *list = nullptr;
    const std::uint32_t status = validate_certpath_ex(path.get(), nullptr, &list, &kExplicit, nullptr);
    const std::string required = text_of_tree(Tree(list).get());
    list = nullptr;
    EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, &list, &kNotExplicit, nullptr), 0U);
    const std::string tree = text_of_tree(Tree(list).get());
    EXPECT_EQ(required, status == 0 ? tree : "null");
    return status_text(status) + " " + tree;
}

std::string user_policies(const Row &row) {
    const Certificates path = path_of(split(row[1], ';'));
    const LeakCheck leaks;
    const Policies user = policy_list(row[2]);
    const Tree tree(new_node_LIST());
    node_LIST *list = tree.get();
    const std::uint32_t status = validate_certpath_ex(path.get(), user.get(), &list, nullptr, nullptr);
    const std::string left = text_of_policies(user.get());
    return status_text(status) + ", " + text_of_tree(tree.get()) + ", left:" + (left.empty() ? "" : " ") +
           left;
}

TEST(PolicyTree, TellsWhichLevelsAreCritical) {
    const char *const edit = "1 certificatePolicies!=30{30{06:2A0301} 30{06:2D}}";
    const Certificates path = make(EditedChain(4, edit).chain);
    node_LIST *list = nullptr;
    EXPECT_EQ(validate_certpath(path.get(), nullptr, &list), 0U);
    EXPECT_EQ(text_of_tree(Tree(list).get()), "0: 2.5.29.32.0; 1: 1.2.3.1; 2: 1.2.3.1!; 3: 1.2.3.1");
}

TEST(PolicyTree, HasSoManyNodesAtMost) {
    // Beside anyPolicy, each level has as many nodes more as a certificate has policies.
    std::string names = "2.5.29.32.0";
    for (int i = 0; i < 1000; ++i)
        names += " 1.2.3." + std::to_string(i);
    for (const std::size_t certificates : {13U, 14U}) {
        const Certificates path = path_of(std::vector<std::string>(certificates, names));
        const LeakCheck leaks;
        node_LIST *list = nullptr;
        std::int32_t stopped_at = 0;
        EXPECT_EQ(validate_certpath_ex(path.get(), nullptr, &list, &kNotExplicit, &stopped_at),
                  certificates == 13 ? 0 : 0x53100047U);
        EXPECT_EQ(stopped_at, certificates == 13 ? -1 : 0);
        free_node_LIST(list);
    }
}

TEST(UserPolicies, MayBeManyAndOfAnyShape) {
    std::string names;
    for (int i = 0; i < 500; ++i)
        names += "1.2.3.4.5.6.7.8.9 ";
    const auto path = path_of({"1.1", "1.1"});
    const LeakCheck leaks;
    const auto user = policy_list(names);
    push_STACK_value(user.get(), nullptr);
    push_STACK_value(user.get(), new_ASN1_STRING());
    node_LIST *list = nullptr;
    EXPECT_EQ(validate_certpath_ex(path.get(), user.get(), &list, &kNotExplicit, nullptr), 0U);
    EXPECT_EQ(text_of_tree(list), "no levels");
    EXPECT_EQ(text_of_policies(user.get()), "");
    free_node_LIST(list);
}

// ---- List operations ----

/// A level of nodes with these policies.
VALID_POLICY_NODES *level_of(const std::string &policies) {
    VALID_POLICY_NODES *nodes = new_VALID_POLICY_NODES();
    for (const std::string &policy : split(policies, ' ')) {
        VALID_POLICY_NODE *node = new_VALID_POLICY_NODE();
        node->data = new_VALID_POLICY_DATA();
        node->data->valid_policy = string_of(TLX_TAG_OBJECT_IDENTIFIER, policy).release();
        node->data->expected_policy_set = policy_list(policy).release();
        node->data->criticality_indicator = 255;
        push_STACK_value(nodes, node);
    }
    return nodes;
}

/// Adds a level; the list keeps a copy.
std::uint32_t add_level(node_LIST *list, const std::string &policies) {
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

/// Steps on a new list, and its levels from the first to the last. "add 3" adds a level of the policy 1.3.
std::string list_after(const Row &row) {
    node_LIST *list = new_node_LIST();
    const std::string results = run_steps(
        row[1], {{"add", [&](const Numbers &n) { return add_level(list, "1." + std::to_string(n[0])); }},
                 {"add-empty", [&](const Numbers &) { return add_level(list, ""); }},
                 {"reverse", [&](const Numbers &) { return list = reverse_node_LIST(list), 0U; }},
                 {"remove", [&](const Numbers &n) { return remove_node_LIST(list, n[0]), 0U; }},
                 {"count", [&](const Numbers &) { return get_count_from_node_LIST(list); }}});
    std::string depths;
    for (const node_LIST *level = list; level != nullptr; level = level->next)
        depths += " " + std::to_string(level->depth) + (level->marker == TLX_NODE_LIST_MARKER ? "" : "?");
    for (const VALID_POLICY_NODE *node : nodes_of(list))
        depths += " " + octets(node->data->valid_policy);
    free_node_LIST(list);
    return results + "," + depths;
}

TEST(Policies, Rows) {
    make(valid_chain(4));  // sets up each key once
    expect_rows("path_policy.txt", {{"tree", {tree_of}}, {"user", {user_policies}}, {"list", {list_after}}});
    EXPECT_EQ(reverse_node_LIST(nullptr), nullptr);
    EXPECT_EQ(get_count_from_node_LIST(nullptr), 0U);
    remove_node_LIST(nullptr, 0);
    free_node_LIST(nullptr);
}

TEST(PolicyTreeList, IsUnchangedWhenALevelCannotBeAdded) {
    const Tree tree(new_node_LIST());
    VALID_POLICY_NODES *nodes = level_of("1.1 1.2");
    for (const char *const before : {"no levels", "0: 1.1"}) {
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
        EXPECT_EQ(add_level(tree.get(), "1.1"), 0U);
    }
    free_VALID_POLICY_NODES(nodes);
}

TEST(PolicyTreeList, KeepsCopiesAndPrintsLevelsThatHaveNodes) {
    const LeakCheck leaks;
    const Tree tree(new_node_LIST());
    VALID_POLICY_NODES *nodes = level_of("1.1 1.2");
    expect_refuses_null(0x530B0049, add_VALID_POLICY_TREE_LIST, tree.get(), nodes);
    for (const char *level : {"1.1", "1.2"})
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
