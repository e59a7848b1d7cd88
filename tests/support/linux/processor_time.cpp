#include "tests/support/processor_time.h"

#include <ctime>

namespace korva::test {

std::int64_t processorTimeMs() {
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return std::int64_t{used.tv_sec} * 1000 + used.tv_nsec / 1'000'000;
}

}  // namespace korva::test
