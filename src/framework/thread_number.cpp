#include "framework/thread_number.h"

#include <atomic>

namespace korva::framework::detail {

namespace {

constinit std::atomic<std::uint32_t> lastNumber{0};

}  // namespace

constinit thread_local std::uint32_t threadNumber = 0;

std::uint32_t numberThisThread() noexcept {
    do {
        threadNumber = lastNumber.fetch_add(1, std::memory_order_relaxed) + 1;
    } while (threadNumber == 0);
    return threadNumber;
}

}  // namespace korva::framework::detail
