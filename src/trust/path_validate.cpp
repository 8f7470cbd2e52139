// Validates a certification path in the order of RFC 5280, section 6.1.
#include <tlxpki/x509_sign.h>

#include "trust/extension.hpp"
#include "trust/policy_tree.hpp"

using namespace tlx;

namespace {

/// The state of one validation (RFC 5280, section 6.1.2), on the stack of the call.
struct State {
    const ASN1_TIME *time;
    GrowingTree policies;
    std::int64_t explicit_policy;
    std::int64_t max_path;
};

bool key_usage_allows_cert_sign(const X509_EXTENSION *key_usage) noexcept {
    constexpr u8 kKeyCertSign = 0x04;
    Bytes bits;  // the unused-bits octet, then the bits
    return read_extension(key_usage, TLX_TAG_BIT_STRING, bits) && bits.size() > 1 &&
           (bits[1] & kKeyCertSign) != 0;
}

/// Reads only cA, without an allocation that could fail and hide a CA.
bool is_ca(const X509_CERT *cert) noexcept {
    Element sequence;
    Element flag;
    return read_extension(find_extension(cert, extension_id::kBasicConstraints), sequence) &&
           Cursor(sequence).next(TLX_TAG_BOOLEAN, flag) && flag.contents.size() == 1 && flag.contents[0] != 0;
}

/// A counter becomes the number when that is above zero and lower.
void lower_to(std::int64_t &counter, const BIGINT *number) noexcept {
    if (number == nullptr) return;
    const std::int64_t value = get_BIGINT_word(number);
    if (value > 0 && value < counter) counter = value;
}

/// Applies policyConstraints. A requireExplicitPolicy that is 0 or cannot be read changes nothing.
u32 apply_policy_constraints(const X509_CERT *cert, State &state) noexcept {
    Element element;
    if (!read_extension(find_extension(cert, extension_id::kPolicyConstraints), element)) return 0;
    const auto constraints = decode_record<POLICY_CONSTRAINTS>(element);
    if (!constraints) return 0x5307003C;  // that decoder fails for nothing else
    lower_to(state.explicit_policy, constraints->requireExplicitPolicy);
    return 0;
}

/// Checks that the basic constraints and key usage of the issuer do not deny that it is a CA.
u32 check_basic_constraints(const X509_CERT *issuer, const X509_CERT *cert) noexcept {
    if (!has_extensions(issuer)) return 0;
    const X509_EXTENSION *extension = find_extension(issuer, extension_id::kBasicConstraints);
    if (extension == nullptr) return 0x5309011B;
    Element element;
    if (!read_extension(extension, element)) return 0x5309000E;
    const auto constraints = decode_record<BASIC_CONSTRAINTS>(element);
    if (!constraints) return 0x5309000E;
    if (constraints->cA == 0) {
        const X509_EXTENSION *key_usage = find_extension(issuer, extension_id::kKeyUsage);
        return key_usage_allows_cert_sign(key_usage) ? 0x5309011B : 0;
    }
    const BIGINT *length = constraints->pathLenConstraint;
    const bool no_ca_below = length != nullptr && is_BIGINT_zero(length) != 0;
    return no_ca_below && is_ca(cert) ? 0x5309011B : 0;
}

u32 check_key_usage(const X509_CERT *issuer) noexcept {
    if (!has_extensions(issuer)) return 0x530A002B;
    const X509_EXTENSION *key_usage = find_extension(issuer, extension_id::kKeyUsage);
    if (key_usage == nullptr) return 0;
    return key_usage_allows_cert_sign(key_usage) ? 0 : 0x530A0118;
}

/// Checks signature, validity, name chaining and policies of a certificate that is not self-issued (6.1.3).
u32 process_certificate(const X509_CERT *cert, const X509_CERT *issuer, u32 position, State &state) noexcept {
    if (issuer == nullptr) return 0x53100049;
    if (verify_SIG_X509_CERT(cert, get_X509_SPKI(issuer)) != 0) return 0x53100054;
    if (const u32 status = verify_X509_validity(cert, state.time); status != 0) return status;
    if (cmp_X509_NAME(get_X509_issuer(cert), get_X509_subject(issuer)) != 0) return 0x53100106;
    if (!has_extensions(cert)) return 0x530A002B;
    const X509_EXTENSION *policies = find_extension(cert, extension_id::kCertificatePolicies);
    if (const u32 status = process_policies(state.policies, position, policies); status != 0) return status;
    return state.explicit_policy < 1 && policies == nullptr ? 0x5310011C : 0;
}

/// Prepares the state for the next certificate (section 6.1.4). A pathLenConstraint above zero does not lower
/// the length that is left. That starts at the maximum path length and stops at 0.
u32 prepare_for_next(const X509_CERT *cert, const X509_CERT *issuer, State &state) noexcept {
    if (state.explicit_policy > 0) --state.explicit_policy;
    if (const u32 status = apply_policy_constraints(cert, state); status != 0) return status;
    if (const u32 status = check_basic_constraints(issuer, cert); status != 0) return status;
    if (state.max_path > 0) --state.max_path;
    return check_key_usage(issuer);
}

/// Checks that a self-issued certificate is signed with its own key, and nothing else.
u32 process_self_issued(const X509_CERT *cert) noexcept {
    return verify_SIG_X509_CERT(cert, get_X509_SPKI(cert));
}

/// Processes every certificate, the anchor's first. `stopped_at` becomes the index of the one at hand.
u32 process_path(const X509_CERTIFICATES *path, State &state, i32 &stopped_at) noexcept {
    const u32 count = get_STACK_count(path);
    const X509_CERT *issuer = nullptr;
    for (u32 position = 0; position < count; ++position) {
        stopped_at = static_cast<i32>(count - 1 - position);
        const auto *cert = static_cast<const X509_CERT *>(get_STACK_value(path, count - 1 - position));
        if (state.max_path < 0) return 0x53070047;
        u32 status = 0;
        if (is_selfSigned(cert) == 0) {
            status = process_self_issued(cert);
        } else {
            status = process_certificate(cert, issuer, position, state);
            if (status == 0) status = prepare_for_next(cert, issuer, state);
        }
        if (status != 0) return status;
        issuer = cert;
    }
    stopped_at = -1;
    return 0;
}

/// Applies the user's policies and checks what is left of the tree (section 6.1.5).
u32 wrap_up(node_LIST **tree, OBJECT_IDENTIFIERS *user, const State &state) noexcept {
    if (user != nullptr) {
        const Intersection intersection = intersect_policies(*tree, user);
        if (intersection == Intersection::no_memory) return 0x5307003C;
        if (intersection == Intersection::accepted_as_it_stands) return 0;
    }
    prune_policy_tree(tree);
    return state.explicit_policy < 1 && get_count_from_node_LIST(*tree) == 0 ? 0x53070119 : 0;
}

u32 validate(const X509_CERTIFICATES *path, OBJECT_IDENTIFIERS *user, node_LIST **tree,
             const CPV_SETTINGS &settings, i32 &stopped_at) noexcept {
    remove_node_LIST(*tree, 0);
    if (!start_policy_tree(*tree)) return 0x5307003C;
    const std::int64_t unset = std::int64_t{get_STACK_count(path)} + 1;
    State state{settings.time,
                {*tree, TLX_CPV_MAX_POLICY_NODES},
                settings.initial_explicit_policy != 0 ? 0 : unset,
                settings.max_certificatePath_length};
    const u32 status = process_path(path, state, stopped_at);
    return status != 0 ? status : wrap_up(tree, user, state);
}

/// Validates into the caller's tree, or into a new one that the caller receives on success.
u32 validate_into(const X509_CERTIFICATES *path, OBJECT_IDENTIFIERS *user, node_LIST **tree,
                  const CPV_SETTINGS *settings, i32 &stopped_at) noexcept {
    if (path == nullptr) return 0x53070049;
    if (get_STACK_count(path) == 0) return 0x5307002B;
    if (get_STACK_count(path) > TLX_CPV_MAX_CERTIFICATES) return 0x53070047;
    CPV_SETTINGS in_force{};
    get_CPV_SETTINGS(&in_force);
    if (settings != nullptr) in_force = *settings;
    if (tree != nullptr && *tree != nullptr) return validate(path, user, tree, in_force, stopped_at);

    node_LIST *made = new_node_LIST();
    if (made == nullptr) return 0x5307003C;
    const u32 status = validate(path, user, &made, in_force, stopped_at);
    if (status == 0 && tree != nullptr) {
        *tree = made;
    } else {
        free_node_LIST(made);
    }
    return status;
}

}  // namespace

extern "C" {

uint32_t validate_certpath(const X509_CERTIFICATES *path, OBJECT_IDENTIFIERS *user_initial_policy_set,
                           node_LIST **tree) {
    return validate_certpath_ex(path, user_initial_policy_set, tree, nullptr, nullptr);
}

uint32_t validate_certpath_ex(const X509_CERTIFICATES *path, OBJECT_IDENTIFIERS *user_initial_policy_set,
                              node_LIST **tree, const CPV_SETTINGS *settings, int32_t *stopped_at) {
    i32 place = -1;
    const u32 status = validate_into(path, user_initial_policy_set, tree, settings, place);
    if (stopped_at != nullptr) *stopped_at = place;
    return status;
}

}  // extern "C"
