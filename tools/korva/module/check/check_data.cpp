// The check of what a module tells of itself.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "korva/module/check/audio_loop.h"
#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

/// What the host asks for, and the count of bytes with which it takes an answer.
struct ServedData {
    std::int32_t id;
    std::uint32_t bytes;
};
constexpr std::array<ServedData, 8> served = {{{KORVA_DATA_MODULE_VERSION, 4},
                                               {KORVA_DATA_CYCLE_COUNT, 4},
                                               {KORVA_DATA_FRAME_COUNT, 4},
                                               {KORVA_DATA_INPUT_METERS, 32},
                                               {KORVA_DATA_OUTPUT_METERS, 32},
                                               {KORVA_DATA_PARAMETER_BYTES, 4},
                                               {KORVA_DATA_BYTES_RECEIVED, 12},
                                               {KORVA_DATA_BYTES_SENT, 12}}};

constexpr std::size_t roomAtMost = 64;
constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();

/// Asks one instance, and holds each answer to the rules.
class Questions {
public:
    explicit Questions(TestedInstance& asked)
        : instance(asked),
          out(2 * roomAtMost, GuardedMemory::Place::atPageEnd, "the room for an answer"),
          in(roomAtMost, GuardedMemory::Place::atPageEnd, "the data for a module") {}

    /// Asks with `room` bytes, all of them `filling` before. Gives the count.
    std::uint32_t ask(std::int32_t bank, std::int32_t id, std::size_t room, std::byte filling = {}) {
        noteSituation(fmt::format("bank {}, id {}, room for {} bytes", bank, id, room));
        std::ranges::fill(out.bytes(), filling);
        const std::uint32_t count =
            instance.setGetData(bank, id, {}, room == 0 ? std::span<std::byte>() : out.bytes().last(room));
        if (count > room) {
            failCheck("ZRDSPAPI_SetGetData says that it gave {} bytes{}", count, whereText());
        }
        const auto before = out.bytes().first(out.bytes().size() - room);
        if (std::ranges::any_of(before, [&](std::byte value) { return value != filling; })) {
            failCheck("ZRDSPAPI_SetGetData writes before the room for its answer{}", whereText());
        }
        return count;
    }

    void tell(std::int32_t id, std::size_t size, std::byte value) {
        noteSituation(fmt::format("bank -1, id {}, {} bytes for the module", id, size));
        std::ranges::fill(in.bytes(), value);
        const std::uint32_t count = instance.setGetData(
            KORVA_BANK_ENGINE, id, size == 0 ? std::span<std::byte>() : in.bytes().last(size), {});
        if (count != 0) {
            failCheck("ZRDSPAPI_SetGetData says that it gave {} bytes, and had room for none{}", count,
                      whereText());
        }
    }

    /// The answer's bytes, if there is one of the size that the host expects. Throws `CheckFailed` if they
    /// aren't all written.
    std::optional<std::vector<std::byte>> answer(const ServedData& data) {
        constexpr std::byte filling{0xA5};
        if (ask(KORVA_BANK_ENGINE, data.id, data.bytes, filling) != data.bytes) {
            return std::nullopt;
        }
        const auto room = out.bytes().last(data.bytes);
        std::vector<std::byte> first(room.begin(), room.end());
        if (ask(KORVA_BANK_ENGINE, data.id, data.bytes, ~filling) != data.bytes) {
            return first;
        }
        for (std::size_t i = 0; i < first.size(); ++i) {
            if (first[i] == filling && room[i] == ~filling) {
                failCheck("ZRDSPAPI_SetGetData says that it gave {} bytes, and leaves byte {} as it was{}",
                          data.bytes, i, whereText());
            }
        }
        return first;
    }

private:
    TestedInstance& instance;
    GuardedMemory out;
    GuardedMemory in;
};

void expectLevels(const std::vector<std::byte>& bytes) {
    for (std::size_t offset = 0; offset < bytes.size(); offset += sizeof(float)) {
        float level = 0;
        std::memcpy(&level, bytes.data() + offset, sizeof(level));
        if (!std::isfinite(level) || level < 0) {
            failCheck("ZRDSPAPI_SetGetData gives {} for the level of plane {}{}", level,
                      offset / sizeof(float), whereText());
        }
    }
}

