// korva monitor --request: one question, and what came of it.
#include <algorithm>
#include <chrono>
#include <utility>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/monitor/monitor_command.h"
#include "korva/monitor/monitor_json.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(1);  ///< Of which an object takes milliseconds.
constexpr int lookEveryMs = 10;

enum class Outcome { changed, same, silent };

struct Answer {
    Outcome outcome = Outcome::silent;
    InstanceView view{};
};

const Request& requestOfOptions(const MonitorOptions& options) {
    const Request* const request = requestOf(options.request);
    if (request == nullptr) {
        std::string names;
        for (const Request& known : allRequests()) {
            names += (names.empty() ? "" : ", ") + std::string(known.shortName());
        }
        fail("--request takes one of {}, not '{}'", names, options.request);
    }
    return *request;
}

Json valuesOf(const InstanceView& view, const Request& request) {
    Json values;
    for (const std::string_view name : request.answers) {
        values[std::string(name)] = answerJson(view, name);
    }
    return values;
}

bool hasValue(const Json& values) {
    return std::ranges::any_of(values, [](const Json& value) { return !value.is_null(); });
}

InstanceView look(const platform::RegistryKey& key, const std::string& name) {
    InstanceView view;
    throwIfRefused(readInstance(key, name, view), fmt::format("read the instance {}", name));
    return view;
}

/// Puts the question. Levels are measured from the first one on, so what was measured is asked for by a
/// second one.
void put(const platform::RegistryKey& key, const Request& request, LevelQuestions& levels, int measureMs) {
    std::uint32_t written = 0;
    const bool isOfLevels = request.value == levelRequest;
    platform::RegistryResult code = isOfLevels ? levels.ask() : ask(key, request.value, written);
    if (isOfLevels && code == 0) {
        pauseFor(measureMs);
        code = levels.ask();
    }
    throwIfRefused(code, "ask the instance");
}

/// Who answers with what is there already writes nothing new: only that it was there is left then.
Answer answerTo(const Request& request, const std::string& name, int measureMs) {
    platform::RegistryKey key;
    throwIfRefused(openInstance(name, platform::RegistryAccess::readWrite, key),
                   fmt::format("ask the instance {}", name));
    Answer answer{.view = look(key, name)};
    const Json before = valuesOf(answer.view, request);
    LevelQuestions levels(key);
    put(key, request, levels, measureMs);
    const Clock::time_point end = Clock::now() + patience;
    do {
        pauseFor(lookEveryMs);
        answer.view = look(key, name);
        if (valuesOf(answer.view, request) != before) {
            answer.outcome = Outcome::changed;
            return answer;
        }
    } while (Clock::now() < end);
    answer.outcome = hasValue(before) ? Outcome::same : Outcome::silent;
    return answer;
}

const char* remarkOn(Outcome outcome) {
    switch (outcome) {
        case Outcome::changed:
            return "";
        case Outcome::same:
            return "  (as before: either the answer is the same, which isn't written again, or none came)";
        case Outcome::silent:
            return "  (no answer within 1 s: no stream is locked, no engine is there, or it is still 0)";
    }
    return "";
}

std::string answerLine(const std::string& name, const Request& request, const Answer& answer) {
    std::string line = name;
    const Json values = valuesOf(answer.view, request);
    for (const auto& [valueName, value] : values.items()) {
        line += fmt::format("  {} {}", valueName, value.is_null() ? "-" : value.dump());
    }
    return line + remarkOn(answer.outcome) + "\n";
}

Json answerObject(const std::string& name, const Request& request, const Answer& answer) {
    return {{"instance", name},
            {"changed", answer.outcome == Outcome::changed},
            {"values", valuesOf(answer.view, request)}};
}

/// The live ones, or the one that was asked for.
std::vector<std::string> askedInstances(const MonitorOptions& options) {
    const std::optional<std::string> only = instanceOfOptions(options);
    std::vector<std::string> names;
    for (const InstanceKey& key : expectInstances().keys) {
        if (key.kind == InstanceKey::Kind::live && (!only || instanceNameOf(key.name) == only)) {
            names.push_back(key.name);
        }
    }
    if (names.empty()) {
        fail("there is no {}", only ? "live instance " + *only : std::string("live instance to ask"));
    }
    return names;
}

}  // namespace

int runRequest(const MonitorOptions& options) {
    const Request& request = requestOfOptions(options);
    bool isAnswered = true;
    Json answers = Json::array();
    std::string text;
    for (const std::string& name : askedInstances(options)) {
        const Answer answer = answerTo(request, name, options.intervalMs);
        isAnswered = isAnswered && answer.outcome != Outcome::silent;
        text += answerLine(name, request, answer);
        answers.push_back(answerObject(name, request, answer));
    }
    printOutput(options.json ? asLine({{"request", request.shortName()}, {"answers", std::move(answers)}})
                             : text);
    return isAnswered ? 0 : 1;
}

}  // namespace korva::tool
