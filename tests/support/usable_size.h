// What an allocation really takes.
#pragma once

#include <cstddef>

namespace korva::test {

/// The bytes that the system's allocator has set aside for what `malloc` gave.  [any]
[[nodiscard]] std::size_t usableSize(void* memory) noexcept;

}  // namespace korva::test
