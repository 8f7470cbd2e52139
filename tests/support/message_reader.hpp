// Signed messages in pieces.
#pragma once

#include <gtest/gtest.h>
#include <tlxpki/message_stream.h>

#include <algorithm>
#include <set>

#include "support/held.hpp"
#include "support/octets.hpp"

namespace tlx_test {

using MessageReader = Held<free_SIGNED_MESSAGE_READER>;
using SignerReports = Held<free_P7_SIGNER_REPORTS>;

/// What a reader returns when memory runs out.
inline const std::set<std::uint32_t> kNoMemory = {0x5280003C, 0x5282003C, 0x4B30003C, 0x52820104};

/// Appends what is given out to the Octets that are the context.
inline std::uint32_t collect_octets(void *context, const std::uint8_t *octets, std::uint32_t len) {
    auto *collected = static_cast<Octets *>(context);
    collected->insert(collected->end(), octets, octets + len);
    return 0;
}

/// Gives the Octets that are the context once more.
inline std::uint32_t give_octets(void *context, const std::uint8_t **octets, std::uint64_t *len) {
    const auto *given = static_cast<const Octets *>(context);
    *octets = given->data();
    *len = given->size();
    return 0;
}

/// Feeds octets in pieces up to the first status that is not 0.
template <typename Update>
std::uint32_t in_pieces(const Octets &octets, std::size_t piece, Update update) {
    for (std::size_t at = 0; at < octets.size(); at += piece) {
        const std::size_t size = std::min(piece, octets.size() - at);
        const std::uint32_t status = update(octets.data() + at, static_cast<std::uint32_t>(size));
        if (status != 0) return status;
    }
    return 0;
}

/// Reads a message, and the content of a detached one, to the end.
inline std::uint32_t read_in_pieces(const SIGNED_MESSAGE_READER_SETTINGS &settings, const Octets &message,
                                    std::size_t piece, const Octets *content = nullptr,
                                    SignerReports *reports = nullptr) {
    const MessageReader reader(new_SIGNED_MESSAGE_READER(&settings));
    if (reader == nullptr) return 0x5280003C;
    std::uint32_t status = in_pieces(message, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
        return update_SIGNED_MESSAGE_READER(reader.get(), octets, len);
    });
    if (status != 0) return status;
    if (content != nullptr) {
        const std::uint8_t none = 0;
        status = update_SIGNED_MESSAGE_READER_content(reader.get(), &none, 0);
        if (status == 0)
            status = in_pieces(*content, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
                return update_SIGNED_MESSAGE_READER_content(reader.get(), octets, len);
            });
        if (status != 0) return status;
    }
    P7_SIGNER_REPORTS *made = nullptr;
    status = final_SIGNED_MESSAGE_READER(reader.get(), &made);
    SignerReports owner(made);
    if (reports != nullptr) *reports = std::move(owner);
    return status;
}

/// Writes a message of content.
inline std::uint32_t write_in_pieces(const SIGNED_MESSAGE_WRITER_SETTINGS &settings, const Octets &content,
                                     std::size_t piece) {
    const Held<free_SIGNED_MESSAGE_WRITER> writer(new_SIGNED_MESSAGE_WRITER(&settings));
    if (writer == nullptr) return 0x5283003C;
    const std::uint32_t status =
        in_pieces(content, piece, [&](const std::uint8_t *octets, std::uint32_t len) {
            return update_SIGNED_MESSAGE_WRITER(writer.get(), octets, len);
        });
    return status != 0 ? status : final_SIGNED_MESSAGE_WRITER(writer.get());
}

}  // namespace tlx_test
