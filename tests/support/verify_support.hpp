// Stores of chains, and the results of verifications as texts.
#pragma once

#include <tlxpki/verify.h>

#include "support/chain_builder.hpp"

namespace tlx_test {

using Store = Held<free_VERIFY_STORE>;
using Result = Held<free_VERIFY_RESULT>;

std::uint32_t size_of(const Octets &octets);

void add(VERIFY_STORE *store, const CertSpec &spec, bool is_anchor = false);

/// The anchor is the last certificate, the target the first.
Store store_of(const Chain &chain);

/// "valid", or the findings from the first, each with its place in the path, where the target is 0.
std::string text_of(const VERIFY_RESULT *result);

}  // namespace tlx_test
