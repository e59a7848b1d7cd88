#include "apo/realtime_face.h"

#include "rt/direct_copy.h"
#include "rt/realtime.h"

namespace korva::apo {

using published::APO_CONNECTION_PROPERTY;

namespace {

// A host's array may be missing: better no sound than no host.
bool lacksFirst(UINT32 count, APO_CONNECTION_PROPERTY* const* connections) noexcept {
    return count != 0 && (connections == nullptr || connections[0] == nullptr);
}

}  // namespace

KORVA_RT_CODE void RealtimeFace::APOProcess(UINT32 inputCount, APO_CONNECTION_PROPERTY** inputs,
                                            UINT32 outputCount, APO_CONNECTION_PROPERTY** outputs) noexcept {
    if (lacksFirst(inputCount, inputs) || lacksFirst(outputCount, outputs)) {
        return;
    }
    if (processor != nullptr) {
        processor->Process(inputCount, inputs, outputCount, outputs, samplesPerFrame.get());
    } else {
        rt::directCopy(inputCount, inputs, outputCount, outputs, samplesPerFrame.get());
    }
}

KORVA_RT_CODE UINT32 RealtimeFace::CalcInputFrames(UINT32 outputFrames) noexcept {
    return rt::RtProcessor::CalcInputFrames(outputFrames);
}

KORVA_RT_CODE UINT32 RealtimeFace::CalcOutputFrames(UINT32 inputFrames) noexcept {
    return rt::RtProcessor::CalcOutputFrames(inputFrames);
}

}  // namespace korva::apo
