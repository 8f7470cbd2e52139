// Calls an operation without one of its arguments.
#pragma once

#include <gtest/gtest.h>

#include <tuple>
#include <type_traits>

namespace tlx_test {

/// The argument; null if it is the pointer at `place`, which counts down.
template <typename T>
T null_at(T argument, int &place) {
    if constexpr (std::is_pointer_v<T>)
        if (argument != nullptr && place-- == 0) return nullptr;
    return argument;
}

/// Leaves out each pointer in turn, except those that are null anyway. The operation returns `refusal`.
template <typename Result, typename... Arguments>
void expect_refuses_null(std::type_identity_t<Result> refusal, Result (*operation)(Arguments...),
                         std::type_identity_t<Arguments>... arguments) {
    for (int pointer = 0;; ++pointer) {
        int place = pointer;
        const std::tuple<Arguments...> changed{null_at<Arguments>(arguments, place)...};
        if (place >= 0) break;
        EXPECT_EQ(std::apply(operation, changed), refusal) << "without pointer " << pointer;
    }
}

}  // namespace tlx_test
