// A preset: what the parameters of an engine are set to.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "params/catalogue.h"

namespace korva::tool {

/// Which parameter of an engine. In their order the base list's come first.
struct ParameterPlace {
    std::int32_t module = 0;  ///< -1 for the base list.
    std::int32_t id = 0;

    friend auto operator<=>(const ParameterPlace&, const ParameterPlace&) = default;
};

/// All of it is plain: what is left out of `parameters` has its default.
struct Preset {
    GUID engineId{};                                                ///< A known engine's.
    std::uint32_t presetVersion = 1;                                ///< Never 0.
    bool hardware = false;                                          ///< Try the hardware platform first.
    std::map<ParameterPlace, std::vector<std::byte>> parameters{};  ///< The engine's, up to 65535 bytes each.
};

/// Nothing if the engine has no such parameter.
[[nodiscard]] const params::ParamDescriptor* findParameter(const params::ParamLayout& layout,
                                                           ParameterPlace place);

/// The parameters of a module; of the base list for -1. Nothing if the engine has no such module.
[[nodiscard]] const params::ParamDescriptorList* findModule(const params::ParamLayout& layout,
                                                            std::int32_t module);

}  // namespace korva::tool
