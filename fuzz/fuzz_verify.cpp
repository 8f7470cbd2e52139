// Chains of certificates to verify: a first octet of choices, then certificates, each after two octets of
// length. The first is the target, the last an anchor, and the others are intermediates, or revocation lists
// and OCSP responses by the top bits of the length. Seeds are also those of fuzz_path.
#include <tlxpki.h>

#include <span>

#include "../tests/support/held.hpp"
#include "require.hpp"

namespace {

using fuzz::require;
using tlx_test::Held;
using Bytes = std::span<const std::uint8_t>;

constexpr unsigned kList = 1;
constexpr unsigned kResponse = 2;

struct Item {
    unsigned kind = 0;  ///< 0 and 3 are certificates
    Bytes octets;
};

/// Takes the next item; one without octets at the end.
Item next_item(Bytes &rest) {
    if (rest.size() < 2) {
        rest = {};
        return {};
    }
    const std::size_t wanted = std::size_t{rest[0] & 0x3FU} << 8 | rest[1];
    const std::size_t length = std::min<std::size_t>(wanted, rest.size() - 2);
    const Item item = {static_cast<unsigned>(rest[0]) >> 6, rest.subspan(2, length)};
    rest = rest.subspan(2 + length);
    return item;
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
    VERIFY_REVOCATION known;
    for (std::uint32_t i = 0; i < get_VERIFY_RESULT_path_count(result); ++i) {
        require(get_VERIFY_RESULT_revocation(result, i, &known) == 0);
        require(status != 0 || known.state != TLX_REVOCATION_REVOKED);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    Bytes rest(data + 1, size - 1);
    const Held<free_VERIFY_STORE> store(new_VERIFY_STORE());
    const Bytes target = next_item(rest).octets;
    const std::uint32_t accepted = data[0] & 15U;
    while (!rest.empty()) {
        const Item item = next_item(rest);
        const Bytes each = item.octets;
        if (each.empty()) continue;
        if (!rest.empty() && (item.kind == kList || item.kind == kResponse)) {
            const auto add = item.kind == kList ? add_VERIFY_STORE_crl : add_VERIFY_STORE_ocsp;
            static_cast<void>(add(store.get(), each.data(), size_of(each)));
            continue;
        }
        const auto add = rest.empty() ? add_VERIFY_STORE_anchor : add_VERIFY_STORE_certificate;
        static_cast<void>(add(store.get(), each.data(), size_of(each), accepted));
    }
    if (target.empty()) return 0;
    VERIFY_SETTINGS settings = {};
    settings.profile = TLX_PROFILE_ANY;
    settings.accepted_faults = accepted;
    settings.explicit_policy = data[0] >> 4 & 1U;
    settings.purpose = data[0] >> 5;
    settings.host = settings.purpose == TLX_PURPOSE_TLS_SERVER ? "www.example.com" : nullptr;
    const Held<free_ASN1_TIME> time(charToASN1_TIME("2024-05-06,07:08:09"));
    settings.time = time.get();
    VERIFY_RESULT *made = nullptr;
    const std::uint32_t status =
        verify_CERTIFICATE(store.get(), nullptr, target.data(), size_of(target), &settings, &made);
    const Held<free_VERIFY_RESULT> result(made);
    require(made != nullptr);
    require_findings(made, status);
    return 0;
}
