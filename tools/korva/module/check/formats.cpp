#include "korva/module/check/formats.h"

#include <utility>

#include "korva/module/check/check_report.h"
#include "korva/module/check/parameters.h"

namespace korva::tool {
namespace {

constexpr std::uint32_t mono = 0x4;
constexpr std::uint32_t stereo = 0x3;
constexpr std::uint32_t quad = 0x33;
constexpr std::uint32_t wide = 0x63F;

std::vector<std::pair<rt::EngineFormat, rt::EngineFormat>> scenePairs() {
    const auto same = [](const rt::EngineFormat& format) { return std::pair(format, format); };
    return {same(formatOf(8, wide)),
            same(formatOf(2, stereo)),
            {formatOf(8, wide), formatOf(2, stereo)},
            {formatOf(2, stereo), formatOf(8, wide)},
            {formatOf(1, mono), formatOf(2, stereo)},
            same(formatOf(4, quad))};
}

}  // namespace

rt::EngineFormat formatOf(std::int32_t channels, std::uint32_t mask, std::uint32_t rate) {
    rt::EngineFormat format;
    format.Assign(rate, channels, mask);
    return format;
}

std::vector<rt::EngineFormat> usualFormats(std::uint32_t rate) {
    std::vector<rt::EngineFormat> formats;
    for (std::int32_t channels = 1; channels <= KORVA_PLANES; ++channels) {
        formats.push_back(formatOf(channels, rt::defaultSpeakerMask(channels), rate));
    }
    return formats;
}

std::vector<rt::EngineFormat> oddFormats() {
    return {formatOf(1, 0x1),      formatOf(1, 0x8),    formatOf(2, 0xC0),       formatOf(2, 0x600),
            formatOf(4, quad),     formatOf(6, 0x3F),   formatOf(8, 0xFF),       formatOf(8, 0x2D0F0),
            formatOf(2, 0),        formatOf(3, wide),   formatOf(2, 0x80000000), formatOf(10, 0),
            formatOf(18, 0x3FFFF), formatOf(0, stereo), formatOf(2, stereo, 0),  rt::EngineFormat{}};
}

std::string formatText(const rt::EngineFormat& format) {
    return fmt::format("{} channel{} ({:#x}) at {} Hz", format.channelCount,
                       format.channelCount == 1 ? "" : "s", format.channelMask, format.sampleRate);
}

std::string pairText(const rt::EngineFormat& in, const rt::EngineFormat& out) {
    return in == out ? formatText(in) : fmt::format("{} to {}", formatText(in), formatText(out));
}

bool accepts(TestedInstance& instance, const rt::EngineFormat& in, const rt::EngineFormat& out) {
    rt::EngineFormat askedIn = in;
    rt::EngineFormat askedOut = out;
    return instance.testInput(askedIn, out) == KORVA_FORMAT_ACCEPTED &&
           instance.testOutput(askedOut, in) == KORVA_FORMAT_ACCEPTED;
}

std::vector<Scene> scenesFor(const TestedModule& module, std::uint32_t seed) {
    const Document document = documentFor(module);
    TestedInstance instance(module, document);
    if (!instance.exists()) {
        failCheck("ZRDSPAPI_Create gives null for the {}", document.name);
    }
    if (const std::string reason = instance.reasonForSilence(); !reason.empty()) {
        skipCheck("{}", reason);
    }
    const std::uint32_t changed = seed == defaultParameters ? 1 : seed;
    std::vector<Scene> scenes;
    for (const auto& [in, out] : scenePairs()) {
        if (accepts(instance, in, out)) {
            scenes.push_back({document, in, out, defaultParameters});
            scenes.push_back({document, in, out, changed});
        }
    }
    if (scenes.empty()) {
        skipCheck("the module accepts none of the formats that were tried");
    }
    return scenes;
}

}  // namespace korva::tool
