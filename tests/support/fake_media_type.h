// A stream's format as another party's object tells it.
#pragma once

#include "platform/published/audio_interfaces.h"
#include "platform/published/results.h"
#include "platform/reference_count.h"

namespace korva::test {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Tells what a test puts in, and counts the references to it; it lives as long as the test says.
class FakeMediaType final : public published::IAudioMediaType {
public:
    FakeMediaType() = default;
    explicit FakeMediaType(const published::UNCOMPRESSEDAUDIOFORMAT& format) : stream(format) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return published::noInterface;
    }
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override { return ++references; }
    platform::ReferenceCount STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override {
        *compressed = 0;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType*, DWORD* flags) override {
        *flags = 0;
        return published::notImplemented;
    }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return wave; }
    HRESULT STDMETHODCALLTYPE
    GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* format) override {
        *format = stream;
        return streamResult;
    }

    published::UNCOMPRESSEDAUDIOFORMAT stream{};
    HRESULT streamResult = published::ok;  ///< Of `GetUncompressedAudioFormat`.
    const WAVEFORMATEX* wave = nullptr;
    platform::ReferenceCount references = 1;
};

#pragma GCC diagnostic pop

/// A stream's format of floats.
[[nodiscard]] inline published::UNCOMPRESSEDAUDIOFORMAT floatStream(DWORD channels, float framesPerSecond,
                                                                    DWORD mask = 0) {
    return {.guidFormatType = published::ieeeFloatFormat,
            .dwSamplesPerFrame = channels,
            .dwBytesPerSampleContainer = 4,
            .dwValidBitsPerSample = 32,
            .fFramesPerSecond = framesPerSecond,
            .dwChannelMask = mask};
}

/// One of 16-bit whole numbers.
[[nodiscard]] inline published::UNCOMPRESSEDAUDIOFORMAT pcmStream(DWORD channels, float framesPerSecond,
                                                                  DWORD mask = 0) {
    auto stream = floatStream(channels, framesPerSecond, mask);
    stream.guidFormatType = published::pcmFormat;
    stream.dwBytesPerSampleContainer = 2;
    stream.dwValidBitsPerSample = 16;
    return stream;
}

}  // namespace korva::test
