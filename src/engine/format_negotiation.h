// Which formats the audio object works with, and what it proposes instead of others.
#pragma once

#include "engine/dsp_engine.h"
#include "platform/published/audio_interfaces.h"

namespace korva::engine {

/// A side of the audio object.
enum class Direction { input, output };

/// Whether a stream may have the format `requested` on one side while `opposite`, if it is known, is on the
/// other: its samples have to be floats, and of the rest only rates, channels and masks count. An engine
/// leaves these to its module; without an engine the host works with the opposite side's rate and up to eight
/// channels.
///
/// S_OK: yes, and `*supported` is `requested`. S_FALSE: no, but with the format that `*supported` is. In both
/// cases the caller has a reference to it; else it is null. APOERR_FORMAT_NOT_SUPPORTED: no. E_POINTER for a
/// null pointer; E_OUTOFMEMORY; what a type fails with that doesn't tell its format. `engine` and `opposite`
/// may be null.  [owner of the engine]
[[nodiscard]] HRESULT testFormat(DspEngine* engine, Direction side, published::IAudioMediaType* opposite,
                                 published::IAudioMediaType* requested,
                                 published::IAudioMediaType** supported);

}  // namespace korva::engine
