// Files with DER or PEM blocks (RFC 7468).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "owned.hpp"
#include "text.hpp"

namespace tool {

/// Octets from the library's allocator. Releasing wipes them, because any file may hold a private key.
class Buffer {
  public:
    Buffer() = default;
    Buffer(uint8_t *octets, std::size_t size) : octets_(octets), size_(size) {}
    Buffer(Buffer &&other) noexcept
        : octets_(std::exchange(other.octets_, nullptr)), size_(std::exchange(other.size_, 0)) {}
    Buffer &operator=(Buffer &&other) noexcept {
        std::swap(octets_, other.octets_);
        std::swap(size_, other.size_);
        return *this;
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    ~Buffer() {
        tlx_wipe(octets_, size_);
        tlx_free(octets_);
    }

    [[nodiscard]] static Buffer of_size(std::size_t size);
    [[nodiscard]] static Buffer copy_of(Octets octets);
    /// A copy of another size. The octets that it adds are not set.
    [[nodiscard]] Buffer resized(std::size_t size) const;

    [[nodiscard]] Octets octets() const { return {octets_, size_}; }
    [[nodiscard]] uint8_t *data() { return octets_; }

  private:
    uint8_t *octets_ = nullptr;
    std::size_t size_ = 0;
};

/// A path of the command line, which is UTF-8 on every system.
[[nodiscard]] std::filesystem::path file_path(std::string_view path);
[[nodiscard]] bool exists(const std::string &path);

/// A file in what people read.
[[nodiscard]] std::string source_of(const std::string &path);

/// The octets of a file as they are, or of standard input for "-"; there may be none. Throws Failure when it
/// cannot be read.
[[nodiscard]] Buffer read_octets(const std::string &path);

/// One PEM block, or a whole DER file.
struct Block {
    std::string label;          ///< between "-----BEGIN " and "-----"; empty for DER
    std::string_view text;      ///< of an encrypted PEM block: from its first line to its last
    bool is_encrypted = false;  ///< a line like "Proc-Type: 4,ENCRYPTED" precedes the Base64
    Octets octets;              ///< the decoded contents; empty when it is encrypted
    std::string source;    ///< for messages: the file, and the number of the block when there are several
    std::string unusable;  ///< why there are no contents; else empty
};

class Input {
  public:
    /// Reads a file, or standard input for "-". Throws Failure when it cannot be read or is empty.
    explicit Input(const std::string &path);
    /// Takes octets that came from elsewhere.
    Input(Octets octets, const std::string &source);
    [[nodiscard]] const std::vector<Block> &blocks() const { return blocks_; }

  private:
    Owned<ENCODED_BLOCKS, free_ENCODED_BLOCKS> list_;
    std::vector<Block> blocks_;
};

/// A certificate of a file.
struct LoadedCertificate {
    Certificate cert;
    std::string source;
    bool is_first = false;  ///< in its file
};

/// The octets of a certificate of a file, as they were received.
struct ReceivedCertificate {
    Buffer octets;
    std::string source;
    bool is_first = false;  ///< in its file
};

/// Whether the label of a block allows a certificate.
[[nodiscard]] bool is_certificate_label(const std::string &label);

/// Decodes a block that holds a certificate and nothing else. Throws Failure.
[[nodiscard]] Certificate decode_certificate(const Block &block);

/// All certificates of a file; ignores PEM blocks with other labels. Throws Failure when there is none or one
/// cannot be decoded.
[[nodiscard]] std::vector<LoadedCertificate> load_certificates(const std::string &path);

/// All certificates of a file or of the files in a folder. Those that cannot be decoded are passed over with
/// a warning. Throws Failure when there is none.
[[nodiscard]] std::vector<LoadedCertificate> collect_certificates(const std::string &path,
                                                                  std::vector<std::string> &warnings);

/// The same two of certificates as received. What looks like a certificate may yet fail to decode.
[[nodiscard]] std::vector<ReceivedCertificate> load_received(const std::string &path);
[[nodiscard]] std::vector<ReceivedCertificate> collect_received(const std::string &path,
                                                                std::vector<std::string> &warnings);

/// Throws Failure when a block has no contents.
void expect_contents(const Block &block);

/// Throws Failure unless octets are one complete element and nothing else.
void expect_one_element(const Block &block);

}  // namespace tool
