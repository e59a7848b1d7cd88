// A fuzz target for the test of the replay: it fails at every input that begins with an x.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size > 0 && data[0] == 'x') {
        std::abort();
    }
    return 0;
}
