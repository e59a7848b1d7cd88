// Telling classes apart without the language's own type information.
#pragma once

namespace korva::framework {

/// Identifies a class: the address of a static of its own.
using TypeTag = const void*;

namespace detail {

template <class T>
inline constexpr char typeTagOf = 0;

}  // namespace detail

template <class T>
TypeTag typeTag() noexcept {
    return &detail::typeTagOf<T>;
}

}  // namespace korva::framework
