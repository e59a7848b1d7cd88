// The check of parameters.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <vector>

#include "korva/module/check/audio_loop.h"
#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

/// Sizes to try beside the right one: all that are near, of large parameters those at both ends.
std::vector<std::size_t> sizesAround(std::size_t size) {
    constexpr std::size_t margin = 9;
    std::vector<std::size_t> sizes;
    for (std::size_t tried = 0; tried < size + margin; ++tried) {
        if (tried < 4 * margin || tried + margin > size) {
            sizes.push_back(tried);
        }
    }
    return sizes;
}

/// What the host may send, and then each parameter with the wrong count of bytes.
void sendWrongSizes(TestedInstance& instance, const std::vector<SentParameter>& parameters) {
    for (const SentParameter& parameter : parameters) {
        std::vector<std::byte> bytes = parameter.bytes;
        bytes.resize(parameter.bytes.size() + 16, std::byte{0});
        for (const std::size_t size : sizesAround(parameter.bytes.size())) {
            if (size != parameter.bytes.size()) {
                noteSituation(fmt::format("bank {}, id {}, {} bytes", parameter.bank, parameter.id, size));
                instance.setParameter(parameter.bank, parameter.id, std::span(bytes).first(size));
            }
        }
    }
}

void sendUnknown(TestedInstance& instance, std::mt19937& generator) {
    constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();
    const std::vector<std::int32_t> numbers = {smallest, -1'000'000, -1000, -1, 0, 1, 7, 1000, largest};
    std::vector<std::byte> bytes(64);
    for (const std::int32_t bank : numbers) {
        for (const std::int32_t id : numbers) {
            std::ranges::generate(bytes, [&] { return static_cast<std::byte>(generator()); });
            const bool mayBeKnown = bank >= -1 && bank <= 7;
            for (const std::size_t size :
                 mayBeKnown ? std::vector<std::size_t>{0, 61} : std::vector<std::size_t>{0, 1, 4, 12, 64}) {
                noteSituation(fmt::format("bank {}, id {}, {} bytes", bank, id, size));
                instance.setParameter(bank, id, std::span(bytes).first(size));
            }
        }
    }
}

/// All that may come to an instance that plays, while it does.
void sendEverything(TestedInstance& instance, const Document& document, std::uint32_t seed) {
    const std::vector<SentParameter> defaults = parametersOf(document.engine, defaultParameters);
    noteSituation("default parameters");
    sendParameters(instance, defaults);
    noteSituation("changed parameters");
    for (std::uint32_t change = 0; change < 4; ++change) {
        sendParameters(instance, parametersOf(document.engine, seed + change));
    }
    sendWrongSizes(instance, defaults);
    std::mt19937 generator(seed);
    sendUnknown(instance, generator);
    noteSituation("default parameters");
    sendParameters(instance, defaults);
}

/// One engine's parameters. Nothing happens where the module makes no instance of it, or takes no stereo.
void tryEngine(const TestedModule& module, const Document& document, std::uint32_t seed) {
    noteSituation(document.name);
    TestedInstance instance(module, document, GuardedMemory::Place::atPageEnd);
    const rt::EngineFormat format = formatOf(2, 0x3);
    if (!instance.exists() || !accepts(instance, format, format)) {
        return;
    }
    const Scene scene = {document, format, format, defaultParameters};
    begin(instance, scene);
    std::optional<AudioLoop> audio;
    if (instance.reasonForSilence().empty()) {
        audio.emplace(instance, scene, seed);
        audio->waitForBlocks(1);
    }
    sendEverything(instance, document, seed);
    if (audio) {
        audio->waitForBlocks(2);
        audio->expectFinite();
    }
    instance.uninitialize();
}

}  // namespace

Verdict checkParameters(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    if (module.api.SetParameter == nullptr) {
        skipCheck("the module has no ZRDSPAPI_SetParameter");
    }
    for (const Document& document : allDocuments()) {
        tryEngine(module, document, setting.seed);
    }
    return {};
}

}  // namespace korva::tool
