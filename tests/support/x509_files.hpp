// Certificates from files.
#pragma once

#include <gtest/gtest.h>
#include <tlxpki.h>

#include <string>
#include <vector>

#include "support/held.hpp"
#include "support/octets.hpp"
#include "support/utf8_path.hpp"

namespace tlx_test {

using OwnedCert = Held<free_X509_CERT>;

constexpr const char *kDebianCertificates = "/etc/ssl/certs/ca-certificates.crt";

/// The octets of a file among the test data on certificates.
inline Octets read_file(const std::string &name) {
    const std::string text = read_text(TLX_TEST_DATA "/x509/" + name);
    return {text.begin(), text.end()};
}

/// The certificate of an encoding; null when the library refuses it.
inline OwnedCert certificate_of(const Octets &der) {
    void *cert = nullptr;
    (void)readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), der.data(),
                              static_cast<std::uint32_t>(der.size()));
    return OwnedCert(static_cast<X509_CERT *>(cert));
}

/// The octets of every block of a PEM file.
inline std::vector<Octets> read_pem_file(const std::string &path) {
    const std::string text = read_text(path);
    std::vector<Octets> blocks;
    for (std::size_t at = text.find("-----BEGIN"); at != std::string::npos;
         at = text.find("-----BEGIN", at + 1)) {
        std::uint8_t *octets = nullptr;
        const std::uint32_t size =
            decode_PEM(text.data() + at, static_cast<std::int32_t>(text.size() - at), &octets);
        EXPECT_NE(size, 0U) << path << " at " << at;
        blocks.emplace_back(octets, octets + size);
        tlx_free(octets);
    }
    return blocks;
}

/// The encoding of a record. A record that cannot be encoded gives none and fails the test.
inline Octets encoding_of(const void *record, ASN1_ENCODER encoder) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(record, encoder, &octets);
    EXPECT_NE(size, 0xFFFFFFFFU);
    const Octets encoding(octets, octets + (size == 0xFFFFFFFFU ? 0 : size));
    tlx_free(octets);
    return encoding;
}
inline Octets encode_certificate(const X509_CERT *cert) {
    return encoding_of(cert, TLX_ENCODER(X509_CERT_to_Seq));
}

}  // namespace tlx_test
