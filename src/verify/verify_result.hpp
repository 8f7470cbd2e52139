// The inside of VERIFY_STORE and VERIFY_RESULT.
#pragma once

#include <tlxpki/verify.h>

#include "der/buffer.hpp"
#include "verify/object.hpp"
#include "verify/search.hpp"

struct VERIFY_STORE {
    tlx::Store store;
};

/// Keeps copies of the octets, so that nothing else has to outlive it.
struct VERIFY_RESULT {
    struct Range {
        std::size_t start;
        std::size_t size;
    };

    tlx::Array<tlx::Finding> findings;
    tlx::Array<tlx::Finding> warnings;
    tlx::Array<tlx::RevocationState> states;
    tlx::Array<Range> certificates;
    tlx::Array<Range> policies;
    tlx::Array<Range> qualifiers;  ///< one for each policy
    tlx::Array<Range> tried;       ///< certificates, one for each attempt
    tlx::Array<tlx::Finding> attempts;
    tlx::Buffer octets;
    tlx::u32 candidates = 0;
    tlx::u32 paths = 0;

    /// False when memory runs out.
    [[nodiscard]] bool keep(tlx::Array<Range> &ranges, tlx::Bytes bytes) noexcept {
        const Range range = {octets.size(), bytes.size()};
        octets.append(bytes);
        return octets.ok() && ranges.append(range);
    }
    [[nodiscard]] tlx::Bytes bytes_of(const Range &range) const noexcept {
        return octets.bytes().subspan(range.start, range.size);
    }
};
