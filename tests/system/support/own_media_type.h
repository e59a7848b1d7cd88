// A stream's format as a host's object tells it.
#pragma once

#include <atomic>
#include <functional>

#include "platform/published/audio_interfaces.h"
#include "tests/system/support/known_ids.h"
#include "tests/system/support/own_object.h"

namespace korva::test {

/// A stream of 32-bit floats.
[[nodiscard]] inline published::UNCOMPRESSEDAUDIOFORMAT floats(DWORD channels, float rate = 48000.0f,
                                                               DWORD mask = 0) {
    return {{3, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}}, channels, 4, 32, rate, mask};
}

/// One of 16-bit whole numbers.
[[nodiscard]] inline published::UNCOMPRESSEDAUDIOFORMAT wholes(DWORD channels, float rate = 48000.0f,
                                                               DWORD mask = 0) {
    return {{1, 0, 0x10, {0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71}}, channels, 2, 16, rate, mask};
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// Tells what a test says, and has no wave format.  [any]
class OwnMediaType final : public OwnObject<published::IAudioMediaType> {
public:
    /// Answers the n-th question, from 0.
    using Answer = std::function<HRESULT(int question, published::UNCOMPRESSEDAUDIOFORMAT& format)>;

    explicit OwnMediaType(const published::UNCOMPRESSEDAUDIOFORMAT& format, HRESULT told = result::ok)
        : answer([format, told](int, published::UNCOMPRESSEDAUDIOFORMAT& into) {
              into = format;
              return told;
          }) {}
    explicit OwnMediaType(Answer itsAnswer) : answer(std::move(itsAnswer)) {}

    HRESULT STDMETHODCALLTYPE IsCompressedFormat(BOOL* compressed) override {
        *compressed = 0;
        return result::ok;
    }
    HRESULT STDMETHODCALLTYPE IsEqual(published::IAudioMediaType*, DWORD* flags) override {
        *flags = 0;
        return result::no;
    }
    const WAVEFORMATEX* STDMETHODCALLTYPE GetAudioFormat() override { return nullptr; }
    HRESULT STDMETHODCALLTYPE
    GetUncompressedAudioFormat(published::UNCOMPRESSEDAUDIOFORMAT* format) override {
        return answer(questions.fetch_add(1), *format);
    }

    std::atomic<int> questions{0};

private:
    const Answer answer;
};

#pragma GCC diagnostic pop

}  // namespace korva::test
