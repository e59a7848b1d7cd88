// What a DSP module is told to be. The only header of this folder that names the JSON library.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/ref.h"
#include "framework/shared_count.h"
#include "platform/published/base_types.h"

namespace korva::engine {

/// A JSON object, constant once it is made, and shared by count. It is the whole of an engine's identity: an
/// engine whose document equals that of a candidate is still the right one.  [any]
class EngineConfigDocument : public framework::SharedCount<EngineConfigDocument> {
public:
    explicit EngineConfigDocument(nlohmann::json value);
    ~EngineConfigDocument();

    [[nodiscard]] const nlohmann::json& json() const noexcept { return *object; }

    // What is absent is empty, zero or none.
    [[nodiscard]] GUID engineId() const;
    [[nodiscard]] std::uint32_t presetVersion() const;
    [[nodiscard]] std::string platformName() const;
    [[nodiscard]] std::vector<std::string> platformModuleNames() const;

private:
    const std::unique_ptr<const nlohmann::json> object;
};

/// Bits of `modeFlags`.
inline constexpr std::uint32_t modeHardware = 1;    ///< Try the hardware platform first.
inline constexpr std::uint32_t modeSimulation = 2;  ///< Tell the module of that platform to simulate it.

/// What stored flags are good for: simulation can't be stored.  [any]
[[nodiscard]] constexpr std::uint32_t modeFlagsOfStore(std::uint32_t stored) noexcept {
    return stored & ~modeSimulation;
}

/// The document of one pass: with `modeHardware` in `flags` that of the hardware platform, else of the float
/// platform. `outEndpointId` is UTF-8. The caller has the one share.  [any]
[[nodiscard]] framework::Ref<const EngineConfigDocument> buildEngineConfigDocument(
    std::uint32_t flags, const GUID& engineId, std::uint32_t presetVersion, std::string_view outEndpointId);

/// The text that a module gets: without blanks, members in the order of their names, UTF-8 as it is. Raises
/// an exception for text that is no UTF-8.  [any]
[[nodiscard]] std::string dumpEngineConfigDocument(const EngineConfigDocument& document);

/// Whether the candidate takes the place of the engine that was built from `current`.  [any]
[[nodiscard]] bool documentsDiffer(const EngineConfigDocument& current,
                                   const EngineConfigDocument& candidate);

}  // namespace korva::engine
