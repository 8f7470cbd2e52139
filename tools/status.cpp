#include "status.hpp"

#include <tlxpki/status.h>

namespace tool {

StatusMeaning status_meaning(uint32_t status) {
    STATUS_TEXT text;
    const bool known = get_STATUS_TEXT(status, &text) == 0;
    const std::string detail = std::string(text.sentence) == text.reason ? "" : text.sentence;
    return {known, text.module, text.operation, text.reason, detail};
}

Json status_json(uint32_t status) {
    const StatusMeaning meaning = status_meaning(status);
    Json json = {{"code", code_text(status)}};
    const auto add = [&json](const char *key, const std::string &text) {
        if (!text.empty()) json[key] = text;
    };
    add("module", meaning.module);
    add("operation", meaning.operation);
    add("reason", meaning.reason);
    add("detail", meaning.detail);
    return json;
}

std::string status_sentence(uint32_t status) {
    const StatusMeaning meaning = status_meaning(status);
    const std::string operation = meaning.operation.empty() ? "" : meaning.operation + ": ";
    return code_text(status) + " (" + operation + meaning.reason + ")";
}

Json exact_status_json(uint32_t status) {
    Json json = status_json(status);
    if (json.contains("detail")) json["reason"] = json["detail"];
    json.erase("detail");
    return json;
}

std::string exact_status_sentence(uint32_t status) {
    return code_text(status) + ", " + exact_status_json(status)["reason"].get<std::string>();
}

}  // namespace tool
