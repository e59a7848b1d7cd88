// What a module is to be told, from the catalogue and from nothing else.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/published/base_types.h"

namespace korva::test {

using Lines = std::vector<std::string>;

/// One after another.
[[nodiscard]] Lines joined(const std::vector<Lines>& parts);

/// The parameters of an engine that have bytes by default, with these, in the order in which a module gets
/// them.
[[nodiscard]] Lines defaultParameters(const GUID& engineId, int instance);

/// A start in which no setting differs from its default. `formats` are Initialize's; `volumeDb` is that of an
/// active device.
struct ExpectedStart {
    GUID engineId{};
    int instance = 1;
    std::string formats = "2ch 48000 3, 2ch 48000 3";
    std::optional<float> volumeDb = std::nullopt;
};
[[nodiscard]] Lines startCalls(const ExpectedStart& start);

/// What a lock tells an engine besides, with its meters off.
[[nodiscard]] Lines lockCalls(int instance);

}  // namespace korva::test
