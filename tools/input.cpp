#include "input.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "block_kind.hpp"
#include "element.hpp"
#include "failure.hpp"
#include "source.hpp"
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

ENCODED_BLOCKS *read_blocks(Octets octets, const std::string &source) {
    if (octets.empty()) throw Failure(source + ": is empty");
    ENCODED_BLOCKS *blocks = nullptr;
    must(readENCODED_BLOCKS_from_Buffer(octets.data(), static_cast<uint32_t>(octets.size()), &blocks));
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
        if (!block.unusable.empty()) continue;
        const std::string name = block.is_encrypted ? "encrypted" : kind_name(kind_of(block));
        if (!name.empty()) text += "; " + block_name(block) + " is " + name;
    }
    return text;
}

/// Throws Failure unless a block is one element that may be a certificate.
void expect_certificate(const Block &block) {
    expect_one_element(block);
    if (block.octets[0] != TLX_TAG_SEQUENCE_OCTET) {
        throw Failure(block.source + ": is no certificate: it is no SEQUENCE");
    }
    const Kind kind = kind_of(block);
    if (kind != Kind::kCertificate && kind != Kind::kOther) {
        throw Failure(block.source + ": is no certificate, but " + kind_name(kind));
    }
}

void take(const Block &block, LoadedCertificate &loaded) {
    loaded.cert = decode_certificate(block);
}

/// What has the outline of a certificate is one. Decoding says why other octets are none.
void take(const Block &block, ReceivedCertificate &received) {
    expect_certificate(block);
    if (kind_of(block) == Kind::kOther) (void)decode_certificate(block);
    received.octets = Buffer::copy_of(block.octets);
}

/// The certificates of a file, and why others of it cannot be taken.
template <typename Taken>
std::vector<Taken> certificates_of(const Input &input, std::vector<std::string> &failures) {
    std::vector<Taken> certificates;
    for (const Block &block : input.blocks()) {
        if (block.unusable.empty() && !is_certificate_label(block.label)) continue;
        try {
            Taken taken;
            take(block, taken);
            taken.source = block.source;
            taken.is_first = certificates.empty();
            certificates.push_back(std::move(taken));
        } catch (const Failure &failure) {
            failures.emplace_back(failure.what());
        }
    }
    return certificates;
}

/// The same for a file that has to have some certificate, good or not.
template <typename Taken>
std::vector<Taken> certificates_in(const std::string &path, std::vector<std::string> &failures) {
    const Input input(path);
    std::vector<Taken> certificates = certificates_of<Taken>(input, failures);
    if (certificates.empty() && failures.empty()) {
        throw Failure(source_of(path) + ": holds no CERTIFICATE" + what_it_holds(input));
    }
    return certificates;
}

/// The files that stand in a folder itself, by name.
std::vector<std::string> files_in(const std::string &folder) {
    std::vector<std::string> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(file_path(folder), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (!entry->is_regular_file(ignored)) continue;
        const std::u8string name = entry->path().generic_u8string();
        files.emplace_back(name.begin(), name.end());
    }
    if (error) throw Failure(folder + ": cannot be read: " + error.message());
    std::sort(files.begin(), files.end());
    return files;
}

/// The status, and the place of an object identifier that the library does not read.
std::string why_not_decoded(const Block &block, uint32_t status) {
    const std::optional<std::size_t> long_arc = find_long_arc(block.octets);
    if (!long_arc) return status_sentence(status);
    return "the object identifier at offset " + std::to_string(*long_arc) +
           " has an arc above 32 bits: " + status_sentence(status);
}

template <typename Taken>
std::vector<Taken> load(const std::string &path) {
    std::vector<std::string> failures;
    std::vector<Taken> certificates = certificates_in<Taken>(path, failures);
    if (!failures.empty()) throw Failure(failures[0]);
    return certificates;
}

template <typename Taken>
std::vector<Taken> collect(const std::string &path, std::vector<std::string> &warnings) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(file_path(path), ignored)) {
        std::vector<std::string> failures;
        std::vector<Taken> certificates = certificates_in<Taken>(path, failures);
        if (certificates.empty()) throw Failure(failures[0]);
        warnings.insert(warnings.end(), failures.begin(), failures.end());
        return certificates;
    }
    std::vector<Taken> certificates;
    for (const std::string &file : files_in(path)) {
        try {
            for (Taken &taken : certificates_of<Taken>(Input(file), warnings)) {
                certificates.push_back(std::move(taken));
            }
        } catch (const Failure &failure) {
            warnings.emplace_back(failure.what());
        }
    }
    if (certificates.empty()) throw Failure(path + ": is a folder without certificates");
    return certificates;
}

}  // namespace

std::filesystem::path file_path(std::string_view path) {
    return {std::u8string(path.begin(), path.end())};
}

bool exists(const std::string &path) {
    std::error_code ignored;
    return std::filesystem::exists(file_path(path), ignored);
}

std::string source_of(const std::string &path) {
    return path == "-" ? "standard input" : path;
}

Buffer Buffer::of_size(std::size_t size) {
    auto *octets = static_cast<uint8_t *>(tlx_malloc(size, __FILE__, __LINE__));
    if (octets == nullptr) throw std::bad_alloc();
    return {octets, size};
}

Buffer Buffer::copy_of(Octets octets) {
    Buffer copy = of_size(octets.size());
    std::copy(octets.begin(), octets.end(), copy.octets_);
    return copy;
}

Buffer Buffer::resized(std::size_t size) const {
    Buffer copy = of_size(size);
    std::copy_n(octets_, std::min(size_, size), copy.octets_);
    return copy;
}

Buffer read_octets(const std::string &path) {
    return Source(path).rest();
}

Input::Input(const std::string &path) : Input(read_octets(path).octets(), source_of(path)) {}

Input::Input(Octets octets, const std::string &source) : list_(read_blocks(octets, source)) {
    const uint32_t count = get_ENCODED_BLOCKS_count(list_.get());
    for (uint32_t i = 0; i < count; ++i) {
        const ENCODED_BLOCK &encoded = *get_ENCODED_BLOCKS_child(list_.get(), i);
        Block block;
        block.source = count == 1 ? source : source + ", PEM block " + std::to_string(i + 1);
        block.unusable = reason_unusable(encoded);
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

void expect_contents(const Block &block) {
    if (!block.unusable.empty()) throw Failure(block.source + ": " + block.unusable);
}

void expect_one_element(const Block &block) {
    expect_contents(block);
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
    expect_certificate(block);
    X509_CERT *cert = nullptr;
    const uint32_t status =
        readDER_from_Buffer(reinterpret_cast<void **>(&cert), TLX_DECODER(Seq_to_X509_CERT),
                            block.octets.data(), static_cast<uint32_t>(block.octets.size()));
    if (status != 0) throw Failure(block.source + ": is no certificate: " + why_not_decoded(block, status));
    return Certificate(cert);
}

std::vector<LoadedCertificate> load_certificates(const std::string &path) {
    return load<LoadedCertificate>(path);
}

std::vector<ReceivedCertificate> load_received(const std::string &path) {
    return load<ReceivedCertificate>(path);
}

std::vector<LoadedCertificate> collect_certificates(const std::string &path,
                                                    std::vector<std::string> &warnings) {
    return collect<LoadedCertificate>(path, warnings);
}

std::vector<ReceivedCertificate> collect_received(const std::string &path,
                                                  std::vector<std::string> &warnings) {
    return collect<ReceivedCertificate>(path, warnings);
}

}  // namespace tool
