// Which values are shown to diagnostic tools, and how.
#include <array>

#include "engine/effect_core.h"
#include "services/telemetry_row.h"

namespace korva::engine {

using platform::guidOf;
using services::Blob;
using services::ByteCounts;
using services::BytesOnly;
using services::Dword;
using services::Qword;
using services::row;
using services::Text;

namespace {

using Levels = Blob<PlaneLevels>;

// In the order in which they are shown. An object's type goes before them all.
constexpr std::array rows = {
    // clang-format off
    row<&EffectCore::endpointIdStrW, Text>("EndpointIdStrW", guidOf("{09865C27-C541-400E-BCD5-64FC701A78F8}")),
    row<&EffectCore::dspCycleCount, Dword<VT_UI4>>("DSPCycleCount", guidOf("{F02829CE-2A44-4ED3-9F4C-B8C8874D0E5F}")),
    row<&EffectCore::dspFrameCount, Dword<VT_UI4>>("DSPFrameCount", guidOf("{10B39166-4297-429B-91BA-2861D28B4A8B}")),
    row<&EffectCore::paramBytesSentByDsp, ByteCounts>("ParamBytesSentByDSP", guidOf("{D122229D-6FFC-4C40-965C-0BDDD7051124}")),
    row<&EffectCore::paramBytesReceivedByDsp, ByteCounts>("ParamBytesReceivedByDSP", guidOf("{D3B717D7-E1D8-446A-8966-DBBB654ABD3A}")),
    row<&EffectCore::bufferSizeMs, Dword<VT_UI4>>("BufferSizeMS", guidOf("{F61726C1-24AC-4DC9-BB2F-11AAB8DFD6C9}")),
    row<&EffectCore::cpuUsage, Dword<VT_UI4>>("CPUUsage", guidOf("{F1B2E56C-276F-4A14-9BA1-A98E0875376E}")),
    row<&EffectCore::presetDspParamBytesSent, Dword<VT_UI4>>("PresetDSPParamBytesSent", guidOf("{430F69F9-A05E-421B-9483-7DE5449149CC}")),
    row<&EffectCore::inputLevelMeters, Levels>("InputLevelMeters", guidOf("{CCE8008E-0C6E-43F0-A0B9-B759F306D78E}")),
    row<&EffectCore::outputLevelMeters, Levels>("OutputLevelMeters", guidOf("{406CDD02-E0CE-438F-B7F7-018A454C7702}")),
    row<&EffectCore::dspInputLevelMeters, Levels>("DSPInputLevelMeters", guidOf("{F964E231-B394-46A1-8428-5887288F044D}")),
    row<&EffectCore::dspOutputLevelMeters, Levels>("DSPOutputLevelMeters", guidOf("{372B87B7-FEFF-4533-83AD-18426A7F8319}")),
    row<&EffectCore::moduleVersion, Qword>("ModuleVersion", guidOf("{218DF4CF-2BDC-4E8E-A13E-6068EFCEC4C1}")),
    row<&EffectCore::sampleRate, Dword<VT_I4>>("SampleRate", guidOf("{C844AA44-6B45-4CD5-AB76-E6D841EE5065}")),
    row<&EffectCore::dspModuleVersion, Dword<VT_UI4>>("DSPModuleVersion", guidOf("{DE58414D-47AC-4440-BA30-C9443BCD04AC}")),
    row<&EffectCore::presetLoadParamBytesReceivedByDsp, BytesOnly>("PresetLoad_ParamBytesReceivedByDSP", guidOf("{7A511323-4BBA-49A4-AA9B-AD85EB38A444}")),
    row<&EffectCore::presetLoadStartTimeMs, Dword<VT_UI4>>("PresetLoadStartTimeMS", guidOf("{D1DD5BE5-3E14-48F0-90A4-57C843B743A0}")),
    row<&EffectCore::presetLoadCount, Dword<VT_UI4>>("PresetLoadCount", guidOf("{A685A110-A891-4EA0-BA4B-35FA806DD62C}")),
    row<&EffectCore::inChannelMask, Dword<VT_UI4>>("InChannelMask", guidOf("{4012E3E4-7C8A-4553-B407-4F3E11EA66A8}")),
    row<&EffectCore::inputChannelCount, Dword<VT_I4>>("InputChannelCount", guidOf("{E76EA7A8-8672-4B2F-88F2-90B6D530AFC1}")),
    row<&EffectCore::outChannelMask, Dword<VT_UI4>>("OutChannelMask", guidOf("{3F2FE4F5-74B0-47EA-A877-828ED00EAF41}")),
    row<&EffectCore::outputChannelCount, Dword<VT_I4>>("OutputChannelCount", guidOf("{6E0D4AF2-E532-4ACE-BF8B-B446D4CED024}")),
    row<&EffectCore::dspInChannelMask, Dword<VT_UI4>>("DSPInChannelMask", guidOf("{BCFBEB9C-E193-442E-8103-8436B0F7B608}")),
    row<&EffectCore::dspInputChannelCount, Dword<VT_I4>>("DSPInputChannelCount", guidOf("{1CD3B175-99DC-4AC9-A7AE-A1BC4935D0EB}")),
    row<&EffectCore::dspOutChannelMask, Dword<VT_UI4>>("DSPOutChannelMask", guidOf("{C7BD9577-49A3-4A9E-8D37-1B287255CC8B}")),
    row<&EffectCore::dspOutputChannelCount, Dword<VT_I4>>("DSPOutputChannelCount", guidOf("{6E4E3461-63D6-4367-AEED-114C9066BC41}")),
    // clang-format on
};

}  // namespace

// The values are shown while a stream is locked, and only on an endpoint that has a store for them.
void EffectCore::watchForTelemetry() {
    showing = watch(volatileStore)
                  .whileSet()
                  .then(locked)
                  .whileSet([this] { telemetry.attach(*this, rows); }, [this] { telemetry.detach(*this); });
}

}  // namespace korva::engine
