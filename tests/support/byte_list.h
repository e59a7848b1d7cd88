// Bytes written as numbers.
#pragma once

#include <cstddef>
#include <vector>

#include "framework/shared_bytes.h"

namespace korva::test {

/// `bytes(0x01, 0xFF)`.
template <class... Number>
[[nodiscard]] std::vector<std::byte> bytes(Number... numbers) {
    return {static_cast<std::byte>(numbers)...};
}

template <class... Number>
[[nodiscard]] framework::SharedBytes sharedBytes(Number... numbers) {
    return framework::SharedBytes(bytes(numbers...));
}

}  // namespace korva::test
