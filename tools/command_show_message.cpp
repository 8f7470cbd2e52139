// tlxpki message show: describes a message.
#include "commands.hpp"
#include "describe_cms.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "message_pieces.hpp"

namespace tool {

namespace {

Json describe_whole(Source &source) {
    const Input input(source.rest().octets(), source.name());
    const Block &block = input.blocks().front();
    expect_contents(block);
    const Node node(decodeToDERSequence_n(block.octets.data(), static_cast<uint32_t>(block.octets.size())));
    Json json = {{"source", source.name()}};
    json.update(describe_node(block.source, node.get()));
    return json;
}

/// A short message is read whole, and shown with all of its content in words.
Json describe(Source &source) {
    constexpr std::size_t kShort = 1048576;
    const bool is_short = source.peek(kShort).size() < kShort;
    const uint32_t type = type_of(source);
    if (is_short || type == TLX_MESSAGE_OTHER || type == TLX_MESSAGE_DATA) return describe_whole(source);
    MessageOutline outline(source.name());
    Waiting waiting("Reading");
    read_message_pieces(source, waiting, [&outline](Octets octets) { outline.take(octets); });
    return outline.describe();
}

}  // namespace

int run_show_message(const ShowMessageOptions &options) {
    Source source(options.message);
    print_document(describe(source), options.json);
    return kGood;
}

}  // namespace tool
