// tlxpki message encrypt.
#include <iostream>

#include "commands.hpp"
#include "envelope.hpp"
#include "failure.hpp"
#include "output.hpp"

namespace tool {

int run_encrypt(const EncryptOptions &options) {
    expect_room_for_json(options.json, options.output);
    const Envelope envelope(options.envelope);
    const std::string source = source_of(options.content);
    std::optional<MessageOutline> outline;
    if (options.json) outline.emplace(source, options.output);
    {
        Waiting waiting("Encrypting");
        Source content(options.content);
        MessageTarget target(options.output, options.der ? "" : kMessageLabel, outline ? &*outline : nullptr);
        EnvelopeWriter writer(envelope, target, known_size(content));
        read_pieces(content, waiting, [&writer](Octets octets) { writer.write(octets); });
        writer.finish();
        target.finish();
    }
    if (outline) print_json(std::cout, outline->describe());
    return kGood;
}

}  // namespace tool
