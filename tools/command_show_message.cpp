// tlxpki message show: describes a message.
#include "commands.hpp"
#include "describe_message.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "message.hpp"

namespace tool {

int run_show_message(const ShowMessageOptions &options) {
    const Message message = read_message(options.message);
    print_document(message_document(source_of(options.message), message.get()), options.json);
    return kGood;
}

}  // namespace tool
