// The parameters that a module gets while its engine runs.
#include <cstring>
#include <utility>

#include "engine/effect_core.h"
#include "korva/dsp_module.h"

namespace korva::engine {

using framework::Held;
using params::ChunkReader;
using params::Parameter;

namespace {

/// A number that is these bytes; 0 of any other count.
template <class T>
T numberOf(std::span<const std::byte> bytes) noexcept {
    T number{};
    if (bytes.size() == sizeof number) {
        std::memcpy(&number, bytes.data(), sizeof number);
    }
    return number;
}

void copyControl(EngineControls& controls, std::int32_t id, std::span<const std::byte> bytes) noexcept {
    switch (id) {
        case KORVA_PARAMETER_COPIED_27:
            controls.parameter27 = numberOf<float>(bytes);
            break;
        case KORVA_PARAMETER_COPIED_28:
            controls.parameter28 = numberOf<float>(bytes);
            break;
        case KORVA_PARAMETER_COPIED_31:
            controls.parameter31 = numberOf<float>(bytes);
            break;
        case KORVA_PARAMETER_COPIED_32:
            controls.parameter32 = numberOf<std::uint32_t>(bytes);
            break;
        default:
            break;
    }
}

}  // namespace

// The list is kept: `chunkReaders` may have another one when the engine stops.
void EffectCore::startSendingParameters(std::shared_ptr<const ChunkReaders> readers) {
    sentReaders = std::move(readers);
    for (const Held<ChunkReader>& reader : *sentReaders) {
        for (Parameter* const parameter : reader->parameters()) {
            parameter->effective.subscribe(this, nullptr, &onParameter, framework::Position::last, false,
                                           true);
        }
    }
}

// There is no list yet if the start came to nothing before.
void EffectCore::stopSendingParameters() {
    if (!sentReaders) {
        return;
    }
    for (const Held<ChunkReader>& reader : *sentReaders) {
        for (Parameter* const parameter : reader->parameters()) {
            parameter->effective.unsubscribe(this, nullptr, &onParameter);
        }
    }
    sentReaders = nullptr;
}

void EffectCore::onParameter(void* context, framework::ListenedTo&, framework::ActiveObject& owner,
                             const void* published, void*, const void*, framework::Reason) {
    static_cast<EffectCore*>(context)->sendParameter(
        static_cast<const Parameter&>(owner), static_cast<const framework::SharedBytes*>(published)->bytes());
}

// One without bytes was never set, or is set no more: the module keeps what it has.
void EffectCore::sendParameter(const Parameter& parameter, std::span<const std::byte> bytes) {
    if (bytes.empty()) {
        return;
    }
    const auto bank = static_cast<std::int32_t>(parameter.moduleIndex);
    if (bank == KORVA_BANK_ENGINE) {
        copyControl(controls, parameter.paramId, bytes);
    }
    rtEngine->SetParameter(bank, parameter.paramId, noIndex, bytes);
}

}  // namespace korva::engine
