// Which formats an object takes by its registration alone, where no core is there to be asked.
#pragma once

#include <cstdint>
#include <functional>

#include "platform/published/audio_interfaces.h"
#include "platform/published/audio_records.h"

namespace korva::apo {

/// Makes a format one that can be processed: 1 to 4096 channels of 32-bit floats, 10 to 384000 frames per
/// second, the limits of the audio engine's own default. S_FALSE if that changed anything, else S_OK.  [any]
[[nodiscard]] HRESULT correctFormat(published::UNCOMPRESSEDAUDIOFORMAT& format) noexcept;

/// As `correctFormat`, or otherwise for one side of an object.
using FormatCorrection = std::function<HRESULT(published::UNCOMPRESSEDAUDIOFORMAT& format, bool isOutput)>;

/// Whether a stream may have the format `requested` on one side (`isOutput` says which) while `opposite`, if
/// it is known, is on the other: it must be right as it is, and share with the other side what `flags` (of
/// `APO_FLAG`) ask for.
///
/// S_OK: yes, and `*supported` is `requested`. S_FALSE: no, but with the format that `*supported` is. In both
/// cases the caller has a reference to it; else it is null. APOERR_FORMAT_NOT_SUPPORTED where the opposite
/// format itself isn't right. E_POINTER for a null pointer; what a type fails with that doesn't tell its
/// format.  [com]
[[nodiscard]] HRESULT testDefaultFormat(std::uint32_t flags, bool isOutput, const FormatCorrection& correct,
                                        published::IAudioMediaType* opposite,
                                        published::IAudioMediaType* requested,
                                        published::IAudioMediaType** supported);

}  // namespace korva::apo
