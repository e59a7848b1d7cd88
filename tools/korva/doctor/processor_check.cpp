#include "korva/doctor/processor_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstdlib>

#include "platform/memory_lock.h"
#include "rt/kernels/kernels.h"
#include "rt/realtime.h"

namespace korva::tool {
namespace {

constexpr std::size_t pageBytes = 4096;

/// The pages of the library's real-time code. This program has nearly all of it, the loops; the rest fits
/// into a page, and the section begins anywhere in one.
std::size_t realtimePages() {
    return (rt::realtimeCode().size + pageBytes - 1) / pageBytes + 2;
}

bool canRun(const ProcessorFacts& facts, const std::string& version) {
    return std::ranges::find(facts.kernels, version) != facts.kernels.end();
}

Finding slowProcessor(const std::string& fastest) {
    return {Subject::processor, Severity::remark,
            fmt::format("The loops over samples run in their version {}.", fastest),
            "The processor has no AVX2. The sound is the same; it takes the processor longer.", ""};
}

Finding forcedKernels(const ProcessorFacts& facts) {
    return {Subject::processor, Severity::remark, fmt::format("KORVA_KERNELS is '{}'.", facts.forced),
            canRun(facts, facts.forced)
                ? "The environment forces that version of the loops over samples."
                : fmt::format("There is no such version here, so that objects take the fastest, {}.",
                              facts.kernels.back()),
            "Unset KORVA_KERNELS where the host of the objects is started."};
}

Finding littleMemory(std::size_t lockable, std::size_t needed) {
    return {Subject::processor, Severity::fault,
            "The code of the real-time path can't be kept in memory, so that sound may drop out while it is "
            "read from the disk.",
            fmt::format("This user's processes may lock {} bytes, and the code takes up to {}.", lockable,
                        needed),
            "Put the line '* - memlock 1024' into /etc/security/limits.d/korva.conf, and log in anew; for a "
            "service, set LimitMEMLOCK=1M."};
}

}  // namespace

Findings processorFindings(const ProcessorFacts& facts) {
    Findings findings;
    if (!canRun(facts, "avx2")) {
        findings.push_back(slowProcessor(facts.kernels.back()));
    }
    if (!facts.forced.empty()) {
        findings.push_back(forcedKernels(facts));
    }
    if (facts.lockableBytes && *facts.lockableBytes < facts.neededBytes) {
        findings.push_back(littleMemory(*facts.lockableBytes, facts.neededBytes));
    }
    return findings;
}

ProcessorFacts processorFacts() {
    ProcessorFacts facts;
    for (const rt::Kernels* const version : rt::supportedKernels()) {
        facts.kernels.emplace_back(version->name);
    }
    const char* const forced = std::getenv("KORVA_KERNELS");
    facts.forced = forced == nullptr ? "" : forced;
    facts.neededBytes = realtimePages() * pageBytes;
    facts.lockableBytes = platform::lockableMemory();
    return facts;
}

}  // namespace korva::tool
