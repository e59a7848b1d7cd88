#include "tests/cli/module_alone.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "params/catalogue.h"
#include "platform/property_key.h"

namespace korva::test {
namespace {

using Parameters = std::map<tool::ParameterPlace, std::vector<std::byte>>;

std::string documentFor(const tool::Preset& preset) {
    return "{\"EngineId\":\"" + platform::guidText(preset.engineId) +
           "\",\"OutEndpointId\":\"\",\"PlatformModuleNames\":[\"PELLUX64\"],\"PlatformName\":\"Float\","
           "\"PresetVersion\":" +
           std::to_string(preset.presetVersion) + "}";
}

void addList(Parameters& all, std::int32_t bank, const params::ParamDescriptorList& list,
             const tool::Preset& preset) {
    constexpr std::uint32_t takesDefaultOnly = 1;
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        const params::ParamDescriptor& descriptor = list.At(i);
        const tool::ParameterPlace place{bank, descriptor.paramId};
        const auto set = preset.parameters.find(place);
        const bool isSet = set != preset.parameters.end() && descriptor.sourcePolicy != takesDefaultOnly;
        all[place] = isSet ? set->second : params::defaultPayload(descriptor);
    }
}

/// The catalogue's defaults, and over them what the preset sets.
Parameters parametersOf(const tool::Preset& preset) {
    Parameters all;
    addList(all, KORVA_BANK_ENGINE, params::BaseList(), preset);
    const params::ParamLayout& layout = *params::FindLayout(preset.engineId);
    for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i) {
        addList(all, static_cast<std::int32_t>(i), layout.Module(i).descriptors, preset);
    }
    return all;
}

}  // namespace

ModuleAlone::ModuleAlone(const std::string& path, const tool::Preset& preset,
                         const rt::EngineFormat& ofStream)
    : library(path), format(ofStream) {
    const std::string document = documentFor(preset);
    instance = library.function<decltype(ZRDSPAPI_Create)>("ZRDSPAPI_Create")(
        document.data(), static_cast<std::uint32_t>(document.size()));
    auto in = std::bit_cast<::EngineFormat>(format);
    auto out = in;
    ::EngineFormat capture{};
    library.function<decltype(ZRDSPAPI_Initialize)>("ZRDSPAPI_Initialize")(instance, &in, &out, &capture);
    change(preset);
    send({KORVA_BANK_ENGINE, KORVA_PARAMETER_EFFECTS_DISABLED}, std::vector<std::byte>(1));
    send({KORVA_BANK_ENDPOINT, KORVA_PARAMETER_VOLUME_DB}, std::vector<std::byte>(sizeof(float)));
}

ModuleAlone::~ModuleAlone() {
    library.function<decltype(ZRDSPAPI_Uninitialize)>("ZRDSPAPI_Uninitialize")(instance);
    library.function<decltype(ZRDSPAPI_Free)>("ZRDSPAPI_Free")(instance);
}

void ModuleAlone::change(const tool::Preset& preset) {
    Parameters next = parametersOf(preset);
    for (const auto& [place, bytes] : next) {
        const auto before = sent.find(place);
        if (before == sent.end() || before->second != bytes) {
            send(place, bytes);
        }
    }
    sent = std::move(next);
}

void ModuleAlone::send(const tool::ParameterPlace& place, const std::vector<std::byte>& bytes) {
    if (!bytes.empty()) {
        library.function<decltype(ZRDSPAPI_SetParameter)>("ZRDSPAPI_SetParameter")(
            instance, place.module, place.id, -1, bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    }
}

std::vector<float> ModuleAlone::play(std::span<const float> samples) {
    const auto channels = static_cast<std::size_t>(format.channelCount);
    std::vector<float> result(samples.size());
    for (std::size_t done = 0; done < samples.size();) {
        const std::size_t frames =
            std::min<std::size_t>((samples.size() - done) / channels, KORVA_BLOCK_FRAMES);
        playBlock(&samples[done], &result[done], frames);
        done += frames * channels;
    }
    return result;
}

std::vector<float> ModuleAlone::playInBuffers(std::span<const float> samples, std::size_t bufferFrames) {
    const std::size_t size = bufferFrames * static_cast<std::size_t>(format.channelCount);
    std::vector<float> result;
    for (std::size_t done = 0; done < samples.size(); done += size) {
        const std::vector<float> played = play(samples.subspan(done, std::min(size, samples.size() - done)));
        result.insert(result.end(), played.begin(), played.end());
    }
    return result;
}

void ModuleAlone::playBlock(const float* input, float* output, std::size_t frames) {
    const auto channels = static_cast<std::size_t>(format.channelCount);
    std::array<float*, KORVA_PLANES> pointers{};
    for (std::size_t plane = 0; plane < KORVA_PLANES; ++plane) {
        planes[plane] = {};
        pointers[plane] = planes[plane].samples.data();
    }
    for (std::size_t i = 0; i < frames * channels; ++i) {
        pointers[format.planeOfChannel[i % channels]][i / channels] = input[i];
    }
    ::DspBlock block{.channels = pointers.data(),
                     .maxChannels = KORVA_PLANES,
                     .maxFrames = KORVA_BLOCK_FRAMES,
                     .inChannels = static_cast<std::uint32_t>(channels),
                     .outChannels = static_cast<std::uint32_t>(channels),
                     .frames = static_cast<std::uint32_t>(frames),
                     .reserved = 0};
    instance->table->process(instance, &block);
    for (std::size_t i = 0; i < frames * channels; ++i) {
        output[i] = pointers[format.planeOfChannel[i % channels]][i / channels];
    }
}

}  // namespace korva::test
