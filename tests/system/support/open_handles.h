// What a process holds of the system.
#pragma once

#include <cstddef>

namespace korva::test {

/// Open descriptors, or handles.  [any]
[[nodiscard]] std::size_t openHandles();

/// Bytes of the heap that are in use, as its allocator knows them.  [any]
[[nodiscard]] std::size_t bytesInUse();

}  // namespace korva::test
