#include "korva/module/check/footprint.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "korva/interruption.h"
#include "korva/module/check/verdict.h"

// Where the program has a sanitizer, the C library's own heap isn't used.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming): the sanitizer's name
extern "C" [[gnu::weak]] std::size_t __sanitizer_get_current_allocated_bytes();

namespace korva::tool {
namespace {

bool hasSanitizer() {
    return &__sanitizer_get_current_allocated_bytes != nullptr;
}

std::size_t heapBytes() {
    if (hasSanitizer()) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::size_t mappedBytes() {
    std::size_t pages = 0;
    if (!hasSanitizer()) {
        std::ifstream("/proc/self/statm") >> pages;
    }
    return pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t entriesOf(const char* folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// A thread that was told to end may take a moment for it.
void letThreadsEnd(std::size_t expected) {
    for (int waits = 0; entriesOf("/proc/self/task") > expected && waits < 50; ++waits) {
        pauseFor(2);
    }
}

/// So many cycles in a row that each leave more are a leak.
constexpr std::size_t leakingCycles = 12;

struct Measure {
    const char* name;
    std::size_t Footprint::*value;
};
constexpr std::array<Measure, 4> measures = {Measure{"bytes of heap", &Footprint::heapBytes},
                                             Measure{"bytes of mapped memory", &Footprint::mappedBytes},
                                             Measure{"descriptors", &Footprint::descriptors},
                                             Measure{"threads", &Footprint::threads}};

/// Follows one measure from cycle to cycle.
class Growth {
public:
    explicit Growth(const Measure& followed) : measure(&followed) {}

    void add(const Footprint& footprint) {
        const std::size_t value = footprint.*measure->value;
        const bool hasGrown = seen != 0 && value > last;
        pauses += seen != 0 && !hasGrown ? 1 : 0;
        if (!hasGrown) {
            runBegin = value;
            runLength = 0;
        } else {
            ++runLength;
        }
        last = value;
        ++seen;
    }

    [[nodiscard]] bool isSettled() const { return pauses >= 2; }

    void expectSettled(std::string_view what) const {
        if (!isSettled() && runLength >= leakingCycles) {
            failCheck("keeps about {} more {} after each {}", (last - runBegin) / runLength, measure->name,
                      what);
        }
    }

private:
    const Measure* measure;
    std::size_t seen = 0;
    std::size_t last = 0;
    std::size_t pauses = 0;     ///< Cycles after which there was no more than before.
    std::size_t runBegin = 0;   ///< Where the cycles began that each left more.
    std::size_t runLength = 0;  ///< And how many they are.
};

}  // namespace

Footprint measureFootprint() {
    return {.heapBytes = heapBytes(),
            .mappedBytes = mappedBytes(),
            .descriptors = entriesOf("/proc/self/fd"),
            .threads = entriesOf("/proc/self/task")};
}

void expectNoGrowth(std::string_view what, const std::function<void()>& cycle) {
    std::vector<Growth> growths(measures.begin(), measures.end());
    const std::size_t threads = measureFootprint().threads;
    // The C library keeps up to seven pieces of each size for itself before it gives one back.
    for (std::size_t i = 0; i < 2 * leakingCycles; ++i) {
        cycle();
        letThreadsEnd(threads);
        const Footprint footprint = measureFootprint();
        for (Growth& growth : growths) {
            growth.add(footprint);
        }
        if (std::ranges::all_of(growths, &Growth::isSettled)) {
            return;
        }
    }
    for (const Growth& growth : growths) {
        growth.expectSettled(what);
    }
}

}  // namespace korva::tool
