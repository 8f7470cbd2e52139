// The blocks of a PEM text, or a whole DER file.
#include <tlxcrypto/file.h>
#include <tlxpki/encoded_block.h>

#include <algorithm>
#include <new>

#include "asn1/base64.hpp"
#include "asn1/pem_scan.hpp"
#include "der/buffer.hpp"
#include "der/element.hpp"
#include "der/owned.hpp"

using namespace tlx;

namespace {

using std::string_view;

constexpr string_view kSpaces = " \t";
constexpr u32 kOutOfMemory = 0x4E01003C;

void free_block(void *value) {
    auto *block = static_cast<ENCODED_BLOCK *>(value);
    wipe_and_free(block->contents, block->contents_len);
    tlx_free(block);
}
using OwnedBlock = std::unique_ptr<ENCODED_BLOCK, FreeWith<free_block>>;

void free_blocks(ENCODED_BLOCKS *blocks) {
    free_STACK_values(blocks, free_block);
}
using OwnedBlocks = std::unique_ptr<ENCODED_BLOCKS, FreeWith<free_blocks>>;

Bytes bytes_of(string_view text) noexcept {
    return {reinterpret_cast<const u8 *>(text.data()), text.size()};
}

/// A block with its label behind it, in one allocation: a hostile file may hold millions.
OwnedBlock new_block(string_view label) noexcept {
    auto *room = static_cast<u8 *>(TLX_ALLOCATE(sizeof(ENCODED_BLOCK) + label.size() + 1));
    if (room == nullptr) return nullptr;
    auto *text = reinterpret_cast<char *>(room + sizeof(ENCODED_BLOCK));
    std::copy(label.begin(), label.end(), text);
    text[label.size()] = '\0';
    return OwnedBlock(new (room) ENCODED_BLOCK{text, 0, 0, 0, 0, nullptr, 0});
}

/// Counts lines, which end in LF, CR LF or CR, while places in the text come in order.
class LineCounter {
  public:
    explicit LineCounter(string_view text) noexcept : text_(text) {}
    u32 line_of(std::size_t at) noexcept {
        for (; counted_ < at; ++counted_) {
            const bool pair = text_[counted_] == '\r' && part(text_, counted_ + 1).starts_with('\n');
            if (!pair && (text_[counted_] == '\n' || text_[counted_] == '\r')) ++line_;
        }
        return line_;
    }

