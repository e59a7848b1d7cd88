#include "korva/monitor/monitor_json.h"

#include <fmt/core.h>

#include <cmath>
#include <map>

#include "korva/monitor/view_text.h"

namespace korva::tool {
namespace {

template <class T>
Json orNull(const Reading<T>& reading) {
    return reading.value ? Json(*reading.value) : Json();
}

/// JSON has no way to write what is no number, nor infinity: null.
Json levelsJson(const Reading<MeterLevels>& meters) {
    if (!meters.value) {
        return {};
    }
    Json levels = Json::array();
    for (const float level : *meters.value) {
        levels.push_back(std::isfinite(level) ? Json(level) : Json());
    }
    return levels;
}

Json loadJson(const Reading<std::uint32_t>& load) {
    return load.value ? Json(*load.value / 10.0) : Json();
}

Json sideJson(const StreamSide& side) {
    return {{"channels", orNull(side.channels)}, {"mask", orNull(side.mask)}};
}

Json counterJson(const ByteCounter& counter) {
    return {{"bytes", orNull(counter.bytes)},
            {"clockStart", orNull(counter.clockStart)},
            {"clockEnd", orNull(counter.clockEnd)}};
}

Json endpointJson(const InstanceView& view) {
    return {{"id", orNull(view.endpointId)},
            {"name", view.endpointName.empty() ? Json() : Json(view.endpointName)}};
}

Json metersJson(const InstanceView& view) {
    constexpr std::array<const char*, meterSetCount> names = {"input", "output", "dspInput", "dspOutput"};
    Json sets;
    for (std::size_t i = 0; i < names.size(); ++i) {
        sets[names[i]] = levelsJson(view.meters[i]);
    }
    return sets;
}

void addModule(Json& json, const InstanceView& view) {
    json["libraryVersion"] =
        view.libraryVersion.value ? Json(libraryVersionText(view.libraryVersion)) : Json();
    json["moduleVersion"] = orNull(view.moduleVersion);
    json["engineStarts"] = orNull(view.engineStarts);
    json["engineStartMs"] = orNull(view.engineStartMs);
    json["engineStartBytes"] = orNull(view.engineStartBytes);
}

void addCounters(Json& json, const InstanceView& view) {
    json["cycleCount"] = orNull(view.cycleCount);
    json["frameCount"] = orNull(view.frameCount);
    json["sent"] = counterJson(view.sent);
    json["received"] = counterJson(view.received);
    json["presetBytesSent"] = orNull(view.presetBytesSent);
}

Json instanceJson(const InstanceView& view) {
    Json json = {{"instance", view.name},
                 {"effect", orNull(view.effect)},
                 {"endpoint", endpointJson(view)},
                 {"input", sideJson(view.input)},
                 {"output", sideJson(view.output)},
                 {"dspInput", sideJson(view.dspInput)},
                 {"dspOutput", sideJson(view.dspOutput)},
                 {"sampleRate", orNull(view.sampleRate)}};
    addModule(json, view);
    json["bufferMs"] = orNull(view.bufferMs);
    json["load"] = loadJson(view.load);
    addCounters(json, view);
    json["meters"] = metersJson(view);
    json["writeTime"] = orNull(view.writeTime);
    json["malformed"] = view.malformed;
    return json;
}

Json otherJson(const InstanceKey& key) {
    constexpr std::array<const char*, 4> words = {"live", "stale", "link", "unreadable"};
    return {{"instance", key.name}, {"is", words[static_cast<std::size_t>(key.kind)]}, {"code", key.code}};
}

}  // namespace

std::string timeText(std::chrono::system_clock::time_point time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(std::chrono::floor<std::chrono::milliseconds>(time - day));
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", int(date.year()), unsigned(date.month()),
                       unsigned(date.day()), clock.hours().count(), clock.minutes().count(),
                       clock.seconds().count(), clock.subseconds().count());
}

Json answerJson(const InstanceView& view, std::string_view valueName) {
    const std::map<std::string_view, Json> answers = {
        {"DSPCycleCount", orNull(view.cycleCount)},
        {"DSPFrameCount", orNull(view.frameCount)},
        {"ParamBytesSentByDSP", orNull(view.sent.bytes)},
        {"ParamBytesSentByDSPClockStart", orNull(view.sent.clockStart)},
        {"ParamBytesSentByDSPClockEnd", orNull(view.sent.clockEnd)},
        {"ParamBytesReceivedByDSP", orNull(view.received.bytes)},
        {"ParamBytesReceivedByDSPClockStart", orNull(view.received.clockStart)},
        {"ParamBytesReceivedByDSPClockEnd", orNull(view.received.clockEnd)},
        {"InputLevelMeters", levelsJson(view.meters[0])},
        {"OutputLevelMeters", levelsJson(view.meters[1])},
        {"DSPInputLevelMeters", levelsJson(view.meters[2])},
        {"DSPOutputLevelMeters", levelsJson(view.meters[3])},
        {"BufferSizeMS", orNull(view.bufferMs)},
        {"CPUUsage", orNull(view.load)}};
    return answers.at(valueName);
}

std::string refreshJson(const Refresh& refresh, std::chrono::system_clock::time_point time) {
    Json json = {{"time", timeText(time)}, {"instances", Json::array()}, {"others", Json::array()}};
    for (const InstanceView& view : refresh.instances) {
        json["instances"].push_back(instanceJson(view));
    }
    for (const InstanceKey& key : refresh.others) {
        json["others"].push_back(otherJson(key));
    }
    return asLine(json);
}

Json textOrNull(const Reading<std::string>& text) {
    return orNull(text);
}

std::string asLine(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korva::tool
