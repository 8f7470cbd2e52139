// Messages that are encrypted for recipients.
#pragma once

#include <deque>

#include "commands.hpp"
#include "message_pieces.hpp"
#include "password.hpp"

namespace tool {

/// How content is encrypted, and for whom.
class Envelope {
  public:
    /// Reads certificates and a password. Throws Failure for what nobody can encrypt for, and for what the
    /// format does not have. The options have to outlive the envelope.
    explicit Envelope(const EnvelopeOptions &options);

    /// Sets type, algorithm and recipients.
    void set(ENVELOPED_MESSAGE_WRITER_SETTINGS &settings) const;

  private:
    void add_certificate(const std::string &path);
    void add_password();
    /// Throws Failure for a recipient that is not of PKCS #7 when the message has to be.
    void expect_in_format(bool is_pkcs7, const std::string &what) const;

    const EnvelopeOptions &options_;
    bool is_authenticated_;
    Password password_;
    std::deque<LoadedCertificate> certificates_;
    std::vector<CMS_RECIPIENT_SETTINGS> recipients_;
};

/// Encrypts content in pieces.
class EnvelopeWriter {
  public:
    /// The size of the content, when it is known, makes the message DER.
    EnvelopeWriter(const Envelope &envelope, MessageTarget &target, std::optional<uint64_t> size);

    /// Both throw Failure.
    void write(Octets octets);
    void finish();

  private:
    void expect(uint32_t status);

    Receiver receiver_;
    Owned<ENVELOPED_MESSAGE_WRITER, free_ENVELOPED_MESSAGE_WRITER> writer_;
};

}  // namespace tool
