#include "equaliser.h"

#include "formats.h"

namespace equaliser {
namespace {

/// 20 ms: no click, and at once to the ear.
constexpr std::uint32_t glidesPerSecond = 50;

void doNothing() {}

void processBlock(DspInstance* instance, DspBlock* block) {
    static_cast<Equaliser*>(instance)->process(*block);
}

void leaveRecordedSound(DspInstance*, DspBlock*) {}

std::uint32_t hasNoHardware(DspInstance*) {
    return 0;
}

constexpr DspInstanceTable instanceTable = {
    {doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing, doNothing,
     doNothing, doNothing},
    processBlock,
    leaveRecordedSound,
    hasNoHardware,
};

}  // namespace

Equaliser::Equaliser() : DspInstance{&instanceTable} {}

bool Equaliser::initialize(const EngineFormat& in, const EngineFormat& out) {
    const bool canWork = fitTogether(in, out);
    sampleRate = canWork ? in.sampleRate : 0;
    clear();
    publish();
    return canWork;
}

void Equaliser::clear() {
    filters.clear();
}

bool Equaliser::setParameter(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) {
    diagnostics.parameterCame(static_cast<std::uint32_t>(bytes.size()));
    if (!settings.take(bank, id, bytes)) {
        return false;
    }
    publish();
    return true;
}

std::uint32_t Equaliser::setGetData(std::int32_t bank, std::int32_t id, std::span<const std::byte> in,
                                    std::span<std::byte> out) {
    return bank == KORVA_BANK_ENGINE ? diagnostics.exchange(id, in, out) : 0;
}

void Equaliser::process(const DspBlock& block) noexcept {
    const std::uint64_t begin = diagnostics.blockBegins(block);
    if (const Response* const response = newestResponse.take()) {
        filters.change(*response, sampleRate / glidesPerSecond);
    }
    filters.process(block);
    diagnostics.blockEnds(block, begin);
}

void Equaliser::publish() {
    newestResponse.put(sampleRate == 0 ? Response{} : responseOf(settings, sampleRate));
}

}  // namespace equaliser
