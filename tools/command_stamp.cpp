// tlxpki message stamp.
#include <iostream>

#include "commands.hpp"
#include "failure.hpp"
#include "message_pieces.hpp"
#include "output.hpp"
#include "record.hpp"
#include "status.hpp"
#include "timestamp.hpp"

namespace tool {

namespace {

/// A signed message that is read twice. What comes through a pipe is kept meanwhile.
class RereadMessage {
  public:
    explicit RereadMessage(std::string path) : path_(std::move(path)) {}

    [[nodiscard]] std::string name() const { return source_of(path_); }
    /// Gives all octets to a function. Throws Failure.
    void read(const char *what, const Take &take) {
        if (!kept_.empty()) return take(kept_);
        Waiting waiting(what);
        Source source(path_);
        expect_signed_message(source);
        label_ = label_of(source);
        read_message_pieces(source, waiting, [&](Octets octets) {
            if (!source.is_regular()) keep(source, octets);
            take(octets);
        });
    }
    /// The label of PEM; empty for DER.
    [[nodiscard]] const std::string &label() const { return label_; }

  private:
    void keep(const Source &source, Octets octets) {
        source.expect_keepable(kept_.size() + octets.size());
        kept_.insert(kept_.end(), octets.begin(), octets.end());
    }

    std::string path_;
    std::string label_;
    std::vector<uint8_t> kept_;
};

using Writer = Owned<OUTLINE_WRITER, free_OUTLINE_WRITER>;

/// Writes a message, whose record is without its content, with the content that it had.
void write_again(const CMS_CONTENT_INFO *message, const MessageOutline::Written &outline,
                 RereadMessage &content, const std::string &path) {
    uint8_t *octets = nullptr;
    OUTLINE_WRITER_SETTINGS settings = {};
    settings.len = TLX_WRITE_DER(CMS_CONTENT_INFO, message, &octets);
    const Owned<uint8_t, tlx_free> owner(octets);
    if (octets == nullptr) throw Failure(path + ": the message cannot be encoded");
    MessageTarget target(path, content.label(), nullptr);
    Receiver written([&target](Octets part) { target.write(part); });
    settings.output = Receiver::give;
    settings.context = &written;
    settings.message = octets;
    settings.content_tag = outline.content_tag;
    settings.form = settings.content_tag != 0 ? TLX_MESSAGE_DER : TLX_MESSAGE_DETACHED;
    if (settings.content_tag != 0) settings.size = outline.content_size;
    const auto writer = made<Writer>(new_OUTLINE_WRITER(&settings));
    const auto expect = [&](uint32_t status) {
        if (written.checked(status) != 0) throw Failure(content.name() + ": changes while it is read");
    };
    if (settings.content_tag != 0) {
        MessageOutline again(content.name(), "", [&](Octets part) {
            expect(update_OUTLINE_WRITER(writer.get(), part.data(), static_cast<uint32_t>(part.size())));
        });
        content.read("Writing", [&](Octets part) { again.take(part); });
    }
    expect(final_OUTLINE_WRITER(writer.get()));
    target.finish();
}

}  // namespace

int run_stamp(const StampOptions &options) {
    expect_room_for_json(options.json, options.output);
    const CmsMessage token = load_timestamp_token(options.token);
    RereadMessage file(options.message);
    MessageOutline outline(file.name());
    file.read("Reading", [&](Octets octets) { outline.take(octets); });
    const MessageOutline::Written written = outline.write();
    const CmsMessage message(decode_record(file.name(), written.node.get(), Seq_to_CMS_CONTENT_INFO));
    const auto signer = stamped_signer(message.get(), token.get(), options.signer, options.message);
    const uint32_t status = add_CMS_SIGNER_INFO_timestamp(signer.info, token.get());
    if (status != 0) {
        throw Failure(source_of(options.token) + ": is no time stamp of signer " +
                      std::to_string(signer.number) + ": " + exact_status_sentence(status));
    }
    write_again(message.get(), written, file, options.output);
    if (options.json) {
        print_json(std::cout, {{"output", options.output}, {"signer", signer.number}});
    }
    return kGood;
}

}  // namespace tool
