// Chains of certificates to verify: a first octet of choices, then certificates, each after two octets of
// length. The first is the target, the last an anchor, and the others are intermediates. Seeds are as those
// of fuzz_path.
#include <tlxpki.h>

#include <span>

#include "../tests/support/held.hpp"
#include "require.hpp"

namespace {

using fuzz::require;
using tlx_test::Held;
using Bytes = std::span<const std::uint8_t>;

/// Takes the next certificate; empty at the end.
Bytes next_certificate(Bytes &rest) {
    if (rest.size() < 2) return rest = {};
    const std::size_t length = std::min<std::size_t>(std::size_t{rest[0]} << 8 | rest[1], rest.size() - 2);
    const Bytes certificate = rest.subspan(2, length);
    rest = rest.subspan(2 + length);
    return certificate;
}

std::uint32_t size_of(Bytes octets) {
    return static_cast<std::uint32_t>(octets.size());
}

/// What was found has its texts, and a place in the path.
void require_findings(const VERIFY_RESULT *result, std::uint32_t status) {
    const std::uint32_t count = get_VERIFY_RESULT_finding_count(result);
    require((count == 0) == (status == 0));
    for (std::uint32_t i = 0; i < count; ++i) {
        VERIFY_FINDING finding;
        require(get_VERIFY_RESULT_finding(result, i, &finding) == 0);
        require(finding.certificate < get_VERIFY_RESULT_path_count(result));
        require(i > 0 || finding.status == status);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    Bytes rest(data + 1, size - 1);
    const Held<free_VERIFY_STORE> store(new_VERIFY_STORE());
    const Bytes target = next_certificate(rest);
    const std::uint32_t accepted = data[0] & 15U;
    while (!rest.empty()) {
        const Bytes each = next_certificate(rest);
        const auto add = rest.empty() ? add_VERIFY_STORE_anchor : add_VERIFY_STORE_certificate;
        if (!each.empty()) static_cast<void>(add(store.get(), each.data(), size_of(each), accepted));
    }
    if (target.empty()) return 0;
    VERIFY_SETTINGS settings = {};
    settings.profile = TLX_PROFILE_ANY;
    settings.accepted_faults = accepted;
    settings.explicit_policy = data[0] >> 4 & 1U;
    settings.purpose = data[0] >> 5;
    settings.host = settings.purpose == TLX_PURPOSE_TLS_SERVER ? "www.example.com" : nullptr;
    VERIFY_RESULT *made = nullptr;
    const std::uint32_t status =
        verify_CERTIFICATE(store.get(), nullptr, target.data(), size_of(target), &settings, &made);
    const Held<free_VERIFY_RESULT> result(made);
    require(made != nullptr);
    require_findings(made, status);
    return 0;
}
