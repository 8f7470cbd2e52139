#include "verify_pieces.hpp"

#include "failure.hpp"
#include "mapped_file.hpp"
#include "status.hpp"

namespace tool {

namespace {

using SignedReader = Owned<SIGNED_MESSAGE_READER, free_SIGNED_MESSAGE_READER>;

enum : uint32_t { kNotDetached = 0x5281001C, kNoSigners = 0x5282002B, kNoContent = 0x5282003B };

/// A message that is read, and where its content goes.
class PieceVerifier {
  public:
    PieceVerifier(const VerifyMessageOptions &options, SignerVerifier &verifier)
        : source_(source_of(options.message)),
          content_(options.content),
          verifier_(verifier),
          target_(options.output, options.unverified_output),
          outline_(source_) {
        SIGNED_MESSAGE_READER_SETTINGS settings = {};
        target_.set(settings);
        // Nothing proves content without anchors.
        if (!verifier.has_anchors()) target_.drop_held_back();
        verifier.set(settings);
        settings.content_again = give_again;
        settings.content_again_context = this;
        reader_ = made<SignedReader>(new_SIGNED_MESSAGE_READER(&settings));
    }

    void take(Octets octets) {
        outline_.take(octets);
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
        const uint32_t status = final_SIGNED_MESSAGE_READER(reader_.get(), &reports);
        again_.reset();  // a file that is mapped cannot be renamed everywhere
        findings.reports.reset(reports);
        (void)target_.checked(source_, status);
        if (reports == nullptr && status != kNoSigners) expect(status);
        findings.settle(status, verifier_);
        if (reports != nullptr) findings.signers = describe_signers();
        if (findings.is_proven()) target_.finish();
        return findings;
    }

  private:
    /// A MESSAGE_CONTENT: what was written so far, or the file that the content is in.
    static uint32_t give_again(void *context, const uint8_t **octets, uint64_t *len) noexcept try {
        auto *self = static_cast<PieceVerifier *>(context);
        const std::filesystem::path written = self->target_.unfinished();
        if (!self->again_) self->again_.emplace(written.empty() ? file_path(self->content_) : written);
        *octets = self->again_->octets().data();
        *len = self->again_->octets().size();
        return 0;
    } catch (...) {
        return 1;  // the finding stays that the content is gone
    }

    /// Throws Failure unless an operation of the reader went well.
    void expect(uint32_t status) {
        switch (target_.checked(source_, status)) {
            case 0:
                return;
            case kNotDetached:
                throw Failure(source_ + ": has its content in itself; --content is for messages without");
            case kNoContent:
                throw Failure(source_ + ": does not hold its content; give it with --content");
            default:
                throw Failure(source_ + ": cannot be decoded: " + status_sentence(status));
        }
    }

    [[nodiscard]] Json describe_signers() const {
        Json signers = outline_.describe()["signers"];
        for (Json &signer : signers) {
            for (const char *key :
                 {"version", "authenticated_attributes", "signature", "unauthenticated_attributes"}) {
                signer.erase(key);
            }
        }
        return signers;
    }

    std::string source_;
    std::string content_;
    std::optional<MappedFile> again_;
    SignerVerifier &verifier_;
    ContentTarget target_;
    MessageOutline outline_;
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
