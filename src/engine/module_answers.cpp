#include "engine/module_answers.h"

#include "platform/process_clock.h"

namespace korva::engine {

std::optional<services::ByteCount> askByteCount(DspEngine& engine, std::int32_t id) {
    const auto captureClock = static_cast<std::uint32_t>(platform::processClockMs());
    const auto count = askModule<DspByteCount>(engine, id);
    if (!count) {
        return std::nullopt;
    }
    return services::ByteCount{count->bytes, count->clockStart, count->clockEnd, captureClock};
}

}  // namespace korva::engine
