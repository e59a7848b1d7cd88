// What the processor and the user's limits do to the real-time path.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "korva/doctor/finding.h"

namespace korva::tool {

struct ProcessorFacts {
    std::vector<std::string> kernels;          ///< Versions of the loops that it can run, fastest last.
    std::string forced;                        ///< What KORVA_KERNELS says; empty for nothing.
    std::size_t neededBytes = 0;               ///< Of locked memory.
    std::optional<std::size_t> lockableBytes;  ///< See `platform::lockableMemory`.
};

/// A pure function.
[[nodiscard]] Findings processorFindings(const ProcessorFacts& facts);

[[nodiscard]] ProcessorFacts processorFacts();

}  // namespace korva::tool
