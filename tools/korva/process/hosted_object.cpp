#include "korva/process/hosted_object.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <string>

#include "korva/errors.h"
#include "platform/memory_lock.h"
#include "rt/kernels/kernels.h"

namespace korva::tool {
namespace {

std::string supportedNames() {
    std::string names;
    for (const rt::Kernels* version : rt::supportedKernels()) {
        names += names.empty() ? "" : ", ";
        names += version->name;
    }
    return names;
}

/// The kernels' own choice passes over a name that it doesn't know. Whoever forces one wants that one.
const rt::Kernels& checkedKernels() {
    const char* const forced = std::getenv("KORVA_KERNELS");
    if (forced != nullptr && *forced != '\0' && rt::findKernels(forced) == nullptr) {
        fail("KORVA_KERNELS names '{}', which isn't supported here; supported are {}", forced,
             supportedNames());
    }
    return rt::chosenKernels();
}

bool lockCode() {
    const rt::CodeRange code = rt::realtimeCode();
    return platform::lockMemory(code.start, code.size);
}

rt::EngineFormat engineFormat(const SoundFormat& format) {
    rt::EngineFormat assigned;
    assigned.Assign(format.sampleRate, static_cast<std::int32_t>(format.channels), format.mask);
    return assigned;
}

}  // namespace

HostedObject::HostedObject() : processor(checkedKernels()), codeLocked(lockCode()) {}

void HostedObject::lock(const SoundFormat& in, const SoundFormat& out, std::uint32_t maxFrames,
                        bool metered) {
    const rt::EngineFormat inFormat = engineFormat(in);
    const rt::EngineFormat outFormat = engineFormat(out);
    const rt::MeterRelease release = rt::MeterRelease::forSampleRate(in.sampleRate);
    processor.inFormat.set(inFormat);
    processor.outFormat.set(outFormat);
    processor.inputChannelCount.set(inFormat.channelCount);
    processor.outputChannelCount.set(outFormat.channelCount);
    processor.outputChannelMask.set(outFormat.channelMask);
    processor.meterReleaseFloor.set(release.floor);
    processor.meterReleaseGrowth.set(release.growth);
    processor.levelMetersEnabled.set(metered ? 1 : 0);
    processor.resetMeters();
    processor.started.set(false);
    samplesPerFrame = in.channels;
    lockedFrames = maxFrames;
}

void HostedObject::process(APO_CONNECTION_PROPERTY& input, APO_CONNECTION_PROPERTY& output) noexcept {
    assert(input.u32ValidFrameCount <= lockedFrames);
    APO_CONNECTION_PROPERTY* const inputs = &input;
    APO_CONNECTION_PROPERTY* const outputs = &output;
    processor.Process(1, &inputs, 1, &outputs, samplesPerFrame);
}

void HostedObject::unlock() noexcept {
    lockedFrames = 0;
}

std::uint64_t HostedObject::lastProcessNs() const noexcept {
    return processor.lastProcessNs.get();
}

void HostedObject::raise(Peaks& peaks) const noexcept {
    for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
        peaks.input[plane] = std::max(peaks.input[plane], processor.inputPeak[plane].get());
        peaks.output[plane] = std::max(peaks.output[plane], processor.outputPeak[plane].get());
    }
}

std::string_view HostedObject::kernelsName() const noexcept {
    return rt::chosenKernels().name;
}

bool HostedObject::isCodeLocked() const noexcept {
    return codeLocked;
}

}  // namespace korva::tool
