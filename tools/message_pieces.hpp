// Messages in files, read and written in pieces.
#pragma once

#include "document.hpp"
#include "receiver.hpp"
#include "target.hpp"
#include "terminal.hpp"

namespace tool {

/// The content type of a message, TLX_MESSAGE_, by its first octets, which stay in the source.
[[nodiscard]] uint32_t type_of(Source &source);

/// Gives all octets of a file to a function. Throws Failure.
void read_pieces(Source &source, Waiting &waiting, const Take &take);

/// The same of a message, of which those in the first block of PEM count.
void read_message_pieces(Source &source, Waiting &waiting, const Take &take);

/// Where a message is written to, in PEM under the label of RFC 7468 unless it is to be DER.
class MessageTarget {
  public:
    MessageTarget(const std::string &path, bool as_der);

    /// Both throw Failure.
    void write(Octets octets);
    void finish();

  private:
    Target target_;
    Receiver text_;
    Owned<PEM_WRITER, free_PEM_WRITER> pem_;  ///< null for DER
};

using SignedReader = Owned<SIGNED_MESSAGE_READER, free_SIGNED_MESSAGE_READER>;

/// What the command holds of a message that is read in pieces, beside its content.
constexpr uint32_t kMostHeldMegabytes = 16;
constexpr uint32_t kMostHeld = kMostHeldMegabytes * 1024 * 1024;

/// Throws Failure unless the status of reading a message is 0.
void expect_read(const std::string &source, uint32_t status);

/// Describes a message that is complete, but for its content.
[[nodiscard]] Json describe_outline(const std::string &source, const SIGNED_MESSAGE_READER *reader);

/// What message show prints of a signed message that is read or written in pieces, with the size of its
/// content. A message that was made has an output beside the source.
class SignedOutline {
  public:
    explicit SignedOutline(std::string source, std::string output = "");

    /// Both throw Failure.
    void take(Octets octets);
    [[nodiscard]] Json describe() const;

  private:
    std::string source_;
    std::string output_;
    uint64_t size_ = 0;
    Receiver content_;
    SignedReader reader_;
};

}  // namespace tool
