// The endpoint that the object plays for.
#pragma once

#include <memory>
#include <string>

#include "korva/endpoint/temporary_endpoint.h"
#include "korva/host/audio_object.h"
#include "korva/preset/preset.h"
#include "params/effect_keys.h"

namespace korva::tool {

/// How long a change of the preset took, in milliseconds.
struct ChangeTimes {
    double installMs = 0;  ///< Until the registry had it.
    double settleMs = 0;   ///< What the object was given to work it off.
};

/// One that is there, one that is there for this run only, or none.
class PlayedEndpoint {
public:
    /// An endpoint's identifier, or a preset's file for an endpoint of our own; with both empty there is
    /// none. Throws `ToolError` for an endpoint or a preset that there isn't.
    PlayedEndpoint(const std::string& endpoint, const std::string& presetFile, params::EffectKind kind);

    /// Empty without one.
    [[nodiscard]] const std::string& id() const noexcept { return identifier; }
    /// Null without one.
    [[nodiscard]] IMMDevice* device() const noexcept { return found.get(); }

    /// Installs a preset, as any other program would; tells the object, as the audio engine would; and lets
    /// it work that off. The object takes no call for done before its thread has taken it, but reads blobs in
    /// tasks, which it sets itself and which come after calls. Nothing tells of their end, so it gets some
    /// rounds of a pause and a call that waits for the thread: at least one task is through with each round,
    /// and there are more rounds than tasks. Throws `ToolError` where the registry refuses, or `Interrupted`.
    /// [blocks]
    ChangeTimes changePreset(AudioObject& object, const Preset& preset) const;

private:
    const params::EffectKind effect;
    std::unique_ptr<const TemporaryEndpoint> own;
    std::string identifier;
    platform::Reference<IMMDevice> found;
};

}  // namespace korva::tool
