// How the results of a conformance run read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "korva/module/check/checks.h"
#include "korva/module/check/verdict.h"

namespace korva::tool {

struct CheckResult {
    const Check* check;
    Verdict verdict;
    double seconds;
};

/// What a run was asked for.
struct CheckRun {
    std::string path{};  ///< As the user wrote it.
    std::uint32_t seed = 0;
    double timeoutSeconds = 0;  ///< For each check.
};

/// A line for each: "bounds  failed  touches ...".
[[nodiscard]] std::string resultLine(const CheckResult& result);

/// What follows the lines: how to see each fault again, and the counts.
[[nodiscard]] std::string summaryText(const CheckRun& run, const std::vector<CheckResult>& results);

[[nodiscard]] std::string resultsJson(const CheckRun& run, const std::vector<CheckResult>& results);

/// The checks that there are.
[[nodiscard]] std::string listText();
[[nodiscard]] std::string listJson();

/// Whether one failed or crashed.
[[nodiscard]] bool hasFault(const std::vector<CheckResult>& results);

}  // namespace korva::tool
