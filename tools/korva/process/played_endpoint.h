// The endpoint that the object plays for.
#pragma once

#include <memory>
#include <string>

#include "korva/endpoint/temporary_endpoint.h"
#include "korva/preset/preset.h"
#include "korva/process/hosted_object.h"

namespace korva::tool {

/// One that is there, one that is there for this run only, or none.
class PlayedEndpoint {
public:
    /// An endpoint's identifier, or a preset's file for an endpoint of our own; with both empty there is
    /// none. Throws `ToolError` for an endpoint or a preset that there isn't.
    PlayedEndpoint(const std::string& endpoint, const std::string& presetFile, params::EffectKind kind);

    /// Empty without one.
    [[nodiscard]] const std::string& id() const noexcept { return identifier; }

    /// Installs a preset, as any other program would, and waits until the object, which plays an engine of
    /// that preset or none, has taken it over. Gives the milliseconds that both took. Throws `ToolError`
    /// after ten seconds, or where the registry refuses, or `Interrupted`.  [blocks]
    double changePreset(HostedObject& object, const Preset& preset) const;

private:
    const params::EffectKind effect;
    std::unique_ptr<const TemporaryEndpoint> own;
    std::string identifier;
};

}  // namespace korva::tool
