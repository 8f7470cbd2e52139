#include <tlxcrypto/file.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "crypto/hex.hpp"
#include "crypto/memory.hpp"
#include "crypto/platform.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kMostOctets = 0x7FFFFFFF;

struct CloseFile {
    void operator()(std::FILE *file) const noexcept { static_cast<void>(std::fclose(file)); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Without a buffer of its own: a key read or written here leaves no copy behind.
File unbuffered(std::FILE *opened) noexcept {
    File file(opened);
    if (file != nullptr && std::setvbuf(file.get(), nullptr, _IONBF, 0) != 0) file.reset();
    return file;
}

u32 write_all(File file, const u8 *octets, u32 len) noexcept {
    if (file == nullptr) return 1;
    const bool written = len == 0 || std::fwrite(octets, 1, len, file.get()) == len;
    const bool closed = std::fclose(file.release()) == 0;
    return written && closed ? 0 : 1;
}

struct Contents {
    u8 *octets;
    std::size_t len;
    std::size_t capacity;
};

// Makes room to read on and for the zero octet after the end. Wipes the block that it replaces.
bool grow(Contents &contents) noexcept {
    constexpr std::size_t kFirst = 8192;
    constexpr std::size_t kEnough = kMostOctets + 2;  // to see that a file has one octet too many
    const std::size_t capacity = contents.capacity == 0 ? kFirst : std::min(contents.capacity * 2, kEnough);
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(capacity));
    if (octets == nullptr) return false;
    if (contents.len != 0) std::memcpy(octets, contents.octets, contents.len);
    wipe_and_free(contents.octets, contents.len);
    contents.octets = octets;
    contents.capacity = capacity;
    return true;
}

bool read_all(std::FILE *file, Contents &contents) noexcept {
    for (;;) {
        if (contents.capacity - contents.len < 2 && !grow(contents)) return false;
        const std::size_t room = contents.capacity - contents.len - 1;
        const std::size_t got = std::fread(contents.octets + contents.len, 1, room, file);
        contents.len += got;
        if (contents.len > kMostOctets) return false;
        if (got < room) return std::ferror(file) == 0;
    }
}

}  // namespace

extern "C" {

uint32_t File_to_binary(const char *path, uint8_t **octets, uint32_t *len) {
    if (path == nullptr || octets == nullptr || len == nullptr) return 1;
    const File file = unbuffered(open_file(path, "rb"));
    if (file == nullptr) return 1;
    Contents contents = {};
    if (!read_all(file.get(), contents)) {
        wipe_and_free(contents.octets, contents.len);
        return 1;
    }
    contents.octets[contents.len] = 0;
    *octets = contents.octets;
    *len = static_cast<u32>(contents.len);
    return 0;
}

uint32_t binary_to_File(const char *path, const uint8_t *octets, uint32_t len) {
    if (path == nullptr || (octets == nullptr && len != 0)) return 1;
    return write_all(unbuffered(open_file(path, "wb")), octets, len);
}

uint32_t binary_to_private_File(const char *path, const uint8_t *octets, uint32_t len) {
    if (path == nullptr || (octets == nullptr && len != 0)) return 1;
    return write_all(unbuffered(make_private_file(path)), octets, len);
}

void print_hex(const uint8_t *octets, uint32_t len) {
    if (octets == nullptr) return;
    for (u32 i = 0; i < len; ++i) {
        std::putchar(kHexDigits[octets[i] >> 4U]);
        std::putchar(kHexDigits[octets[i] & 15U]);
    }
}

char *binary_to_hex(const uint8_t *octets, uint32_t len) {
    if (octets == nullptr && len != 0) return nullptr;
    const std::size_t digits = std::size_t{len} * 2;
    auto *text = static_cast<char *>(TLX_ALLOCATE(digits + 1));
    if (text == nullptr) return nullptr;
    for (std::size_t i = 0; i < len; ++i) {
        text[2 * i] = kHexDigits[octets[i] >> 4U];
        text[2 * i + 1] = kHexDigits[octets[i] & 15U];
    }
    text[digits] = '\0';
    return text;
}

uint32_t hex_to_binary(const char *hex, uint32_t hex_len, uint8_t **octets, uint32_t *len) {
    if (octets == nullptr || len == nullptr || (hex == nullptr && hex_len != 0) || hex_len % 2 != 0) return 1;
    auto *out = static_cast<u8 *>(TLX_ALLOCATE(hex_len / 2));
    if (out == nullptr) return 1;
    for (std::size_t i = 0; i < hex_len / 2; ++i) {
        const i32 high = hex_value(hex[2 * i]);
        const i32 low = hex_value(hex[2 * i + 1]);
        if (high < 0 || low < 0) {
            wipe_and_free(out, i);
            return 1;
        }
        out[i] = static_cast<u8>(high << 4 | low);
    }
    *octets = out;
    *len = hex_len / 2;
    return 0;
}

}  // extern "C"
