// Which engine and which module an endpoint's object has, as far as one can tell from outside.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "params/effect_keys.h"
#include "platform/published/base_types.h"

namespace korva::tool {

/// What an effect of an endpoint is set to, as an object reads it. All zero without an engine.
struct EngineChoice {
    GUID engineId{};
    std::uint32_t presetVersion = 0;
    std::uint32_t modeFlags = 0;

    [[nodiscard]] bool isMade() const noexcept { return presetVersion != 0 && !(engineId == GUID{}); }
    [[nodiscard]] bool wantsHardware() const noexcept {
        return (modeFlags & params::mode_flag::hardware) != 0;
    }
};

/// Reads it from the registry; none for an empty identifier.  [blocks]
[[nodiscard]] EngineChoice readEngineChoice(const std::string& endpointId, params::EffectKind kind);

/// The engine of an object that is set up.
struct EngineUse {
    EngineChoice choice{};
    std::string module{};          ///< Name of the file, without suffix; empty if the engine needs none.
    std::filesystem::path file{};  ///< Where the object looks for it.
    bool isLoaded = false;         ///< Whether this process has it loaded.
    bool onHardware = false;
};

/// What comes of a choice in this process, whose object looks for modules in `folder`. A module stays loaded
/// as long as an engine uses it, so one of the hardware's that is loaded has found its hardware.
[[nodiscard]] EngineUse engineUse(const EngineChoice& choice, const std::filesystem::path& folder);

/// Asks a loaded module for an instance of its own, and gives it back at once: nothing else tells of one that
/// makes none, since sound passes all the same.  [blocks]
[[nodiscard]] bool makesInstance(const EngineUse& use, const std::string& endpointId);

}  // namespace korva::tool
