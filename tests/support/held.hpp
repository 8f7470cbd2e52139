// An owner that frees with the record's own function: Held<free_X509_CERT>.
#pragma once

#include "der/owned.hpp"

namespace tlx_test {

template <typename T>
T freed_by(void (*free)(T *));
template <auto Free>
using Held = std::unique_ptr<decltype(freed_by(Free)), tlx::FreeWith<Free>>;

}  // namespace tlx_test
