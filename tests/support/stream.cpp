#include "tests/support/stream.h"

namespace korva::test {

rt::EngineFormat formatOf(std::int32_t channels, std::uint32_t mask) {
    rt::EngineFormat format;
    format.Assign(48000, channels, mask);
    return format;
}

void lockStream(rt::RtProcessor& processor, const rt::EngineFormat& in, const rt::EngineFormat& out) {
    const auto release = rt::MeterRelease::forSampleRate(in.sampleRate);
    processor.inFormat.set(in);
    processor.outFormat.set(out);
    processor.inputChannelCount.set(in.channelCount);
    processor.outputChannelCount.set(out.channelCount);
    processor.outputChannelMask.set(out.channelMask);
    processor.meterReleaseFloor.set(release.floor);
    processor.meterReleaseGrowth.set(release.growth);
    processor.started.set(false);
}

published::APO_CONNECTION_PROPERTY connectionTo(std::span<const float> samples, std::uint32_t frames,
                                                published::APO_BUFFER_FLAGS flags) {
    const float* start = samples.empty() ? nullptr : samples.data();
    return {.pBuffer = reinterpret_cast<UINT_PTR>(start),
            .u32ValidFrameCount = frames,
            .u32BufferFlags = flags,
            .u32Signature = published::connectionPropertySignature};
}

void process(rt::RtProcessor& processor, published::APO_CONNECTION_PROPERTY& input,
             published::APO_CONNECTION_PROPERTY& output, std::uint32_t samplesPerFrame) {
    published::APO_CONNECTION_PROPERTY* inputs[] = {&input};
    published::APO_CONNECTION_PROPERTY* outputs[] = {&output};
    processor.Process(1, inputs, 1, outputs, samplesPerFrame);
}

void copyDirectly(published::APO_CONNECTION_PROPERTY& input, published::APO_CONNECTION_PROPERTY& output,
                  std::uint32_t samplesPerFrame) {
    published::APO_CONNECTION_PROPERTY* inputs[] = {&input};
    published::APO_CONNECTION_PROPERTY* outputs[] = {&output};
    rt::directCopy(1, inputs, 1, outputs, samplesPerFrame);
}

Stream::Stream(const rt::EngineFormat& in, const rt::EngineFormat& out, const rt::Kernels& kernels)
    : processor(kernels),
      inChannels(static_cast<std::uint32_t>(in.channelCount)),
      outChannels(static_cast<std::uint32_t>(out.channelCount)) {
    lockStream(processor, in, out);
}

std::vector<float> Stream::play(std::span<const float> samples) {
    const auto frames = static_cast<std::uint32_t>(samples.size() / inChannels);
    input = connectionTo(samples, frames);
    return call(frames);
}

std::vector<float> Stream::playSilence(std::uint32_t frames) {
    input = connectionTo({}, frames, published::BUFFER_SILENT);
    return call(frames);
}

std::vector<float> Stream::call(std::uint32_t frames) {
    std::vector<float> samples(std::size_t{frames} * outChannels, untouched);
    output = connectionTo(samples, 0);
    process(processor, input, output, inChannels);
    return samples;
}

}  // namespace korva::test
