#include "peer_bench_text.hpp"

#include <iconv.h>
#include <openssl/evp.h>

namespace peer {

int encode_base64(unsigned char *out, const unsigned char *in, int len) {
    return EVP_EncodeBlock(out, in, len);
}

int decode_base64(unsigned char *out, const unsigned char *in, int len) {
    return EVP_DecodeBlock(out, in, len);
}

Converter::Converter(const char *to, const char *from) : handle_(iconv_open(to, from)) {}

Converter::~Converter() {
    iconv_close(handle_);
}

std::size_t Converter::convert(const char *in, std::size_t len, char *out, std::size_t room) {
    char *from = const_cast<char *>(in);
    std::size_t left = room;
    iconv(handle_, &from, &len, &out, &left);
    return room - left;
}

}  // namespace peer
