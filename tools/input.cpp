#include "input.hpp"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "element.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

constexpr std::string_view kBegin = "-----BEGIN ";
constexpr std::string_view kEnd = "-----END ";
constexpr std::string_view kDashes = "-----";

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

/// The next PEM block: "-----BEGIN " at the start of a line.
std::size_t find_block(std::string_view text, std::size_t from) {
    std::size_t at = text.find(kBegin, from);
    while (at != std::string_view::npos && at != 0 && text[at - 1] != '\n' && text[at - 1] != '\r') {
        at = text.find(kBegin, at + 1);
    }
    return at;
}

/// The offset of the first PEM block. Only text may precede it: a "-----BEGIN" inside DER starts no block.
std::size_t find_first_block(std::string_view text) {
    const std::size_t at = find_block(text, 0);
    const auto is_control = [](char c) {
        return static_cast<uint8_t>(c) < 0x20 &&
               std::string_view("\t\r\n\f").find(c) == std::string_view::npos;
    };
    const std::string_view before = text.substr(0, at);
    return std::any_of(before.begin(), before.end(), is_control) ? std::string_view::npos : at;
}

/// The label of a line such as "-----BEGIN CERTIFICATE-----" at an offset.
std::string label_at(std::string_view text, std::size_t at, const std::string &source) {
    const std::size_t line_end = std::min(text.find_first_of("\r\n", at), text.size());
    const std::size_t end = text.find(kDashes, at);
    if (end >= line_end) throw Failure(source + ": the line that begins or ends it is not complete");
    return std::string(text.substr(at, end - at));
}

/// The Base64 after encapsulated headers (RFC 1421), which have a colon and end with an empty line.
std::string_view without_headers(std::string_view body) {
    const std::size_t colon = body.rfind(':');
    if (colon == std::string_view::npos) return body;
    const std::size_t end = std::min(body.find("\n\n", colon), body.find("\n\r\n", colon));
    return body.substr(std::min(end, body.size()));
}

}  // namespace

Input::Input(const std::string &path) : file_(read_file(path)) {
    const Octets octets = file_.octets();
    const std::string_view text(reinterpret_cast<const char *>(octets.data()), octets.size());
    const std::size_t begin = find_first_block(text);
    if (begin == std::string_view::npos) {
        blocks_.push_back({"", {}, false, octets, path});
    } else {
        split_pem(path, text, begin);
    }
}

void Input::split_pem(const std::string &path, std::string_view text, std::size_t begin) {
    for (; begin != std::string_view::npos; begin = find_block(text, begin)) {
        Block block;
        block.source = path + ", PEM block " + std::to_string(blocks_.size() + 1);
        block.label = label_at(text, begin + kBegin.size(), block.source);
        const std::size_t body = begin + kBegin.size() + block.label.size() + kDashes.size();
        const std::size_t end = text.find(kEnd, body);
        if (end == std::string_view::npos) {
            throw Failure(block.source + ": has no \"-----END " + block.label + "-----\"");
        }
        if (label_at(text, end + kEnd.size(), block.source) != block.label) {
            throw Failure(block.source + ": begins as " + block.label + ", but does not end so");
        }
        const std::size_t after = end + kEnd.size() + block.label.size() + kDashes.size();
        block.text = text.substr(begin, after - begin);
        const std::string_view base64 = text.substr(body, end - body);
        block.is_encrypted = base64.find("Proc-Type:") != std::string_view::npos;
        if (!block.is_encrypted) block.octets = decode(block, without_headers(base64));
        blocks_.push_back(std::move(block));
        begin = after;
    }
    if (blocks_.size() == 1) blocks_.front().source = path;
}

Octets Input::decode(const Block &block, std::string_view base64) {
    base64.remove_prefix(std::min(base64.find_first_not_of(" \r\n"), base64.size()));
    uint8_t *der = nullptr;
    const uint32_t size = decode_Base64(base64.data(), static_cast<uint32_t>(base64.size()), &der);
    if (size == 0) throw Failure(block.source + ": the text of the " + block.label + " is not Base64");
    decoded_.emplace_back(der, size);
    return decoded_.back().octets();
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
    return label.empty() || label == "CERTIFICATE" || label == "X509 CERTIFICATE";
}

Certificate decode_certificate(const Block &block) {
    expect_one_element(block);
    if (block.octets[0] != TLX_TAG_SEQUENCE_OCTET) {
        throw Failure(block.source + ": is no certificate: it is no SEQUENCE");
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
    if (certificates.empty()) throw Failure(path + ": holds no certificate");
    return certificates;
}

}  // namespace tool
