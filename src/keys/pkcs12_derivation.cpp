#include "keys/pkcs12_derivation.hpp"

#include <tlxpki/convert.h>

#include <algorithm>
#include <cstring>

#include "der/buffer.hpp"

using namespace tlx;

namespace {

constexpr std::size_t kMostBlockLength = 144;  // of SHA3-224
constexpr std::size_t kMostInput = 0x7FFFFFFF;

std::size_t round_up(std::size_t size, std::size_t unit) noexcept {
    return (size + unit - 1) / unit * unit;
}

/// Fills `to` with copies of `pattern`, the last one cut.
void repeat(Bytes pattern, std::span<u8> to) noexcept {
    for (std::size_t i = 0; i < to.size(); ++i) {
        to[i] = pattern[i % pattern.size()];
    }
}

/// block = (block + b + 1) mod 2^(8 v), as big-endian numbers of v octets
void add_with_one(std::span<u8> block, const u8 *b) noexcept {
    u32 carry = 1;
    for (std::size_t i = block.size(); i-- > 0;) {
        carry += u32{block[i]} + b[i];
        block[i] = static_cast<u8>(carry);
        carry >>= 8U;
    }
}

/// The state of one derivation. The letters are those of RFC 7292, appendix B.2.
class Derivation {
  public:
    Derivation(DIGEST_UNIT *unit, u32 digest_id, std::size_t v, std::span<u8> input) noexcept
        : unit_(unit), digest_id_(digest_id), v_(v), i_(input) {}
    ~Derivation() {
        tlx_wipe(a_, sizeof a_);
        tlx_wipe(b_, sizeof b_);
    }
    Derivation(const Derivation &) = delete;
    Derivation &operator=(const Derivation &) = delete;

    bool derive(u8 id, u32 iterations, std::span<u8> out) noexcept {
        std::memset(d_, id, v_);
        while (next_a(iterations)) {
            const std::size_t piece = std::min<std::size_t>(u_, out.size());
            std::memcpy(out.data(), a_, piece);
            out = out.subspan(piece);
            if (out.empty()) return true;
            next_i();
        }
        return false;
    }

  private:
    /// A = Hash(Hash(... Hash(D || I)))
    bool next_a(u32 iterations) noexcept {
        bool done = init_Digest(unit_, digest_id_) == 0 &&
                    update_Digest(unit_, d_, static_cast<u32>(v_)) == 0 &&
                    update_Digest(unit_, i_.data(), static_cast<u32>(i_.size())) == 0 &&
                    final_Digest(unit_, a_, &u_) == 0;
        for (u32 round = 1; done && round < iterations; ++round) {
            done = init_Digest(unit_, digest_id_) == 0 && update_Digest(unit_, a_, u_) == 0 &&
                   final_Digest(unit_, a_, &u_) == 0;
        }
        return done;
    }
    /// Adds B + 1 to each block of I.
    void next_i() noexcept {
        repeat({a_, u_}, {b_, v_});
        for (std::size_t at = 0; at < i_.size(); at += v_) {
            add_with_one(i_.subspan(at, v_), b_);
        }
    }

    DIGEST_UNIT *unit_;
    u32 digest_id_;
    std::size_t v_;
    std::span<u8> i_;
    u32 u_ = 0;
    u8 d_[kMostBlockLength] = {};
    u8 a_[TLX_DIGEST_MAX_LENGTH] = {};
    u8 b_[kMostBlockLength] = {};
};

bool derive_with(DIGEST_UNIT *unit, const Pkcs12Derivation &from, u8 id, std::span<u8> out) noexcept {
    const std::size_t v = get_DigestBlockLength(from.digest_id);
    if (v == 0 || v > kMostBlockLength) return false;
    const std::size_t salt_size = round_up(from.salt.size(), v);
    const std::size_t size = salt_size + round_up(from.password.size(), v);
    if (size >= kMostInput) return false;
    SecretBytes input(size);
    if (!input) return false;
    const std::span<u8> all(input.data(), size);
    repeat(from.salt, all.first(salt_size));
    repeat(from.password, all.subspan(salt_size));
    return Derivation(unit, from.digest_id, v, all).derive(id, from.iterations, out);
}

}  // namespace

namespace tlx {

bool Pkcs12Derivation::derive(u8 purpose, std::span<u8> out) const noexcept {
    const Owned<DIGEST_UNIT> unit(new_DIGEST_UNIT());
    if (unit != nullptr && derive_with(unit.get(), *this, purpose, out)) return true;
    tlx_wipe(out.data(), out.size());
    return false;
}

}  // namespace tlx

uint32_t get_PKCS12_key_UNI(const uint8_t *password, uint32_t password_len, const uint8_t *salt,
                            uint32_t salt_len, uint8_t id, uint32_t iterations, uint32_t key_len,
                            uint8_t *key, DIGEST_UNIT *unit) {
    if ((password == nullptr && password_len != 0) || (salt == nullptr && salt_len != 0) || key == nullptr) {
        return 1;
    }
    const Pkcs12Derivation from = {
        get_DIGEST_UNIT_id(unit), {password, password_len}, {salt, salt_len}, iterations};
    if (derive_with(unit, from, id, {key, key_len})) return 0;
    tlx_wipe(key, key_len);
    return 1;
}

uint32_t gen_PKCS12_key_ASC(const char *password, uint32_t password_len, const uint8_t *salt,
                            uint32_t salt_len, uint8_t id, uint32_t iterations, uint32_t key_len,
                            uint8_t *key, DIGEST_UNIT *unit) {
    if (password == nullptr || password_len == 0) {
        return get_PKCS12_key_UNI(nullptr, 0, salt, salt_len, id, iterations, key_len, key, unit);
    }
    u8 *units = nullptr;
    const u32 len = ascTouni(password, password_len, &units);
    if (len == 0) {
        if (key != nullptr) tlx_wipe(key, key_len);
        return 1;
    }
    const u32 status = get_PKCS12_key_UNI(units, len, salt, salt_len, id, iterations, key_len, key, unit);
    wipe_and_free(units, len);
    return status;
}
