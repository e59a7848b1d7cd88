// The module through which the object plays.
#pragma once

#include <filesystem>
#include <string>

#include "korva/process/engine_use.h"
#include "params/effect_keys.h"

namespace korva::tool {

/// What an endpoint's effect is set to play through, and whether it does: sound that only passes isn't what
/// was asked for.
class PlayedModule {
public:
    /// The object looks for modules in `searched`; the user knows them in `shown`. Without an endpoint, whose
    /// identifier is empty then, there is never a module.
    PlayedModule(std::string endpointId, params::EffectKind kind, std::filesystem::path searched,
                 std::filesystem::path shown);

    /// What it is now.  [blocks]
    [[nodiscard]] EngineUse use() const;

    /// Throws `ToolError` if the engine's module isn't loaded.
    void checkLoaded(const EngineUse& now) const;
    /// And if it makes no instance. Asks the module for one.  [blocks]
    void checkInstance() const;

private:
    [[noreturn]] void failAsUseless(const EngineUse& now) const;

    const std::string endpoint;
    const params::EffectKind effect;
    const std::filesystem::path folder;
    const std::filesystem::path shownFolder;
};

}  // namespace korva::tool