  private:
    string_view text_;
    std::size_t counted_ = 0;
    u32 line_ = 1;
};

bool copy_contents(ENCODED_BLOCK &block, Bytes octets) noexcept {
    block.contents = copy_terminated(octets);
    block.contents_len = static_cast<u32>(octets.size());
    return block.contents != nullptr;
}

/// Leaves out what OpenSSL puts after the certificate, and sees that nothing else follows the element.
void check_element(ENCODED_BLOCK &block) noexcept {
    Element element;
    const bool readable = read_element({block.contents, block.contents_len}, element);
    if (readable && string_view(block.label) == "TRUSTED CERTIFICATE") {
        block.contents_len = static_cast<u32>(element.whole.size());
    }
    if (!readable || element.whole.size() != block.contents_len) block.status = 0x4E01004F;
}

/// Base64 without spaces. False when memory runs out.
bool decode_without_spaces(ENCODED_BLOCK &block, Bytes base64) noexcept {
    const std::size_t room = base64_room(base64.size());
    auto *octets = static_cast<u8 *>(TLX_ALLOCATE(room));
    if (octets == nullptr) return false;
    const u8 *end = decode_base64(base64, octets);
    if (end == nullptr || end == octets) {
        wipe_and_free(octets, room);
        block.status = 0x4E010012;
        return true;
    }
    block.contents = octets;
    block.contents_len = static_cast<u32>(end - octets);
    check_element(block);
    return true;
}

bool decode_base64_text(ENCODED_BLOCK &block, string_view base64) noexcept {
    if (base64.find_first_of(kSpaces) == string_view::npos) {
        return decode_without_spaces(block, bytes_of(base64));
    }
    SecretBytes text(base64.size());
    if (!text) return false;
    const u8 *end = std::ranges::copy_if(bytes_of(base64), text.data(), [](u8 c) {
                        return kSpaces.find(static_cast<char>(c)) == string_view::npos;
                    }).out;
    return decode_without_spaces(block, {text.data(), end});
}

/// False when memory runs out.
bool decode_block(ENCODED_BLOCK &block, const PemBlock &pem) noexcept {
    block.status = pem.status;
    if (pem.status != 0) return true;
    string_view base64 = pem.body;
    const string_view headers = take_headers(base64);
    if (headers.find(",ENCRYPTED") == string_view::npos) return decode_base64_text(block, base64);
    block.status = 0x4E010114;
    return copy_contents(block, bytes_of(pem.whole));
}

u32 add_block(ENCODED_BLOCKS *blocks, OwnedBlock block) noexcept {
    if (push_STACK_value(blocks, block.get()) != 0) return kOutOfMemory;
    static_cast<void>(block.release());
    return 0;
}

u32 add_der(ENCODED_BLOCKS *blocks, Bytes octets) noexcept {
    OwnedBlock block = new_block({});
    if (!block || !copy_contents(*block, octets)) return kOutOfMemory;
    block->length = block->contents_len;
    check_element(*block);
    return add_block(blocks, std::move(block));
}

u32 add_pem(ENCODED_BLOCKS *blocks, string_view text, PemScanner &scanner) noexcept {
    LineCounter lines(text);
    for (PemBlock pem; scanner.next(pem);) {
        OwnedBlock block = new_block(pem.label);
        if (!block || !decode_block(*block, pem)) return kOutOfMemory;
        const auto offset = static_cast<std::size_t>(pem.whole.data() - text.data());
        block->offset = static_cast<u32>(offset);
        block->length = static_cast<u32>(pem.whole.size());
        block->line = lines.line_of(offset);
        if (add_block(blocks, std::move(block)) != 0) return kOutOfMemory;
    }
    return 0;
}

}  // namespace

uint32_t readENCODED_BLOCKS_from_Buffer(const uint8_t *octets, uint32_t len, ENCODED_BLOCKS **out) {
    if (out == nullptr || (octets == nullptr && len != 0)) return 0x4E010049;
    if (len == 0) return 0x4E01002B;
    OwnedBlocks blocks(new_STACK());
    if (!blocks) return 0x4E01003C;
    const string_view text(reinterpret_cast<const char *>(octets), len);
    PemScanner scanner(text);
    const bool is_pem = scanner.is_pem();
    const u32 status = is_pem ? add_pem(blocks.get(), text, scanner) : add_der(blocks.get(), {octets, len});
    if (status == 0) *out = blocks.release();
    return status;
}

uint32_t readENCODED_BLOCKS_from_File(const char *path, ENCODED_BLOCKS **out) {
    if (path == nullptr || out == nullptr) return 0x4E010049;
    u8 *octets = nullptr;
    u32 len = 0;
    if (File_to_binary(path, &octets, &len) != 0) return 0x4E01002B;
    const u32 status = readENCODED_BLOCKS_from_Buffer(octets, len, out);
    wipe_and_free(octets, len);
    return status;
}

uint32_t get_ENCODED_BLOCKS_count(const ENCODED_BLOCKS *blocks) {
    return get_STACK_count(blocks);
}

const ENCODED_BLOCK *get_ENCODED_BLOCKS_child(const ENCODED_BLOCKS *blocks, uint32_t index) {
    return static_cast<const ENCODED_BLOCK *>(get_STACK_value(blocks, index));
}

void free_ENCODED_BLOCKS(ENCODED_BLOCKS *blocks) {
    free_blocks(blocks);
}
