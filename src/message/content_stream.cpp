#include "message/content_stream.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kRoom = CipherStream::kPiece + TLX_CIPHER_MAX_BLOCK_LENGTH;

}  // namespace

CipherStream::~CipherStream() {
    if (room_) tlx_wipe(room_.get(), kRoom);
}

bool CipherStream::start(const ContentAlgorithm &algorithm, const u8 *key, u32 direction) noexcept {
    room_.reset(static_cast<u8 *>(TLX_ALLOCATE_ZEROED(1, kRoom)));
    if (!room_) return false;
    if (algorithm.authenticates) {
        aead_.reset(new_AEAD_UNIT());
        return aead_ && init_AEAD(aead_.get(), algorithm.cipher_id, key, algorithm.iv, algorithm.iv_len,
                                  direction) == 0;
    }
    block_.reset(new_BLOCK_CIPHER_UNIT());
    return block_ && init_BlockCipher(block_.get(), algorithm.cipher_id, key, algorithm.iv, direction) == 0;
}

bool CipherStream::transform(Bytes piece, Bytes &out) noexcept {
    const auto size = static_cast<u32>(piece.size());
    u32 written = size;
    const u32 status = authenticates()
                           ? update_AEAD(aead_.get(), room_.get(), piece.data(), size)
                           : update_BlockCipher(block_.get(), room_.get(), &written, piece.data(), size);
    out = {room_.get(), written};
    return status == 0;
}

bool CipherStream::finish_blocks(Bytes &last) noexcept {
    if (authenticates()) return true;
    u32 written = 0;
    if (final_BlockCipher(block_.get(), room_.get(), &written) != 0) return false;
    last = {room_.get(), written};
    return true;
}

bool CipherStream::add_data(Bytes octets) noexcept {
    return add_AEAD_data(aead_.get(), octets.data(), static_cast<u32>(octets.size())) == 0;
}

bool CipherStream::check_tag(Bytes tag) noexcept {
    return finish_AEAD_decryption(aead_.get(), tag.data(), static_cast<u32>(tag.size())) == 0;
}

HeldContent::~HeldContent() {
    for (const OwnedOctets<u8> &block : blocks_) {
        if (block) tlx_wipe(block.get(), kBlock);
    }
}

bool HeldContent::keep(Bytes octets) noexcept {
    while (!octets.empty()) {
        OwnedOctets<u8> &block = blocks_[size_ / kBlock];
        if (!block) block.reset(static_cast<u8 *>(TLX_ALLOCATE(kBlock)));
        if (!block) return false;
        const std::size_t used = size_ % kBlock;
        const std::size_t taken = std::min(octets.size(), kBlock - used);
        std::memcpy(block.get() + used, octets.data(), taken);
        octets = octets.subspan(taken);
        size_ += taken;
    }
    return true;
}
