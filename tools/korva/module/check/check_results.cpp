#include "korva/module/check/check_results.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "korva/errors.h"
#include "korva/json.h"
#include "korva/module/check/module_check.h"

namespace korva::tool {
namespace {

constexpr std::array<const char*, 5> outcomeNames = {"passed", "warning", "skipped", "failed", "crashed"};

const char* nameOf(Outcome outcome) {
    return outcomeNames[static_cast<std::size_t>(outcome)];
}

bool isFault(const CheckResult& result) {
    return result.verdict.outcome >= Outcome::failed;
}

std::ptrdiff_t countOf(Outcome outcome, const std::vector<CheckResult>& results) {
    return std::ranges::count(results, outcome,
                              [](const CheckResult& result) { return result.verdict.outcome; });
}

/// A path as a shell takes it.
std::string shellWord(const std::string& text) {
    const auto isPlain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("/._-+,=:@%").find(c) != std::string_view::npos;
    };
    if (!text.empty() && text.front() != '-' && std::ranges::all_of(text, isPlain)) {
        return text;
    }
    std::string word = text.starts_with('-') ? "./'" : "'";
    for (const char c : text) {
        word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return word + "'";
}

std::string commandAgain(const CheckRun& run, const CheckResult& result) {
    const bool isUsual = run.timeoutSeconds == usualTimeoutSeconds;
    const std::string timeout = isUsual ? "" : fmt::format(" --timeout {:g}", run.timeoutSeconds);
    return fmt::format("korva module check {} --only {} --seed {}{}", shellWord(run.path), result.check->name,
                       run.seed, timeout);
}

std::string lineOf(const Json& json) {
    // A file's name may be any bytes; those that are no text are replaced.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json resultJson(const CheckRun& run, const CheckResult& result) {
    return {{"name", result.check->name},
            {"result", nameOf(result.verdict.outcome)},
            {"reason", result.verdict.reason},
            {"again", commandAgain(run, result)},
            {"seconds", std::round(result.seconds * 1000) / 1000}};
}

}  // namespace

std::string resultLine(const CheckResult& result) {
    const char* const outcome = nameOf(result.verdict.outcome);
    if (result.verdict.reason.empty()) {
        return fmt::format("{:<14} {}\n", result.check->name, outcome);
    }
    return fmt::format("{:<14} {:<8} {}\n", result.check->name, outcome, asOneLine(result.verdict.reason));
}

std::string summaryText(const CheckRun& run, const std::vector<CheckResult>& results) {
    std::string text;
    for (const CheckResult& result : results) {
        if (isFault(result)) {
            text += fmt::format("{}  {}\n", text.empty() ? "\nTo see it again:\n" : "",
                                asOneLine(commandAgain(run, result)));
        }
    }
    text += fmt::format("\n{} check{} of {}, seed {}: ", results.size(), results.size() == 1 ? "" : "s",
                        asOneLine(run.path), run.seed);
    std::string counts;
    for (std::size_t outcome = 0; outcome < outcomeNames.size(); ++outcome) {
        if (const auto count = countOf(static_cast<Outcome>(outcome), results); count != 0) {
            counts += fmt::format("{}{} {}", counts.empty() ? "" : ", ", count, outcomeNames[outcome]);
        }
    }
    return text + counts + "\n";
}

std::string resultsJson(const CheckRun& run, const std::vector<CheckResult>& results) {
    Json json = {{"module", run.path}, {"seed", run.seed}, {"checks", Json::array()}};
    for (const CheckResult& result : results) {
        json["checks"].push_back(resultJson(run, result));
    }
    for (std::size_t outcome = 0; outcome < outcomeNames.size(); ++outcome) {
        json[outcomeNames[outcome]] = countOf(static_cast<Outcome>(outcome), results);
    }
    return lineOf(json);
}

std::string listText() {
    std::string text;
    for (const Check& check : allChecks()) {
        text += fmt::format("{:<14} {}\n", check.name, check.claim);
    }
    return text;
}

std::string listJson() {
    Json json = Json::array();
    for (const Check& check : allChecks()) {
        json.push_back({{"name", check.name}, {"claim", check.claim}});
    }
    return lineOf(json);
}

bool hasFault(const std::vector<CheckResult>& results) {
    return std::ranges::any_of(results, isFault);
}

}  // namespace korva::tool
