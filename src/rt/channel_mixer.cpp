#include "rt/channel_mixer.h"

#include "rt/kernels/kernels.h"
#include "rt/realtime.h"

namespace korva::rt {

KORVA_RT_CODE void ChannelMixer(DspBlock& block, const EngineFormat& in, const EngineFormat& out) noexcept {
    ChannelMixer(block, in, out, chosenKernels());
}

KORVA_RT_CODE void ChannelMixer(DspBlock& block, const EngineFormat& in, const EngineFormat& out,
                                const Kernels& kernels) noexcept {
    kernels.fold(block.channels, in.channelMask, out.channelMask, block.frames);
}

}  // namespace korva::rt
