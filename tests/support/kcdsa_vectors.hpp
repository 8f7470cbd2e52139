// The published vectors of KCDSA, the sections of data/kcdsa.txt.
#pragma once

#include <tlxcrypto.h>

#include <map>
#include <string>
#include <vector>

#include "support/held.hpp"

namespace tlx_test {

struct KcdsaVector {
    std::string name;  ///< "A1024B160HAS160"
    std::uint32_t digest_id = 0;
    std::map<char, std::string> values;  ///< by the letters of the standard, in hexadecimal

    const std::string &operator[](char number) const { return values.at(number); }
};

const std::vector<KcdsaVector> &kcdsa_vectors();

/// The vector's parameters with the keys named: "x", "y" or both.
Held<free_KCDSA> kcdsa_unit(const KcdsaVector &vector, const std::string &keys);

}  // namespace tlx_test
