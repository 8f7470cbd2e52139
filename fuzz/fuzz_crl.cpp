// Revocation lists: every entry that can be read is found again, in the list and in one made of its entries;
// and a list is relied on with a certificate, if one follows it.

#include <utility>

#include "../tests/support/held.hpp"
#include "values.hpp"

namespace {

using fuzz::require;
using tlx_test::Held;

using Crl = Held<free_X509_CRL>;
using Revoked = Held<free_X509_REVOKED>;

constexpr std::uint32_t kNone = 0x480B0047;
constexpr std::uint32_t kUnreadableIssuer = 0x480B0104;

bool names_issuers(const X509_REVOKED *revoked) {
    return get_X509_EXTENSION_index_by_OID_index(revoked->extensions, TLX_OID_CERTIFICATE_ISSUER, -1) >= 0;
}

/// Adds each entry to a list of our own, as far as they can be read. Whether all belong to the list's issuer.
bool copy_entries(const X509_CRL *crl, X509_CRL *own) {
    constexpr std::uint32_t kNoMore = 0x480F0047;
    Revoked entry(new_X509_REVOKED());
    X509_REVOKED *out = entry.get();
    std::uint32_t at = 0;
    bool is_direct = true;
    std::uint32_t status = 0;
    while ((status = next_X509_CRL_revoked(crl, &at, &out)) == 0) {
        is_direct = is_direct && !names_issuers(out);
        require(add_X509_CRL_revoked(own, out) == 0);
    }
    return is_direct && status == kNoMore;
}

void expect_found(const X509_CRL *crl, const X509_CRL *within, bool is_direct) {
    X509_REVOKED *out = nullptr;
    for (std::uint32_t at = 0; next_X509_CRL_revoked(crl, &at, &out) == 0;) {
        const std::uint32_t status = find_X509_CRL_revoked(within, nullptr, out->serialNumber, nullptr);
        require(status == 0 || (!is_direct && (status == kNone || status == kUnreadableIssuer)));
        free_X509_REVOKED(std::exchange(out, nullptr));
        if (status == kUnreadableIssuer) break;
    }
    free_X509_REVOKED(out);
}

void rely(const X509_CRL *crl, const std::uint8_t *octets, std::uint32_t size) {
    void *made = nullptr;
    if (readDER_from_Buffer(&made, TLX_DECODER(Seq_to_X509_CERT), octets, size) != 0) return;
    const Held<free_X509_CERT> cert(static_cast<X509_CERT *>(made));
    (void)verify_X509_CRL(crl, cert.get(), nullptr);
    X509_REVOKED *out = nullptr;
    const std::uint32_t status = find_X509_CRL_revoked_by_X509_CERT(crl, crl, cert.get(), &out);
    require((status == 0) == (out != nullptr));
    free_X509_REVOKED(out);
    (void)check_X509_CRL_delta(crl, crl);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    void *made = nullptr;
    const auto length = static_cast<std::uint32_t>(size);
    if (readDER_from_Buffer(&made, TLX_DECODER(Seq_to_X509_CRL), data, length) != 0) return 0;
    const Crl crl(static_cast<X509_CRL *>(made));
    std::uint8_t *received = nullptr;
    const std::uint32_t received_size = get_X509_CRL_received(crl.get(), &received);
    require(received_size > 0 && received_size <= size);
    require(fuzz::taken(received, received_size) ==
            std::string(reinterpret_cast<const char *>(data), received_size));

    const Crl own(new_X509_CRL());
    require(set_X509_CRL_issuer(own.get(), get_X509_CRL_issuer(crl.get())) == 0);
    const bool is_direct = copy_entries(crl.get(), own.get());
    require(!is_direct || get_X509_CRL_count(own.get()) == get_X509_CRL_count(crl.get()));
    expect_found(own.get(), crl.get(), is_direct);
    expect_found(own.get(), own.get(), is_direct);
    rely(crl.get(), data + received_size, length - received_size);
    return 0;
}
