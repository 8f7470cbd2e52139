// Options that take one name of a list.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "failure.hpp"

namespace tool {

/// A name on the command line, and what it stands for.
struct Choice {
    const char *name;
    uint32_t value;
};

[[nodiscard]] inline std::vector<std::string> names_of(std::span<const Choice> choices) {
    std::vector<std::string> names;
    for (const Choice &choice : choices) {
        names.emplace_back(choice.name);
    }
    return names;
}

/// Throws Failure for a name that is not in the list.
[[nodiscard]] inline uint32_t value_of(std::span<const Choice> choices, const std::string &name) {
    for (const Choice &choice : choices) {
        if (name == choice.name) return choice.value;
    }
    throw Failure("\"" + name + "\" is no choice");
}

}  // namespace tool
