#include "support/openssl_peer.hpp"

#include <openssl/evp.h>
#include <openssl/objects.h>

namespace tlx_test::openssl {

std::vector<std::uint8_t> digest(const std::string &name, const std::vector<std::uint8_t> &data) {
    std::vector<std::uint8_t> out(EVP_MAX_MD_SIZE);
    std::size_t len = 0;
    if (EVP_Q_digest(nullptr, name.c_str(), nullptr, data.data(), data.size(), out.data(), &len) != 1) return {};
    out.resize(len);
    return out;
}

ObjectRow object_row(int nid) {
    ObjectRow row;
    const ASN1_OBJECT *object = OBJ_nid2obj(nid);
    if (object == nullptr) return row;
    if (const char *text = OBJ_nid2sn(nid)) row.short_name = text;
    if (const char *text = OBJ_nid2ln(nid)) row.long_name = text;
    char dotted[256] = "";
    if (OBJ_obj2txt(dotted, sizeof dotted, object, 1) > 0) row.dotted = dotted;
    return row;
}

}  // namespace tlx_test::openssl
