// The ways in which the command ends.
#pragma once

#include <stdexcept>

namespace tool {

enum ExitStatus { kGood = 0, kNotValid = 1, kUnusable = 2 };

/// Input or arguments that cannot be used: the message goes to standard error, and the command ends with
/// status 2.
class Failure : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace tool