void askForServed(Questions& questions) {
    for (const ServedData& data : served) {
        for (const std::size_t room : {std::size_t{0}, std::size_t{1}, std::size_t{data.bytes - 1},
                                       std::size_t{data.bytes + 1}, roomAtMost}) {
            questions.ask(KORVA_BANK_ENGINE, data.id, room);
        }
        const auto bytes = questions.answer(data);
        if (bytes && (data.id == KORVA_DATA_INPUT_METERS || data.id == KORVA_DATA_OUTPUT_METERS)) {
            expectLevels(*bytes);
        }
    }
}

void askForUnknown(Questions& questions) {
    for (const auto& [bank, id] :
         {std::pair(KORVA_BANK_ENGINE + 0, -1'000'000), std::pair(KORVA_BANK_ENGINE + 0, 1'000'000),
          std::pair(KORVA_BANK_ENGINE + 0, smallest), std::pair(-1000, -32), std::pair(smallest, smallest),
          std::pair(largest, largest)}) {
        for (const std::size_t room : {std::size_t{4}, std::size_t{12}, std::size_t{32}}) {
            if (questions.ask(bank, id, room) == room) {
                failCheck("ZRDSPAPI_SetGetData answers what nobody has ever defined{}", whereText());
            }
        }
    }
}

void tellAll(Questions& questions) {
    for (const std::byte value : {std::byte{0}, std::byte{1}, std::byte{0xFF}}) {
        for (const std::size_t size : {std::size_t{1}, std::size_t{0}, std::size_t{4}, roomAtMost}) {
            questions.tell(KORVA_DATA_METERS_ENABLED, size, value);
        }
    }
    questions.tell(KORVA_DATA_METERS_ENABLED, 1, std::byte{1});
    for (const std::size_t size : {std::size_t{4}, std::size_t{0}, std::size_t{3}, roomAtMost}) {
        questions.tell(KORVA_DATA_PARAMETER_BYTES, size, std::byte{0});
    }
    questions.tell(1'000'000, roomAtMost, std::byte{0});
}

void askAll(Questions& questions) {
    askForServed(questions);
    tellAll(questions);
    askForServed(questions);
    askForUnknown(questions);
    noteSituation("");
}

std::optional<std::uint32_t> frameCount(Questions& questions) {
    const auto bytes = questions.answer({KORVA_DATA_FRAME_COUNT, 4});
    if (!bytes) {
        return std::nullopt;
    }
    std::uint32_t count = 0;
    std::memcpy(&count, bytes->data(), sizeof(count));
    return count;
}

/// What is wrong with the count of frames; empty if it is right, or isn't served.
std::string frameCountFlaw(TestedInstance& instance, const Scene& scene, Questions& questions) {
    constexpr std::uint32_t frames = 1111;
    const std::optional<std::uint32_t> before = frameCount(questions);
    Bus bus(GuardedMemory::Place::loose);
    static_cast<void>(
        play(instance, scene, makeNoise(planesOf(scene.in), frames, 1), {KORVA_BLOCK_FRAMES}, bus));
    const std::optional<std::uint32_t> after = frameCount(questions);
    if (!before || !after || *after - *before == frames) {
        return "";
    }
    return fmt::format("id {} counts {} frames after {} more than before", KORVA_DATA_FRAME_COUNT + 0,
                       *after - *before, frames);
}

}  // namespace

Verdict checkData(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    if (module.api.SetGetData == nullptr) {
        skipCheck("the module has no ZRDSPAPI_SetGetData");
    }
    const Document document = documentFor(module);
    TestedInstance instance(module, document);
    Questions questions(instance);
    askAll(questions);
    const rt::EngineFormat format = formatOf(2, 0x3);
    if (!accepts(instance, format, format) || !instance.reasonForSilence().empty()) {
        return {};
    }
    const Scene scene = {document, format, format, defaultParameters};
    begin(instance, scene);
    {
        AudioLoop audio(instance, scene, setting.seed);
        audio.waitForBlocks(1);
        askAll(questions);
        audio.waitForBlocks(1);
    }
    const std::string flaw = frameCountFlaw(instance, scene, questions);
    instance.uninitialize();
    askAll(questions);
    return flaw.empty() ? Verdict{} : Verdict{Outcome::warning, flaw};
}

}  // namespace korva::tool
