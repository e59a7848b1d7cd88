// Audio objects as a host has them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "apo/core_thread.h"
#include "framework/ref.h"
#include "platform/published/audio_objects.h"
#include "rt/rt_processor.h"

namespace korva::bench {

/// A buffer of stereo noise at a tenth of full scale, and room for what becomes of it.
class StereoBuffer {
public:
    static constexpr std::uint32_t mostFrames = 480;

    explicit StereoBuffer(std::uint32_t frames);
    StereoBuffer(const StereoBuffer&) = delete;
    StereoBuffer& operator=(const StereoBuffer&) = delete;

    published::APO_CONNECTION_PROPERTY* in = &input;
    published::APO_CONNECTION_PROPERTY* out = &output;

private:
    alignas(64) std::array<float, std::size_t{2} * mostFrames> samples;
    alignas(64) std::array<float, std::size_t{2} * mostFrames> played{};
    published::APO_CONNECTION_PROPERTY input;
    published::APO_CONNECTION_PROPERTY output;
};

/// A mode effect without an endpoint, used through its published interfaces. Raises std::runtime_error where
/// it refuses anything.
class HostedObject {
public:
    HostedObject();

    void initialize();
    /// 48 kHz stereo on both sides.
    void lock();
    void unlock();
    void play(StereoBuffer& buffer) noexcept { realtime->APOProcess(1, &buffer.in, 1, &buffer.out); }

    /// What the interface calls.
    [[nodiscard]] rt::RtProcessor& processor() noexcept { return *behind; }

private:
    rt::RtProcessor* behind = nullptr;
    framework::Ref<published::IAudioProcessingObject> object;
    framework::Ref<published::IAudioProcessingObjectConfiguration> configuration;
    framework::Ref<published::IAudioProcessingObjectRT> realtime;
};

}  // namespace korva::bench
