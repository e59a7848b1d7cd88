// An instance of the module.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "diagnostics.h"
#include "filter_bank.h"
#include "korva/dsp_module.h"
#include "mailbox.h"
#include "settings.h"

namespace equaliser {

/// The host's two threads meet in it. What the owner's thread is told it computes into a response there and
/// then, and puts into a mailbox; the audio thread looks into that once a block.
class Equaliser : public DspInstance {
public:
    Equaliser();

    /// False if it can't work with the two; then sound passes untouched.  [owner; not while `process` runs]
    bool initialize(const EngineFormat& in, const EngineFormat& out);
    /// [owner; not while `process` runs]
    void clear();

    /// False if it is not one of ours.  [owner]
    bool setParameter(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes);
    /// [owner]
    std::uint32_t setGetData(std::int32_t bank, std::int32_t id, std::span<const std::byte> in,
                             std::span<std::byte> out);

    /// [audio, rt]
    void process(const DspBlock& block) noexcept;

private:
    void publish();

    Settings settings;                 ///< Owner.
    std::uint32_t sampleRate = 0;      ///< Written while no `process` runs. 0: not active.
    Mailbox<Response> newestResponse;  ///< From the owner to the audio thread.
    FilterBank filters;                ///< Audio.
    Diagnostics diagnostics;           ///< Both.
};

}  // namespace equaliser
