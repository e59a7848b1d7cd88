#include "tests/cli/process_support.h"

#include <bit>
#include <cstdint>

// The leak sanitizer asks every program: what a library of others doesn't give back.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's name
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions();
extern "C" [[gnu::visibility("default")]] const char* __lsan_default_suppressions() {
    return "leak:libvorbis\n";
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace korva::test {

Launch onBrokenDisk(Launch launch) {
    launch.environment["LD_PRELOAD"] = KORVA_BROKEN_DISK;
    // The address sanitizer wants to come first, and needn't.
    launch.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0";
    return launch;
}

testing::AssertionResult sameBits(const std::vector<float>& actual, const std::vector<float>& expected) {
    if (actual.size() != expected.size()) {
        return testing::AssertionFailure() << actual.size() << " samples, not " << expected.size();
    }
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (std::bit_cast<std::uint32_t>(actual[i]) != std::bit_cast<std::uint32_t>(expected[i])) {
            return testing::AssertionFailure()
                   << "sample " << i << " is " << actual[i] << ", not " << expected[i];
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace korva::test
