// What the text benchmarks compare with: libcrypto's Base64 and the C library's iconv.
#pragma once

#include <cstddef>

namespace peer {

int encode_base64(unsigned char *out, const unsigned char *in, int len);
int decode_base64(unsigned char *out, const unsigned char *in, int len);

class Converter {
  public:
    Converter(const char *to, const char *from);
    ~Converter();
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;
    std::size_t convert(const char *in, std::size_t len, char *out, std::size_t room);

  private:
    void *handle_;
};

}  // namespace peer
