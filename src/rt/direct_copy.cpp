#include "rt/direct_copy.h"

#include <cstddef>
#include <cstring>

#include "rt/realtime.h"

namespace korva::rt {

KORVA_RT_CODE void copySamples(const APO_CONNECTION_PROPERTY& input, const APO_CONNECTION_PROPERTY& output,
                               std::uint32_t samplesPerFrame) noexcept {
    if (input.pBuffer == output.pBuffer || output.pBuffer == 0) {
        return;
    }
    const std::size_t bytes = std::size_t{input.u32ValidFrameCount} * samplesPerFrame * sizeof(float);
    auto* const to = reinterpret_cast<void*>(output.pBuffer);
    if (isSilent(output) || isSilent(input)) {
        std::memset(to, 0, bytes);
    } else {
        std::memmove(to, reinterpret_cast<const void*>(input.pBuffer), bytes);
    }
}

KORVA_RT_CODE void directCopy(std::uint32_t inputCount, APO_CONNECTION_PROPERTY* const* inputs,
                              std::uint32_t outputCount, APO_CONNECTION_PROPERTY* const* outputs,
                              std::uint32_t samplesPerFrame) noexcept {
    if (inputCount == 0 || outputCount == 0 || !isProcessable(*inputs[0])) {
        return;
    }
    copySamples(*inputs[0], *outputs[0], samplesPerFrame);
    finishOutput(*inputs[0], *outputs[0]);
}

}  // namespace korva::rt
