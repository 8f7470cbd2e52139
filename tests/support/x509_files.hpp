// Certificates from files.
#pragma once

#include <gtest/gtest.h>
#include <tlxpki.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "support/octets.hpp"
#include "support/strings.hpp"

namespace tlx_test {

using OwnedCert = std::unique_ptr<X509_CERT, Freer<X509_CERT, free_X509_CERT>>;

inline std::string read_text(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The octets of a file among the test data on certificates.
inline Octets read_file(const std::string &name) {
    const std::string text = read_text(TLX_TEST_DATA "/x509/" + name);
    return {text.begin(), text.end()};
}

inline OwnedCert read_certificate(const std::string &name) {
    const Octets octets = read_file(name);
    void *cert = nullptr;
    EXPECT_EQ(readDER_from_Buffer(&cert, TLX_DECODER(Seq_to_X509_CERT), octets.data(),
                                  static_cast<std::uint32_t>(octets.size())),
              0U)
        << name;
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

/// The encoding of a certificate; empty when it cannot be encoded.
inline Octets encode_certificate(const X509_CERT *cert) {
    std::uint8_t *octets = nullptr;
    const std::uint32_t size = writeDER_to_Binary(cert, TLX_ENCODER(X509_CERT_to_Seq), &octets);
    if (size == 0xFFFFFFFF) return {};
    Octets encoding(octets, octets + size);
    tlx_free(octets);
    return encoding;
}

}  // namespace tlx_test
