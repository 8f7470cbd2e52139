#include "support/openssl_extension_peer.hpp"

#include <openssl/bio.h>
#include <openssl/objects.h>
#include <openssl/x509v3.h>

namespace tlx_test::openssl {

std::string extension_text(const std::string &dotted, const std::vector<std::uint8_t> &value) {
    ASN1_OBJECT *object = OBJ_txt2obj(dotted.c_str(), 1);
    ASN1_OCTET_STRING *data = ASN1_OCTET_STRING_new();
    ASN1_OCTET_STRING_set(data, value.data(), static_cast<int>(value.size()));
    X509_EXTENSION *extension = X509_EXTENSION_create_by_OBJ(nullptr, object, 0, data);
    BIO *bio = BIO_new(BIO_s_mem());
    std::string text;
    if (X509V3_EXT_print(bio, extension, X509V3_EXT_DEFAULT, 0) == 1) {
        char *start = nullptr;
        const long size = BIO_get_mem_data(bio, &start);
        text.assign(start, static_cast<std::size_t>(size));
    }
    BIO_free(bio);
    X509_EXTENSION_free(extension);
    ASN1_OCTET_STRING_free(data);
    ASN1_OBJECT_free(object);
    return text;
}

}  // namespace tlx_test::openssl
