// How korva_host reads its command line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "apo/effect_class.h"
#include "korva/host/audio_object.h"

namespace korva::tool {

enum class TestSound { sine, impulse };

struct HostOptions {
    std::filesystem::path library;  ///< Absolute.
    bool isRegistered = false;      ///< The object comes from the class's registration, not from `library`.
    const apo::EffectClass* effect = &apo::streamEffect;
    std::string endpoint{};  ///< Empty without one.
    Generation generation = Generation::second;
    std::uint32_t sampleRate = 48000;
    std::uint32_t inChannels = 2;   ///< 1 to 8.
    std::uint32_t outChannels = 2;  ///< 1 to 8.
    std::uint32_t frames = 48000;
    std::uint32_t bufferFrames = 480;
    TestSound sound = TestSound::sine;
    bool wantsHelp = false;
};

/// Throws `HostError` with what is wrong.
[[nodiscard]] HostOptions parseHostLine(int count, const char* const* arguments);

extern const char* const hostUsage;

}  // namespace korva::tool
