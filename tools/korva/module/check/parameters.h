// What a module is set to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "korva/module/check/tested_module.h"
#include "platform/published/base_types.h"

namespace korva::tool {

struct SentParameter {
    std::int32_t bank;
    std::int32_t id;
    std::vector<std::byte> bytes;
};

/// Stands for the defaults where a seed is asked for.
inline constexpr std::uint32_t defaultParameters = 0;

/// All parameters of an engine in the order in which the host sends them; none for one that nobody knows.
/// With a seed numbers are changed by up to a half, those that are zero to 0 ... 1, and switches are thrown.
[[nodiscard]] std::vector<SentParameter> parametersOf(const GUID& engine, std::uint32_t seed);

void sendParameters(TestedInstance& instance, const std::vector<SentParameter>& parameters);

}  // namespace korva::tool
