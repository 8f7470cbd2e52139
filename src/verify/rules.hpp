// The rules that a verification applies.
#pragma once

#include "der/types.hpp"

namespace tlx {

/// A rule is its status. 0 stands for none.
enum class Rule : u32 {
    kNone = 0,
#define RULE(name, status, section, text) name = (status),
#include "verify/rules.inc"
#undef RULE
};

}  // namespace tlx
