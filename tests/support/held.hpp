// An owner that frees with the record's own function: Held<free_X509_CERT>.
#pragma once

#include <memory>

namespace tlx_test {

template <typename T>
T freed_by(void (*free)(T *));

template <auto Free>
struct FreeWith {
    template <typename T>
    void operator()(T *record) const {
        Free(record);
    }
};
template <auto Free>
using Held = std::unique_ptr<decltype(freed_by(Free)), FreeWith<Free>>;

}  // namespace tlx_test
