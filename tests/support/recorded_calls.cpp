#include "tests/support/recorded_calls.h"

#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

using Words = std::map<std::string, std::string>;

Words wordsOf(const std::string& line) {
    Words words;
    std::istringstream stream(line);
    for (std::string word; stream >> word;) {
        const std::size_t sign = word.find('=');
        if (sign == std::string::npos) {
            throw std::runtime_error("no record of a call: " + line);
        }
        words[word.substr(0, sign)] = word.substr(sign + 1);
    }
    return words;
}

std::string take(Words& words, const std::string& name) {
    const auto place = words.find(name);
    if (place == words.end()) {
        throw std::runtime_error("a call without " + name);
    }
    std::string value = place->second;
    words.erase(place);
    return value;
}

/// Numbers the instances by the order in which they were made. An address means the last one that was made
/// there, until another is.
class InstanceNumbers {
public:
    int numberOf(const RecordedCall& call, const std::string& address) {
        if (address == "0") {
            return 0;
        }
        int& number = numbers[{call.process, address}];
        if (call.function == "Create") {
            number = ++count;
        }
        return number;
    }

private:
    std::map<std::pair<std::uint64_t, std::string>, int> numbers;
    int count = 0;
};

}  // namespace

std::int64_t RecordedCall::number(const std::string& name) const {
    return std::stoll(words.at(name));
}

std::optional<std::vector<std::uint8_t>> RecordedCall::bytes(const std::string& name) const {
    const std::string& digits = words.at(name);
    if (digits == "null") {
        return std::nullopt;
    }
    std::vector<std::uint8_t> result;
    for (std::size_t at = 0; at < digits.size(); at += 2) {
        result.push_back(static_cast<std::uint8_t>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    }
    return result;
}

std::string RecordedCall::text(const std::string& name) const {
    const auto content = bytes(name).value();
    return {content.begin(), content.end()};
}

std::vector<float> RecordedCall::plane(int number) const {
    const auto content = bytes("plane" + std::to_string(number)).value();
    std::vector<float> samples(content.size() / sizeof(float));
    std::memcpy(samples.data(), content.data(), samples.size() * sizeof(float));
    return samples;
}

std::vector<RecordedCall> readRecordedCalls(const std::filesystem::path& log) {
    std::vector<RecordedCall> calls;
    InstanceNumbers numbers;
    std::ifstream file(log, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        RecordedCall& call = calls.emplace_back();
        Words words = wordsOf(line);
        call.function = take(words, "function");
        call.module = take(words, "module");
        call.process = std::stoull(take(words, "process"));
        call.thread = std::stoull(take(words, "thread"));
        call.beginNs = std::stoll(take(words, "begin"));
        call.endNs = std::stoll(take(words, "end"));
        call.instance = numbers.numberOf(call, take(words, "instance"));
        call.words = std::move(words);
    }
    return calls;
}

std::vector<RecordedCall> callsOf(std::string_view function, const std::vector<RecordedCall>& calls) {
    std::vector<RecordedCall> chosen;
    for (const RecordedCall& call : calls) {
        if (call.function == function) {
            chosen.push_back(call);
        }
    }
    return chosen;
}

std::vector<std::string> functionsOf(const std::vector<RecordedCall>& calls) {
    std::vector<std::string> functions;
    for (const RecordedCall& call : calls) {
        functions.push_back(call.function);
    }
    return functions;
}

Recording::Recording(const std::string& answers)
    : logFile("KORVA_RECORDER_LOG", log().string()),
      answerList("KORVA_RECORDER_ANSWERS", answers),
      sampleCount("KORVA_RECORDER_SAMPLES", "8") {}

}  // namespace korva::test
