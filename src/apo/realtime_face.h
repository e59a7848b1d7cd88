// The face that the audio thread calls.
#pragma once

#include "platform/published/audio_objects.h"
#include "rt/rt_processor.h"
#include "rt/shared_word.h"

namespace korva::apo {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// An object's processing, with all that it needs. A class of its own: a call comes to it without the step
/// that the compiler puts before methods of a second base, and which would stand outside the real-time code.
class RealtimeFace : public published::IAudioProcessingObjectRT {
public:
    /// See `RtProcessor::Process`; without a processor, the first input is copied to the first output. A
    /// missing connection behind a count changes nothing.  [audio, rt]
    void STDMETHODCALLTYPE APOProcess(UINT32 inputCount, published::APO_CONNECTION_PROPERTY** inputs,
                                      UINT32 outputCount,
                                      published::APO_CONNECTION_PROPERTY** outputs) noexcept final;
    UINT32 STDMETHODCALLTYPE CalcInputFrames(UINT32 outputFrames) noexcept final;  // [audio, rt]
    UINT32 STDMETHODCALLTYPE CalcOutputFrames(UINT32 inputFrames) noexcept final;  // [audio, rt]

protected:
    rt::RtProcessor* processor = nullptr;           ///< Set before the first call.
    rt::SharedWord<std::uint32_t> samplesPerFrame;  ///< What a plain copy multiplies by. Written by a lock.
};

#pragma GCC diagnostic pop

}  // namespace korva::apo
