#include "korva/module/check/module_check.h"

#include <algorithm>
#include <chrono>

#include "korva/errors.h"
#include "korva/module/check/check_process.h"
#include "korva/module/check/check_results.h"
#include "korva/module/check/checks.h"
#include "korva/module/library_file.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

std::string knownNames() {
    std::string names;
    for (const Check& check : allChecks()) {
        names += fmt::format("{}{}", names.empty() ? "" : ", ", check.name);
    }
    return names;
}

void expectKnown(const std::vector<std::string>& only) {
    for (const std::string& name : only) {
        if (std::ranges::find(allChecks(), name, &Check::name) == allChecks().end()) {
            fail("--only takes names of checks, {}, not '{}'", knownNames(), name);
        }
    }
}

bool isWanted(const ModuleCheckOptions& options, const Check& check) {
    return options.only.empty() || std::ranges::find(options.only, check.name) != options.only.end();
}

/// The check that has to pass first and didn't; null if there is none.
const CheckResult* obstacle(const Check& check, const std::vector<CheckResult>& results) {
    for (const std::string_view needed : neededChecks(check.need)) {
        const auto found =
            std::ranges::find(results, needed, [](const CheckResult& result) { return result.check->name; });
        const bool works = found == results.end() || found->verdict.outcome <= Outcome::warning;
        if (!works) {
            return &*found;
        }
    }
    return nullptr;
}

Verdict skippedBecauseOf(const CheckResult& result) {
    constexpr const char* how[] = {"passed", "warned", "was skipped", "failed", "crashed"};
    return {Outcome::skipped, fmt::format("needs the check {}, which {}", result.check->name,
                                          how[static_cast<std::size_t>(result.verdict.outcome)])};
}

class Conformance {
public:
    explicit Conformance(const ModuleCheckOptions& given)
        : options(given), limitMs(static_cast<int>(options.timeoutSeconds * 1000)) {}

    const std::vector<CheckResult>& run() {
        for (const Check& check : allChecks()) {
            if (isWanted(options, check)) {
                results.push_back(resultOf(check));
                if (!options.json) {
                    printOutput(resultLine(results.back()));
                }
            }
        }
        return results;
    }

private:
    CheckResult resultOf(const Check& check) const {
        if (const CheckResult* const failed = obstacle(check, results)) {
            return {&check, skippedBecauseOf(*failed), 0};
        }
        const auto begin = std::chrono::steady_clock::now();
        const CheckSetting setting = {options.path, options.seed};
        Verdict verdict = processes.run([&] { return check.run(setting); }, limitMs);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        return {&check, std::move(verdict), taken.count()};
    }

    const ModuleCheckOptions& options;
    const int limitMs;
    const CheckProcesses processes;
    std::vector<CheckResult> results;
};

}  // namespace

int runModuleCheck(const ModuleCheckOptions& options) {
    if (options.list) {
        printOutput(options.json ? listJson() : listText());
        return 0;
    }
    expectKnown(options.only);
    // Throws for a path at which there is nothing to read. What is no module is for the checks to say.
    static_cast<void>(readLibraryFile(options.path));
    const CheckRun run = {options.path, options.seed, options.timeoutSeconds};
    Conformance conformance(options);
    const std::vector<CheckResult>& results = conformance.run();
    printOutput(options.json ? resultsJson(run, results) : summaryText(run, results));
    return hasFault(results) ? 1 : 0;
}

}  // namespace korva::tool
