#include "verify_pieces.hpp"

#include "failure.hpp"

namespace tool {

namespace {

enum : uint32_t {
    kNotHeldBack = 0x52810047,
    kNotDetached = 0x5281001C,
    kNoSigners = 0x5282002B,
    kNoContent = 0x5282003B
};

/// A message that is read, and where its content goes.
class PieceVerifier {
  public:
    PieceVerifier(const VerifyMessageOptions &options, SignerVerifier &verifier)
        : options_(options), verifier_(verifier), content_([this](Octets octets) { give(octets); }) {
        if (!options.output.empty()) target_.emplace(options.output);
        holds_back_ = target_ && target_->is_stream() && !options.unverified_output;
        SIGNED_MESSAGE_READER_SETTINGS settings = {};
        if (target_) (holds_back_ ? settings.output : settings.unverified_output) = Receiver::give;
        settings.context = &content_;
        settings.held_limit = kMostHeld;
        verifier.set(settings);
        reader_ = made<SignedReader>(new_SIGNED_MESSAGE_READER(&settings));
    }

    void take(Octets octets) {
        expect(
            update_SIGNED_MESSAGE_READER(reader_.get(), octets.data(), static_cast<uint32_t>(octets.size())));
    }

    /// Content without octets is content as well.
    void take_content(Source &content, Waiting &waiting) {
        const uint8_t none = 0;
        expect(update_SIGNED_MESSAGE_READER_content(reader_.get(), &none, 0));
        read_pieces(content, waiting, [this](Octets octets) {
            expect(update_SIGNED_MESSAGE_READER_content(reader_.get(), octets.data(),
                                                        static_cast<uint32_t>(octets.size())));
        });
    }

    [[nodiscard]] Findings finish() {
        Findings findings;
        P7_SIGNER_REPORTS *reports = nullptr;
        const uint32_t status = content_.checked(final_SIGNED_MESSAGE_READER(reader_.get(), &reports));
        findings.reports.reset(reports);
        if (reports == nullptr && status != kNoSigners) expect(status);
        findings.settle(status, verifier_);
        if (reports != nullptr) findings.signers = describe_signers();
        if (findings.is_proven() && target_) target_->finish();
        return findings;
    }

  private:
    /// Nothing proves content without anchors.
    void give(Octets octets) {
        if (!holds_back_ || verifier_.has_anchors()) target_->write(octets);
    }

    /// Throws Failure unless an operation of the reader went well.
    void expect(uint32_t status) {
        const std::string source = source_of(options_.message);
        switch (content_.checked(status)) {
            case kNotHeldBack:
                throw Failure(
                    source +
                    ": has more than 1 MB of content, which is held back until it is verified; give "
                    "--output a regular file, or --unverified-output");
            case kNotDetached:
                throw Failure(source + ": has its content in itself; --content is for messages without");
            case kNoContent:
                throw Failure(source + ": does not hold its content; give it with --content");
            default:
                expect_read(source, status);
        }
    }

    [[nodiscard]] Json describe_signers() const {
        Json signers = describe_outline(source_of(options_.message), reader_.get())["signers"];
        for (Json &signer : signers) {
            for (const char *key :
                 {"version", "authenticated_attributes", "signature", "unauthenticated_attributes"}) {
                signer.erase(key);
            }
        }
        return signers;
    }

    const VerifyMessageOptions &options_;
    SignerVerifier &verifier_;
    std::optional<Target> target_;
    Receiver content_;
    bool holds_back_ = false;
    SignedReader reader_;
};

}  // namespace

Findings verify_in_pieces(const VerifyMessageOptions &options, Source &message, SignerVerifier &verifier,
                          Waiting &waiting) {
    PieceVerifier pieces(options, verifier);
    read_message_pieces(message, waiting, [&pieces](Octets octets) { pieces.take(octets); });
    if (!options.content.empty()) {
        Source content(options.content);
        pieces.take_content(content, waiting);
    }
    return pieces.finish();
}

}  // namespace tool
