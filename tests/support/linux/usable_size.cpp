#include "tests/support/usable_size.h"

#include <malloc.h>

namespace korva::test {

std::size_t usableSize(void* memory) noexcept {
    return malloc_usable_size(memory);
}

}  // namespace korva::test
