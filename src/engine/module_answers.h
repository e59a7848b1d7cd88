// What a module tells of itself.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/dsp_engine.h"
#include "korva/dsp_module.h"
#include "services/byte_count.h"

namespace korva::engine {

/// What the module tells by that number; nothing unless it has the size of a `T`.  [owner]
template <class T>
[[nodiscard]] std::optional<T> askModule(DspEngine& engine, std::int32_t id) {
    T answer{};
    const auto out = std::as_writable_bytes(std::span(&answer, 1));
    const std::uint32_t count = engine.SetGetData(KORVA_BANK_ENGINE, id, {}, out);
    return count == sizeof(T) ? std::optional(answer) : std::nullopt;
}

/// One of the module's counts of bytes, and when it was asked; nothing if it tells none.  [owner]
[[nodiscard]] std::optional<services::ByteCount> askByteCount(DspEngine& engine, std::int32_t id);

}  // namespace korva::engine
