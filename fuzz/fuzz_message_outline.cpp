// Messages without their content, after an octet that chooses the pieces and the limit: the outline is that
// of one piece, and its own outline. What is written of it with its content has the same outline and content.
#include <tlxpki/message_outline.h>

#include "values.hpp"

namespace {

using fuzz::Held;
using fuzz::require;

struct Outline {
    std::uint32_t status;
    std::string octets;
    std::uint64_t content_size;
    std::uint32_t content_tag;
    std::string content;

    bool operator==(const Outline &) const = default;
};

std::uint32_t append(void *context, const std::uint8_t *octets, std::uint32_t len) {
    static_cast<std::string *>(context)->append(reinterpret_cast<const char *>(octets), len);
    return 0;
}

template <typename Next>
Outline outline_of(const std::uint8_t *octets, std::size_t size, std::uint32_t limit, Next next) {
    Outline outline = {};
    const Held<free_MESSAGE_OUTLINE> reading(new_MESSAGE_OUTLINE(limit));
    require(set_MESSAGE_OUTLINE_output(reading.get(), append, &outline.content) == 0);
    for (std::size_t at = 0; at < size && outline.status == 0;) {
        const std::size_t piece = std::min<std::size_t>(next(), size - at);
        outline.status =
            update_MESSAGE_OUTLINE(reading.get(), octets + at, static_cast<std::uint32_t>(piece));
        at += piece;
    }
    std::uint8_t *written = nullptr;
    std::uint32_t len = 0;
    const std::uint32_t status = write_MESSAGE_OUTLINE(reading.get(), &written, &len, &outline.content_size);
    require((status == 0) == (written != nullptr));
    outline.octets = fuzz::taken(written, len);
    if (outline.status == 0) outline.status = status;
    outline.content_tag = get_MESSAGE_OUTLINE_content_tag(reading.get());
    return outline;
}

/// The message with its content again.
std::string written(const Outline &outline, std::uint32_t form) {
    std::string message;
    OUTLINE_WRITER_SETTINGS settings = {};
    settings.output = append;
    settings.context = &message;
    settings.message = reinterpret_cast<const std::uint8_t *>(outline.octets.data());
    settings.len = static_cast<std::uint32_t>(outline.octets.size());
    settings.form = form;
    settings.size = outline.content_size;
    settings.content_tag = outline.content_tag;
    const Held<free_OUTLINE_WRITER> writer(new_OUTLINE_WRITER(&settings));
    const auto *content = reinterpret_cast<const std::uint8_t *>(outline.content.data());
    const auto size = static_cast<std::uint32_t>(outline.content.size());
    require(update_OUTLINE_WRITER(writer.get(), content, size) == 0);
    require(final_OUTLINE_WRITER(writer.get()) == 0);
    return message;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint8_t *message = data + 1;
    const std::size_t length = size - 1;
    const std::uint32_t limit = data[0] < 0x80 ? 0 : data[0];
    std::uint32_t piece = data[0];
    const auto next_piece = [&] { return piece = (piece * 5 + 3) % 41; };
    const Outline whole = outline_of(message, length, limit, [&] { return length; });
    require(whole == outline_of(message, length, limit, next_piece));
    if (whole.status != 0) return 0;
    require(whole.content_size == UINT64_MAX || whole.content_size <= length);
    require(limit == 0 || whole == outline_of(message, length, 0, [&] { return length; }));
    const auto *octets = reinterpret_cast<const std::uint8_t *>(whole.octets.data());
    const Outline again = outline_of(octets, whole.octets.size(), 0, [&] { return whole.octets.size(); });
    require(again.status == 0 && again.octets == whole.octets && again.content_size == UINT64_MAX);
    if (whole.content_tag == 0) return 0;
    for (const std::uint32_t form : {TLX_MESSAGE_DER, TLX_MESSAGE_INDEFINITE}) {
        if (form == TLX_MESSAGE_INDEFINITE && whole.content_tag != TLX_TAG_OCTET_STRING) continue;
        const std::string message_again = written(whole, form);
        const auto *octets_again = reinterpret_cast<const std::uint8_t *>(message_again.data());
        require(whole == outline_of(octets_again, message_again.size(), 0, next_piece));
    }
    return 0;
}
