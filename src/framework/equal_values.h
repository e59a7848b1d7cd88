// When a value stays the same.
#pragma once

#include <cstring>
#include <type_traits>

namespace korva::framework {

/// Equality of a value's type: bit by bit where equal values have equal bits (integers, flags, identifiers,
/// and records of those), else the type's own `==`. So strings and vectors compare by length and contents,
/// floats as numbers (a NaN is equal to nothing, itself included), references by the object they refer to.
template <class T>
[[nodiscard]] bool equalValues(const T& a, const T& b) {
    if constexpr (std::has_unique_object_representations_v<T>) {
        return std::memcmp(&a, &b, sizeof(T)) == 0;
    } else {
        return a == b;
    }
}

}  // namespace korva::framework
