#include "input.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "block_kind.hpp"
#include "element.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

/// Statuses of blocks (see <tlxpki/encoded_block.h>).
constexpr uint32_t kIncompleteLine = 0x4E010000;
constexpr uint32_t kNotBase64 = 0x4E010012;
constexpr uint32_t kNoEnd = 0x4E010047;
constexpr uint32_t kOtherEnd = 0x4E010048;
constexpr uint32_t kNotOneElement = 0x4E01004F;
constexpr uint32_t kEncrypted = 0x4E010114;

/// The system's reason why a file could not be read.
std::string reason_unreadable(const std::string &path, int error) {
    std::error_code ignored;
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    if (std::filesystem::is_directory(file, ignored)) return "is a directory";
    const auto size = std::filesystem::file_size(file, ignored);
    if (!ignored && size > 0x7FFFFFFF) return "is larger than 2 GB";
    return error == 0 ? "cannot be read" : "cannot be read: " + std::generic_category().message(error);
}

Buffer read_file(const std::string &path) {
    uint8_t *octets = nullptr;
    uint32_t size = 0;
    errno = 0;
    if (File_to_binary(path.c_str(), &octets, &size) != 0) {
        throw Failure(path + ": " + reason_unreadable(path, errno));
    }
    Buffer buffer(octets, size);
    if (size == 0) throw Failure(path + ": is empty");
    return buffer;
}

ENCODED_BLOCKS *read_blocks(const std::string &path) {
    const Buffer file = read_file(path);
    ENCODED_BLOCKS *blocks = nullptr;
    must(readENCODED_BLOCKS_from_Buffer(file.octets().data(), static_cast<uint32_t>(file.octets().size()),
                                        &blocks));
    return blocks;
}

/// Why a block cannot be used; empty for one that has contents.
std::string reason_unusable(const ENCODED_BLOCK &block) {
    const std::string label = block.label;
    switch (block.status) {
        case 0:
        case kNotOneElement:  // whoever uses the contents says where they break off
        case kEncrypted:
            return "";
        case kIncompleteLine:
            return "the line that begins or ends it is not complete";
        case kNotBase64:
            return "the text of the " + label + " is not Base64";
        case kNoEnd:
            return "has no \"-----END " + label + "-----\"";
        case kOtherEnd:
            return "begins as " + label + ", but does not end so";
        default:
            return status_sentence(block.status);
    }
}

/// What the blocks of a file are that are labelled as no certificates: "; the X509 CRL is ...".
std::string what_it_holds(const Input &input) {
    std::string text;
    for (const Block &block : input.blocks()) {
        const std::string name = block.is_encrypted ? "encrypted" : kind_name(kind_of(block));
        if (!name.empty()) text += "; " + block_name(block) + " is " + name;
    }
    return text;
}

}  // namespace

Input::Input(const std::string &path) : list_(read_blocks(path)) {
    const uint32_t count = get_ENCODED_BLOCKS_count(list_.get());
    for (uint32_t i = 0; i < count; ++i) {
        const ENCODED_BLOCK &encoded = *get_ENCODED_BLOCKS_child(list_.get(), i);
        Block block;
        block.source = count == 1 ? path : path + ", PEM block " + std::to_string(i + 1);
        const std::string reason = reason_unusable(encoded);
        if (!reason.empty()) throw Failure(block.source + ": " + reason);
        block.label = encoded.label;
        block.is_encrypted = encoded.status == kEncrypted;
        const Octets contents(encoded.contents, encoded.contents_len);
        if (block.is_encrypted) {
            block.text = {reinterpret_cast<const char *>(contents.data()), contents.size()};
        } else {
            block.octets = contents;
        }
        blocks_.push_back(std::move(block));
    }
}

void expect_one_element(const Block &block) {
    try {
        const Element element = read_element(block.octets, 0, block.octets.size());
        if (element.indefinite || element.end() == block.octets.size()) return;
        throw Failure(block.source + ": " + std::to_string(block.octets.size() - element.end()) +
                      " octets follow the end of the element");
    } catch (const BrokenElement &broken) {
        throw Failure(block.source + ": is neither PEM nor DER: " + broken.what());
    }
}

bool is_certificate_label(const std::string &label) {
    return label.empty() || label == "CERTIFICATE" || label == "X509 CERTIFICATE" ||
           label == "TRUSTED CERTIFICATE";
}

Certificate decode_certificate(const Block &block) {
    expect_one_element(block);
    if (block.octets[0] != TLX_TAG_SEQUENCE_OCTET) {
        throw Failure(block.source + ": is no certificate: it is no SEQUENCE");
    }
    const Kind kind = kind_of(block);
    if (kind != Kind::kCertificate && kind != Kind::kOther) {
        throw Failure(block.source + ": is no certificate, but " + kind_name(kind));
    }
    X509_CERT *cert = nullptr;
    const uint32_t status =
        readDER_from_Buffer(reinterpret_cast<void **>(&cert), TLX_DECODER(Seq_to_X509_CERT),
                            block.octets.data(), static_cast<uint32_t>(block.octets.size()));
    if (status != 0) throw Failure(block.source + ": is no certificate: " + status_sentence(status));
    return Certificate(cert);
}

std::vector<LoadedCertificate> load_certificates(const std::string &path) {
    const Input input(path);
    std::vector<LoadedCertificate> certificates;
    for (const Block &block : input.blocks()) {
        if (is_certificate_label(block.label)) {
            certificates.push_back({decode_certificate(block), block.source});
        }
    }
    if (certificates.empty()) throw Failure(path + ": holds no CERTIFICATE" + what_it_holds(input));
    return certificates;
}

}  // namespace tool
