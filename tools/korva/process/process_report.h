// What `korva process` tells of a run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korva/host/sound_format.h"
#include "korva/process/engine_use.h"
#include "korva/process/levels.h"
#include "korva/process/played_endpoint.h"
#include "korva/process/timings.h"

namespace korva::tool {

/// One side's file.
struct ReportedFile {
    std::string path;
    std::string kind;    ///< "WAV, 32-bit float", for instance.
    SoundFormat format;  ///< As the object was locked with.
};

/// A change that was made while the sound played.
struct ReportedChange {
    double seconds = 0;    ///< The point of the sound.
    std::string preset{};  ///< The file; empty for one of the volume.
    float volume = 0.0f;
    ChangeTimes times{};  ///< Of one of the preset.
};

/// Highest levels by plane.
struct Peaks {
    Peaks(const SoundFormat& in, const SoundFormat& out) noexcept : input(in), output(out) {}

    HighestLevels input;
    HighestLevels output;
};

struct ProcessReport {
    ReportedFile input;
    ReportedFile output;
    std::string effect;
    std::uint64_t frames = 0;
    std::uint32_t bufferFrames = 0;  ///< Of all buffers but the last, which may be shorter.
    std::string kernels;
    std::string endpoint{};      ///< Empty without one.
    std::string library{};       ///< The object's.
    std::string moduleFolder{};  ///< Where modules were looked for.
    EngineUse engine{};          ///< If there is an endpoint.
    std::vector<ReportedChange> changes{};
    Timings timings{};             ///< One for each buffer.
    std::optional<Peaks> peaks{};  ///< If the meters ran.

    /// Duration of the sound to the duration of the calls; 0 if those took no time that could be measured.
    [[nodiscard]] double realTimeFactor() const;
};

/// Lines for a reader.
[[nodiscard]] std::string asText(ProcessReport& report);

/// One JSON object in one line. Levels of silence, and those beyond all numbers, are null.
[[nodiscard]] std::string asJson(ProcessReport& report);

}  // namespace korva::tool
