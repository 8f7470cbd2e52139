// The message authentication code of PKCS #12 files.
#include <tlxpki.h>

#include "support/allocation.hpp"
#include "support/der_text.hpp"
#include "support/null_arguments.hpp"
#include "support/rows.hpp"

namespace tlx_test {
namespace {

using Pkcs12Mac = LeakFreeTest;
using Pfx = Held<free_P12_PFX>;

constexpr char kContent[] = "30{06:2A864886F70D010701 A0{04:3000}}";

/// A file around a content and MAC data, which may be empty.
Pfx pfx_of(const std::string &content, const std::string &mac_data) {
    P12_PFX *pfx = nullptr;
    Seq_to_P12_PFX(der_node("30{02:03 " + (content.empty() ? kContent : content) + mac_data + "}").get(),
                   &pfx);
    return Pfx(pfx);
}

std::string text_of(const P12_MAC_DATA *data) {
    ASN1_UNIT *node = nullptr;
    if (P12_MAC_DATA_to_Seq(data, &node) != 0) return "none";
    return hex_of(Node(node).get());
}

/// A salt that the call takes over; null for "random".
std::uint8_t *new_salt(const std::string &digits) {
    const Octets octets = hex(digits == "random" ? "" : digits);
    auto *salt =
        static_cast<std::uint8_t *>(octets.empty() ? nullptr : tlx_malloc(octets.size(), __FILE__, __LINE__));
    for (std::size_t i = 0; salt != nullptr && i < octets.size(); ++i)
        salt[i] = octets[i];
    return salt;
}

// set | password | salt | its length | iterations | digest | content | MAC data before | status and MAC data
std::string set(const Row &row) {
    const Pfx pfx = pfx_of(row[6], row[7]);
    if (pfx == nullptr) return "no file";
    std::uint8_t *const salt = new_salt(row[2]);
    if (salt == nullptr && row[2] != "random") return "no salt";
    const auto length = static_cast<std::uint32_t>(row[1].size());
    const std::uint32_t status =
        set_PKCS12_mac(pfx.get(), row[1].data(), length, salt, row.number(3), row.number(4), row.number(5));
    if (!row[7].empty()) tlx_free(salt);
    tlx_fail_allocation(0);
    if (status != 0) return status_text(status);
    EXPECT_EQ(verify_PKCS12_mac(pfx.get(), row[1].data(), length), 0U);
    EXPECT_EQ(verify_PKCS12_mac(pfx.get(), "wrong", 5), 0xFFFFFFFFU);
    if (row[2] == "random") return std::to_string(pfx->macData->macSalt->length) + " octets of salt";
    return text_of(pfx->macData);
}

// verify | password | content | MAC data | status
std::string verify(const Row &row) {
    const Pfx pfx = pfx_of(row[2], row[3]);
    const bool absent = row[1] == "null";
    return status_text(verify_PKCS12_mac(pfx.get(), absent ? nullptr : row[1].data(),
                                         static_cast<std::uint32_t>(row[1].size())));
}

TEST_F(Pkcs12Mac, Rows) {
    expect_rows("pkcs12_mac.txt",
                {{"set", {set, {"no file", "no salt", "none", "empty", "4D10000D", "4D10000E"}}},
                 {"verify", {verify, {"00000001"}}}});
}

}  // namespace
}  // namespace tlx_test
