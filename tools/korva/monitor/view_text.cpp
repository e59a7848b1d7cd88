#include "korva/monitor/view_text.h"

#include <fmt/core.h>

#include "korva/monitor/cell_text.h"
#include "korva/monitor/decibels.h"
#include "rt/speakers.h"

namespace korva::tool {
namespace {

template <class T>
const char* missingText(const Reading<T>& reading) {
    return reading.isMalformed ? "?" : "-";
}

std::string bytesText(const ByteCounter& counter) {
    return fmt::format("{} bytes, clock {} to {}", numberText(counter.bytes), numberText(counter.clockStart),
                       numberText(counter.clockEnd));
}

std::string startText(const InstanceView& view) {
    return fmt::format("{}, last at {} of its process, {}", numberText(view.engineStarts),
                       numberText(view.engineStartMs, " ms"), numberText(view.engineStartBytes, " bytes"));
}

std::string idText(const InstanceView& view) {
    return view.endpointId.value ? printable(*view.endpointId.value) : missingText(view.endpointId);
}

}  // namespace

std::string numberText(const Reading<std::uint32_t>& number, const char* unit) {
    return number.value ? fmt::format("{}{}", *number.value, unit) : missingText(number);
}

std::string effectText(const InstanceView& view) {
    return view.effect.value ? printable(*view.effect.value) : missingText(view.effect);
}

std::string endpointText(const InstanceView& view) {
    return view.endpointName.empty() ? idText(view) : printable(view.endpointName);
}

std::string sideText(const StreamSide& side) {
    return fmt::format("{} ch {}", numberText(side.channels),
                       side.mask.value ? fmt::format("0x{:X}", *side.mask.value) : missingText(side.mask));
}

std::string libraryVersionText(const Reading<std::uint64_t>& version) {
    if (!version.value) {
        return missingText(version);
    }
    const std::uint64_t fields = *version.value;
    return fmt::format("{}.{}.{}.{}", fields >> 48, fields >> 32 & 0xFFFF, fields >> 16 & 0xFFFF,
                       fields & 0xFFFF);
}

std::string moduleVersionText(const Reading<std::uint32_t>& version) {
    return version.value ? fmt::format("0x{:08X}", *version.value) : missingText(version);
}

std::string loadText(const Reading<std::uint32_t>& load) {
    return load.value ? fmt::format("{}.{} %", *load.value / 10, *load.value % 10) : missingText(load);
}

std::string highestLevelText(const Reading<MeterLevels>& meters) {
    return meters.value ? decibelText(decibels(highestOf(*meters.value))) : missingText(meters);
}

std::string levelText(const Reading<MeterLevels>& meters, std::size_t plane) {
    return meters.value ? decibelText(decibels((*meters.value)[plane])) : missingText(meters);
}

const char* planeName(std::size_t plane) {
    constexpr std::array<const char*, rt::planeCount> names = {"front left",    "front right", "front center",
                                                               "low frequency", "back left",   "back right",
                                                               "side left",     "side right"};
    return names[plane];
}

const char* shortPlaneName(std::size_t plane) {
    constexpr std::array<const char*, rt::planeCount> names = {"FL", "FR", "FC", "LF",
                                                               "BL", "BR", "SL", "SR"};
    return names[plane];
}

const char* meterSetName(MeterSet set) {
    constexpr std::array<const char*, meterSetCount> names = {"input", "output", "DSP input", "DSP output"};
    return names[static_cast<std::size_t>(set)];
}

std::vector<Detail> detailsOf(const InstanceView& view) {
    return {{"Instance", view.name},
            {"Effect", effectText(view)},
            {"Endpoint", endpointText(view)},
            {"Endpoint id", idText(view)},
            {"Input", sideText(view.input)},
            {"Output", sideText(view.output)},
            {"DSP input", sideText(view.dspInput)},
            {"DSP output", sideText(view.dspOutput)},
            {"Sample rate", numberText(view.sampleRate, " Hz")},
            {"Buffer", numberText(view.bufferMs, " ms")},
            {"Load", loadText(view.load)},
            {"Library", libraryVersionText(view.libraryVersion)},
            {"DSP module", moduleVersionText(view.moduleVersion)},
            {"Engine starts", startText(view)},
            {"DSP cycles", numberText(view.cycleCount)},
            {"DSP frames", numberText(view.frameCount)},
            {"Sent by DSP", bytesText(view.sent)},
            {"Got by DSP", bytesText(view.received)},
            {"Preset bytes", numberText(view.presetBytesSent)}};
}

}  // namespace korva::tool
