#include "korva/process/process_report.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "korva/errors.h"
#include "korva/json.h"
#include "korva/process/layouts.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

double decibels(float level) {
    return 20.0 * std::log10(static_cast<double>(level));
}

std::string durationText(std::uint64_t ns) {
    const auto value = static_cast<double>(ns);
    if (ns < 1'000) {
        return fmt::format("{} ns", ns);
    }
    if (ns < 1'000'000) {
        return fmt::format("{:.2f} us", value / 1e3);
    }
    return fmt::format("{:.2f} ms", value / 1e6);
}

std::string levelText(float level) {
    return level > 0.0f ? fmt::format("{:8.2f} dBFS  {:8.6f}", decibels(level), level) : "       silent";
}

std::string buffersText(const ProcessReport& report) {
    const std::uint64_t last = report.frames % report.bufferFrames;
    return fmt::format("{} of {} frames{}", report.timings.count(), report.bufferFrames,
                       last == 0 ? std::string() : fmt::format(", the last one of {}", last));
}

std::string engineText(const EngineUse& engine) {
    if (!engine.choice.isMade()) {
        return "none: the endpoint has no preset for this effect";
    }
    return platform::guidText(engine.choice.engineId) + (engine.onHardware ? ", on hardware" : "");
}

std::string moduleText(const EngineUse& engine, const std::string& folder) {
    if (engine.module.empty()) {
        return "none: this engine has none, and the sound passes as it is";
    }
    return fmt::format("{} in {}", engine.module, asOneLine(folder));
}

std::string changeText(const ReportedChange& change) {
    if (change.preset.empty()) {
        return fmt::format("at {:.3f} s: volume {}", change.seconds, change.volume);
    }
    return fmt::format("at {:.3f} s: {}, installed in {:.2f} ms, {:.2f} ms to settle", change.seconds,
                       asOneLine(change.preset), change.times.installMs, change.times.settleMs);
}

Json engineJson(const EngineUse& engine) {
    if (!engine.choice.isMade()) {
        return nullptr;
    }
    return {{"engine", platform::guidText(engine.choice.engineId)},
            {"module", engine.module},
            {"loaded", engine.isLoaded},
            {"hardware", engine.onHardware}};
}

Json changesJson(const std::vector<ReportedChange>& changes) {
    Json list = Json::array();
    for (const ReportedChange& change : changes) {
        Json json = {{"seconds", change.seconds}};
        if (change.preset.empty()) {
            json["volume"] = change.volume;
        } else {
            json["preset"] = change.preset;
            json["installMs"] = change.times.installMs;
            json["settleMs"] = change.times.settleMs;
        }
        list.push_back(std::move(json));
    }
    return list;
}

bool hasPlane(const SoundFormat& format, rt::Plane plane) {
    return std::ranges::count(planesOf(format.mask), plane) != 0;
}

std::string peaksText(const ProcessReport& report) {
    std::string text = fmt::format("\n{:<14} {:<26} {}\n", "Peaks", "input", "output");
    for (const rt::Plane plane : planesOf(report.input.format.mask | report.output.format.mask)) {
        const auto side = [&](const ReportedFile& file, const HighestLevels& levels) {
            return hasPlane(file.format, plane) ? levelText(levels.levels()[plane]) : "            -";
        };
        text += fmt::format("{:<14}{:<26}{}\n", planeName(plane), side(report.input, report.peaks->input),
                            side(report.output, report.peaks->output));
    }
    return text;
}

Json peaksJson(const SoundFormat& format, const Levels& levels) {
    Json peaks = Json::array();
    for (const rt::Plane plane : planesOf(format.mask)) {
        const float level = levels[plane];
        const bool finite = level > 0.0f && std::isfinite(level);
        peaks.push_back({{"speaker", planeName(plane)},
                         {"level", std::isfinite(level) ? Json(level) : Json()},
                         {"dBFS", finite ? Json(decibels(level)) : Json()}});
    }
    return peaks;
}

Json fileJson(const ReportedFile& file) {
    const std::string_view layout = layoutName(file.format.mask);
    return {{"file", file.path},
            {"kind", file.kind},
            {"channels", file.format.channels},
            {"sampleRate", file.format.sampleRate},
            {"channelMask", file.format.mask},
            {"layout", layout.empty() ? Json() : Json(layout)}};
}

}  // namespace

double ProcessReport::realTimeFactor() const {
    const double soundSeconds = static_cast<double>(frames) / input.format.sampleRate;
    const double seconds = static_cast<double>(timings.totalNs()) / 1e9;
    return seconds > 0.0 ? soundSeconds / seconds : 0.0;
}

std::string asText(ProcessReport& report) {
    std::string text;
    const auto line = [&](std::string_view name, const std::string& value) {
        fmt::format_to(std::back_inserter(text), "{:<14} {}\n", name, value);
    };
    for (const auto& [name, file] :
         {std::pair("Input", &report.input), std::pair("Output", &report.output)}) {
        line(name, fmt::format("{} ({})", asOneLine(file->path), file->kind));
        line("", describe(file->format));
    }
    line("Effect", report.effect);
    line("Library", asOneLine(report.library));
    if (!report.endpoint.empty()) {
        line("Endpoint", asOneLine(report.endpoint));
        line("Engine", engineText(report.engine));
    }
    if (report.engine.choice.isMade()) {
        line("Module", moduleText(report.engine, report.moduleFolder));
    }
    for (const ReportedChange& change : report.changes) {
        line("Change", changeText(change));
    }
    line("Sound", fmt::format("{} frames, {:.3f} s", report.frames,
                              static_cast<double>(report.frames) / report.input.format.sampleRate));
    line("Buffers", buffersText(report));
    line("Kernels", report.kernels);
    line(
        "Each buffer",
        fmt::format("median {}, 99 % within {}, maximum {}", durationText(report.timings.percentileNs(50)),
                    durationText(report.timings.percentileNs(99)), durationText(report.timings.maximumNs())));
    line("Speed", fmt::format("{:.0f} times real time", report.realTimeFactor()));
    return report.peaks ? text + peaksText(report) : text;
}

std::string asJson(ProcessReport& report) {
    Json json = {{"input", fileJson(report.input)},
                 {"output", fileJson(report.output)},
                 {"effect", report.effect},
                 {"library", report.library},
                 {"endpoint", report.endpoint.empty() ? Json() : Json(report.endpoint)},
                 {"engine", engineJson(report.engine)},
                 {"moduleFolder", report.endpoint.empty() ? Json() : Json(report.moduleFolder)},
                 {"changes", changesJson(report.changes)},
                 {"frames", report.frames},
                 {"buffers", report.timings.count()},
                 {"bufferFrames", report.bufferFrames},
                 {"kernels", report.kernels},
                 {"bufferNs",
                  {{"median", report.timings.percentileNs(50)},
                   {"percentile99", report.timings.percentileNs(99)},
                   {"maximum", report.timings.maximumNs()},
                   {"total", report.timings.totalNs()}}},
                 {"realTimeFactor", report.realTimeFactor()},
                 {"peaks", nullptr}};
    if (report.peaks) {
        json["peaks"] = {{"input", peaksJson(report.input.format, report.peaks->input.levels())},
                         {"output", peaksJson(report.output.format, report.peaks->output.levels())}};
    }
    // A file's name may be any bytes; those that are no text are replaced.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korva::tool
