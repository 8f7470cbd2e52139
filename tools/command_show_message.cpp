// tlxpki message show: describes a message.
#include <iostream>

#include "commands.hpp"
#include "describe_message.hpp"
#include "failure.hpp"
#include "input.hpp"
#include "message.hpp"

namespace tool {

int run_show_message(const ShowMessageOptions &options) {
    const Message message = read_message(options.message);
    Json document = message_document(source_of(options.message), message.get());
    if (options.json) {
        print_json(std::cout, document);
        return kGood;
    }
    std::cout << printable(document["source"].get<std::string>()) << ": "
              << document["kind"].get<std::string>() << '\n';
    document.erase("source");
    document.erase("kind");
    print_text(std::cout, document, 2);
    return kGood;
}

}  // namespace tool
