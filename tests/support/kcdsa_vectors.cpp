#include "support/kcdsa_vectors.hpp"

#include <gtest/gtest.h>

#include <fstream>

#include "support/crypto_values.hpp"
#include "support/rows.hpp"

namespace tlx_test {

const std::vector<KcdsaVector> &kcdsa_vectors() {
    static const std::vector<KcdsaVector> all = [] {
        std::vector<KcdsaVector> read;
        std::ifstream file(TLX_TEST_DATA "/kcdsa.txt");
        for (std::string line; std::getline(file, line);) {
            if (line.empty() || line[0] == '#') continue;
            if (line[0] == '[') {
                const std::string name = line.substr(1, line.size() - 2);
                const Row digest{line, {name.substr(name.size() - 6)}};
                read.push_back({name, digest.number(0), {}});
            } else {
                read.back().values[line[0]] = line.substr(4);
            }
        }
        return read;
    }();
    return all;
}

Held<free_KCDSA> kcdsa_unit(const KcdsaVector &vector, const std::string &keys) {
    Held<free_KCDSA> unit(new_KCDSA());
    EXPECT_EQ(set_KCDSA_params(unit.get(), number(vector['p']).get(), number(vector['q']).get(),
                               number(vector['g']).get()),
              0U);
    for (const char key : keys) {
        const auto set = key == 'x' ? set_KCDSA_private : set_KCDSA_public;
        EXPECT_EQ(set(unit.get(), number(vector[key]).get()), 0U);
    }
    return unit;
}

}  // namespace tlx_test
