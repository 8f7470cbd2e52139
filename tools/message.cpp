#include "message.hpp"

#include "output.hpp"
#include "record.hpp"

namespace tool {

Message new_message(int32_t type) {
    Message message = made<Message>(new_P7_CONTENT_INFO());
    must(set_PKCS7_Type(message.get(), type));
    return message;
}

Message read_message(const std::string &path) {
    return decode_message(Input(path));
}

Message decode_message(const Input &input) {
    const Block &block = input.blocks().front();
    expect_contents(block);
    return Message(decode_record(block, Seq_to_P7_CONTENT_INFO));
}

void write_message(const std::string &path, const P7_CONTENT_INFO *message, bool as_der) {
    constexpr uint32_t kFailed = 0xFFFFFFFF;
    uint8_t *octets = nullptr;
    char *text = nullptr;
    const uint32_t size = as_der ? TLX_WRITE_DER(P7_CONTENT_INFO, message, &octets)
                                 : TLX_WRITE_PEM(P7_CONTENT_INFO, message, "PKCS7", &text);
    const Owned<uint8_t, tlx_free> owned_octets(octets);
    const Text owned_text(text);
    if (size == kFailed) throw Failure(path + ": the message cannot be encoded");
    write_octets(path, {as_der ? octets : reinterpret_cast<const uint8_t *>(text), size});
}

int32_t type_of(const P7_CONTENT_INFO *message) {
    return static_cast<int32_t>(index_from_OBJECT_IDENTIFIER(message->contentType));
}

std::string type_name(const OBJECT_IDENTIFIER *type) {
    switch (index_from_OBJECT_IDENTIFIER(type)) {
        case TLX_OID_PKCS7_DATA:
            return "data";
        case TLX_OID_PKCS7_SIGNED_DATA:
            return "signed data";
        case TLX_OID_PKCS7_ENVELOPED_DATA:
            return "enveloped data";
        case TLX_OID_PKCS7_SIGNED_AND_ENVELOPED_DATA:
            return "signed-and-enveloped data";
        case TLX_OID_PKCS7_DIGESTED_DATA:
            return "digested data";
        case TLX_OID_PKCS7_ENCRYPTED_DATA:
            return "encrypted data";
        case TLX_OID_KISA_CTL:
            return "certificate trust list";
        default:
            break;
    }
    const std::string dotted = dotted_text(type);
    if (dotted == "1.2.840.113549.1.9.16.1.2") return "authenticated data";
    if (dotted == "1.2.840.113549.1.9.16.1.23") return "authenticated-enveloped data";
    if (dotted == "1.2.840.113549.1.9.16.1.4") return "time stamp";
    return algorithm_name(type);
}

}  // namespace tool
