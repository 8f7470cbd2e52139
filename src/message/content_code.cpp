#include "message/content_code.hpp"

using namespace tlx;

AttributesHeader::AttributesHeader(const Element &attributes) noexcept {
    u8 length[5];
    const std::size_t count = write_length(static_cast<u32>(attributes.contents.size()), length);
    octets_[0] = kSet;
    std::memcpy(octets_ + 1, length, count);
    size_ = 1 + count;
}

/// In the same time wherever the octets differ.
bool ContentCode::Result::is(Bytes expected) const noexcept {
    if (expected.size() != length) return false;
    u8 difference = 0;
    for (u32 i = 0; i < length; ++i) {
        difference |= static_cast<u8>(octets[i] ^ expected[i]);
    }
    return difference == 0;
}

bool ContentCode::start_digest(u32 digest_id) noexcept {
    digest_.reset(new_DIGEST_UNIT());
    return digest_ && init_Digest(digest_.get(), digest_id) == 0;
}

bool ContentCode::start_code(u32 digest_id, Bytes key) noexcept {
    code_.reset(new_HMAC_UNIT());
    return code_ && init_HMAC(code_.get(), digest_id, key.data(), static_cast<u32>(key.size())) == 0;
}

bool ContentCode::update(Bytes octets) noexcept {
    const auto size = static_cast<u32>(octets.size());
    return (!digest_ || update_Digest(digest_.get(), octets.data(), size) == 0) &&
           (!code_ || update_HMAC(code_.get(), octets.data(), size) == 0);
}

bool ContentCode::finish_digest(Result &result) noexcept {
    return digest_ && final_Digest(digest_.get(), result.octets, &result.length) == 0;
}

bool ContentCode::finish_code(const Element *attributes, Result &result) noexcept {
    if (!code_) return false;
    if (attributes != nullptr) {
        const AttributesHeader header(*attributes);
        if (reset_HMAC(code_.get()) != 0) return false;
        const auto update_code = [&](Bytes octets) {
            return update_HMAC(code_.get(), octets.data(), static_cast<u32>(octets.size())) == 0;
        };
        if (!update_code(header.bytes()) || !update_code(attributes->contents)) return false;
    }
    return final_HMAC(code_.get(), result.octets, &result.length) == 0;
}
