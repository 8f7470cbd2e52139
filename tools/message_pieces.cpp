#include "message_pieces.hpp"

#include <algorithm>
#include <string_view>

#include "describe_cms.hpp"
#include "failure.hpp"
#include "status.hpp"

namespace tool {

namespace {

using PemReader = Owned<PEM_READER, free_PEM_READER>;

/// The octets of a file that say what it is.
constexpr std::size_t kHead = 65536;

bool is_control(char c) {
    return c >= 0 && c < ' ' && c != '\t' && c != '\r' && c != '\n';
}

/// A block begins, and nothing but text stands before it.
bool is_pem(Octets head) {
    const std::string_view text(reinterpret_cast<const char *>(head.data()), head.size());
    const std::size_t begin = text.find("-----BEGIN ");
    return begin != std::string_view::npos && std::ranges::none_of(text.substr(0, begin), is_control);
}

uint32_t update_pem(PEM_READER *reader, Octets text) {
    return update_PEM_READER(reader, reinterpret_cast<const char *>(text.data()),
                             static_cast<uint32_t>(text.size()));
}

/// Throws Failure unless the status of reading PEM is 0.
void expect_pem(const Source &source, const PEM_READER *reader, uint32_t status) {
    constexpr uint32_t kNoEnd = 0x5286004F;
    if (status == 0) return;
    const std::string label = get_PEM_READER_label(reader);
    if (status == kNoEnd) throw Failure(source.name() + ": has no \"-----END " + label + "-----\"");
    throw Failure(source.name() + ": the text of the " + label + " is not Base64, or ends as another");
}

/// The first octets of a message, as far as they can be read, and the label of PEM, which is empty for DER.
struct Head {
    std::vector<uint8_t> octets;
    std::string label;
};

Head head_of(Source &source) {
    const Octets octets = source.peek(kHead);
    if (!is_pem(octets)) return {{octets.begin(), octets.end()}, ""};
    Head head;
    Receiver receiver(
        [&head](Octets part) { head.octets.insert(head.octets.end(), part.begin(), part.end()); });
    const auto reader = made<PemReader>(new_PEM_READER(Receiver::give, &receiver));
    (void)receiver.checked(update_pem(reader.get(), octets));
    head.label = get_PEM_READER_label(reader.get());
    return head;
}

}  // namespace

uint32_t type_of(Source &source) {
    const std::vector<uint8_t> message = head_of(source).octets;
    uint32_t type = TLX_MESSAGE_OTHER;
    (void)get_MESSAGE_type(message.data(), static_cast<uint32_t>(message.size()), &type);
    return type;
}

std::string label_of(Source &source) {
    return head_of(source).label;
}

void read_pieces(Source &source, Waiting &waiting, const Take &take) {
    if (const auto size = source.size()) waiting.expect(*size);
    for (Octets piece = source.next(); !piece.empty(); piece = source.next()) {
        take(piece);
        waiting.add(piece.size());
    }
}

void read_message_pieces(Source &source, Waiting &waiting, const Take &take) {
    if (source.peek(kHead).empty()) throw Failure(source.name() + ": is empty");
    if (!is_pem(source.peek(kHead))) return read_pieces(source, waiting, take);
    Receiver receiver(take);
    const auto reader = made<PemReader>(new_PEM_READER(Receiver::give, &receiver));
    read_pieces(source, waiting, [&](Octets text) {
        expect_pem(source, reader.get(), receiver.checked(update_pem(reader.get(), text)));
    });
    expect_pem(source, reader.get(), receiver.checked(final_PEM_READER(reader.get())));
}

std::optional<uint64_t> known_size(Source &source) {
    constexpr std::size_t kShort = 1048576;
    (void)source.peek(kShort);
    return source.size();
}

MessageOutline::MessageOutline(std::string source, std::string output, Take content)
    : source_(std::move(source)),
      output_(std::move(output)),
      content_(content ? std::move(content) : [](Octets) {}),
      outline_(made<decltype(outline_)>(new_MESSAGE_OUTLINE(kMostHeld))) {
    must(set_MESSAGE_OUTLINE_output(outline_.get(), Receiver::give, &content_));
}

void MessageOutline::take(Octets octets) {
    constexpr uint32_t kTooLong = 0x52A80047;
    const uint32_t status = content_.checked(
        update_MESSAGE_OUTLINE(outline_.get(), octets.data(), static_cast<uint32_t>(octets.size())));
    if (status == kTooLong) {
        throw Failure(source_ + ": has more than " + std::to_string(kMostHeldMegabytes) +
                      " MB beside its content");
    }
    if (status != 0) throw Failure(source_ + ": cannot be decoded: " + status_sentence(status));
}

MessageOutline::Written MessageOutline::write() const {
    uint8_t *octets = nullptr;
    uint32_t size = 0;
    uint64_t content_size = 0;
    const uint32_t status = write_MESSAGE_OUTLINE(outline_.get(), &octets, &size, &content_size);
    if (status != 0) throw Failure(source_ + ": cannot be decoded: " + status_sentence(status));
    const Buffer owner(octets, size);
    return {made<Node>(decodeToDERSequence_n(octets, size)), content_size,
            get_MESSAGE_OUTLINE_content_tag(outline_.get())};
}

Json MessageOutline::describe() const {
    const Written written = write();
    Json json = {{"source", source_}};
    if (!output_.empty()) json["output"] = output_;
    json.update(describe_node(source_, written.node.get()));
    const char *place = json.contains("encrypted_content") ? "encrypted_content" : "content";
    if (written.content_size != UINT64_MAX) json[place]["octets"] = written.content_size;
    return json;
}

MessageTarget::MessageTarget(const std::string &path, const std::string &label, MessageOutline *outline)
    : target_(path), text_([this](Octets text) { target_.write(text); }), outline_(outline) {
    if (label.empty()) return;
    pem_ = made<decltype(pem_)>(new_PEM_WRITER(label.c_str(), Receiver::give, &text_));
}

void MessageTarget::write(Octets octets) {
    if (outline_ != nullptr) outline_->take(octets);
    if (pem_ == nullptr) return target_.write(octets);
    must(text_.checked(update_PEM_WRITER(pem_.get(), octets.data(), static_cast<uint32_t>(octets.size()))));
}

void MessageTarget::finish() {
    if (pem_ != nullptr) must(text_.checked(final_PEM_WRITER(pem_.get())));
    target_.finish();
}

ContentTarget::ContentTarget(const std::string &path, bool may_be_unverified)
    : receiver_([this](Octets octets) { give(octets); }) {
    if (!path.empty()) target_.emplace(path);
    holds_back_ = target_ && target_->is_stream() && !may_be_unverified;
}

void ContentTarget::give(Octets octets) {
    if (is_dropped_) return;
    target_->write(octets);
    size_ += octets.size();
}

uint32_t ContentTarget::checked(const std::string &source, uint32_t status) {
    constexpr uint32_t kSignedTooLong = 0x52810047;
    constexpr uint32_t kEnvelopedTooLong = 0x52A10047;
    constexpr uint32_t kReason = 0xFFFF;
    constexpr uint32_t kNoMemory = 0x3C;
    (void)receiver_.checked(status);
    if ((status & kReason) == kNoMemory) throw std::bad_alloc();
    if (status == kSignedTooLong || status == kEnvelopedTooLong) {
        throw Failure(
            source +
            ": has more than 1 MB of content, which is held back until it is verified; give --output a "
            "regular file, or --unverified-output");
    }
    return status;
}

void ContentTarget::finish() {
    if (target_) target_->finish();
}

}  // namespace tool
