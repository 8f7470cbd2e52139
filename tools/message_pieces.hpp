// Messages in files, read and written in pieces.
#pragma once

#include "document.hpp"
#include "receiver.hpp"
#include "target.hpp"
#include "terminal.hpp"

namespace tool {

/// The content type of a message, TLX_MESSAGE_, by its first octets, which stay in the source.
[[nodiscard]] uint32_t type_of(Source &source);

/// The label of a message in PEM, by the same; empty for DER.
[[nodiscard]] std::string label_of(Source &source);

/// Gives all octets of a file to a function. Throws Failure.
void read_pieces(Source &source, Waiting &waiting, const Take &take);

/// The same of a message, of which those in the first block of PEM count.
void read_message_pieces(Source &source, Waiting &waiting, const Take &take);

/// How many octets a source holds: of a file, and of another one that is short. It stays as it is.
[[nodiscard]] std::optional<uint64_t> known_size(Source &source);

/// What the command holds of a message that is read in pieces, beside its content.
constexpr uint32_t kMostHeldMegabytes = 16;
constexpr uint32_t kMostHeld = kMostHeldMegabytes * 1024 * 1024;

/// What message show prints of a message that is read or written in pieces, but for its content, of which it
/// says the size. A message that was made has an output beside the source. The content goes to a function,
/// when there is one.
class MessageOutline {
  public:
    explicit MessageOutline(std::string source, std::string output = "", Take content = {});
    MessageOutline(const MessageOutline &) = delete;
    MessageOutline &operator=(const MessageOutline &) = delete;

    struct Written {
        Node node;              ///< the message without its content
        uint64_t content_size;  ///< in octets; UINT64_MAX for a message without content
        uint32_t content_tag;   ///< of the element around the content; 0 for a message without content
    };

    /// All throw Failure.
    void take(Octets octets);
    [[nodiscard]] Json describe() const;
    [[nodiscard]] Written write() const;

  private:
    std::string source_;
    std::string output_;
    Receiver content_;
    Owned<MESSAGE_OUTLINE, free_MESSAGE_OUTLINE> outline_;
};

/// The label of messages by RFC 7468 that most programs know.
constexpr const char *kMessageLabel = "PKCS7";

/// Where a message is written to, in PEM under a label, or for an empty one in DER.
class MessageTarget {
  public:
    /// An outline, which may be null, gets the message as well.
    MessageTarget(const std::string &path, const std::string &label, MessageOutline *outline);

    /// Both throw Failure.
    void write(Octets octets);
    void finish();

  private:
    Target target_;
    Receiver text_;
    Owned<PEM_WRITER, free_PEM_WRITER> pem_;  ///< null for DER
    MessageOutline *outline_;
};

/// Where the content of a message goes. A stream gets it once all of it is verified, unless it may be
/// unverified.
class ContentTarget {
  public:
    /// An empty path stands for nowhere.
    ContentTarget(const std::string &path, bool may_be_unverified);

    /// Sets the output of a reader, and what it holds.
    template <typename Settings>
    void set(Settings &settings) {
        if (target_) (holds_back_ ? settings.output : settings.unverified_output) = Receiver::give;
        settings.context = &receiver_;
        settings.held_limit = kMostHeld;
    }
    /// Content that is held back goes nowhere from now on.
    void drop_held_back() { is_dropped_ = holds_back_; }
    /// A status of the reader of a source. Throws Failure for content that is too long to be held back, and
    /// for what cannot be written.
    [[nodiscard]] uint32_t checked(const std::string &source, uint32_t status);
    /// The file that holds what was given so far; empty when there is none.
    [[nodiscard]] std::filesystem::path unfinished() const { return target_ ? target_->unfinished() : ""; }
    /// Makes the file complete.
    void finish();
    [[nodiscard]] uint64_t size() const { return size_; }

  private:
    void give(Octets octets);

    std::optional<Target> target_;
    Receiver receiver_;
    bool holds_back_;
    bool is_dropped_ = false;
    uint64_t size_ = 0;
};

}  // namespace tool
