#include "korva/monitor/requests.h"

#include <algorithm>
#include <cstring>

namespace korva::tool {
namespace {

using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;
namespace types = platform::registry_type;

constexpr std::array<std::string_view, 1> cycleAnswers = {"DSPCycleCount"};
constexpr std::array<std::string_view, 1> frameAnswers = {"DSPFrameCount"};
constexpr std::array<std::string_view, 3> sentAnswers = {
    "ParamBytesSentByDSP", "ParamBytesSentByDSPClockStart", "ParamBytesSentByDSPClockEnd"};
constexpr std::array<std::string_view, 3> receivedAnswers = {
    "ParamBytesReceivedByDSP", "ParamBytesReceivedByDSPClockStart", "ParamBytesReceivedByDSPClockEnd"};
constexpr std::array<std::string_view, 6> levelAnswers = {"InputLevelMeters",    "OutputLevelMeters",
                                                          "DSPInputLevelMeters", "DSPOutputLevelMeters",
                                                          "BufferSizeMS",        "CPUUsage"};

constexpr std::array<Request, 5> requests = {{{"CaptureDSPCycleCount", cycleAnswers},
                                              {"CaptureDSPFrameCount", frameAnswers},
                                              {"CaptureParamBytesSentByDSP", sentAnswers},
                                              {"CaptureParamBytesReceivedByDSP", receivedAnswers},
                                              {levelRequest, levelAnswers}}};

char lowered(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool equalsInAnyCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lowered, lowered);
}

/// What the key has; 0 for none. One of another type asks for nothing, and counts as none.
RegistryResult readNumber(const RegistryKey& key, std::string_view name, std::uint32_t& number) {
    RegistryValue stored;
    const RegistryResult code = key.readValue(name, stored);
    number = 0;
    if (code == result::success && stored.type == types::dword && stored.data.size() == sizeof(number)) {
        std::memcpy(&number, stored.data.data(), sizeof(number));
    }
    return code == result::notFound ? result::success : code;
}

RegistryResult writeNumber(const RegistryKey& key, std::string_view name, std::uint32_t number) {
    return key.setValue(name, types::dword, std::as_bytes(std::span(&number, 1)));
}

}  // namespace

std::span<const Request> allRequests() {
    return requests;
}

const Request* requestOf(std::string_view name) {
    const auto* const found = std::ranges::find_if(requests, [&](const Request& request) {
        return equalsInAnyCase(name, request.value) || equalsInAnyCase(name, request.shortName());
    });
    return found == requests.end() ? nullptr : found;
}

RegistryResult ask(const RegistryKey& key, std::string_view request, std::uint32_t& written) {
    std::uint32_t last = 0;
    RegistryResult code = readNumber(key, request, last);
    if (code == result::success) {
        code = writeNumber(key, request, requestAfter(last));
    }
    if (code == result::success) {
        written = requestAfter(last);
    }
    return code;
}

RegistryResult LevelQuestions::ask() {
    return tool::ask(key, levelRequest, last);
}

LevelQuestions::~LevelQuestions() {
    std::uint32_t now = 0;
    if (last != 0 && readNumber(key, levelRequest, now) == result::success && now == last) {
        // Who can't be told that metering may end is gone, or nobody can help it.
        static_cast<void>(writeNumber(key, levelRequest, 0));
    }
}

}  // namespace korva::tool
