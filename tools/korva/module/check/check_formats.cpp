// The check of the format tests.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "korva/module/check/audio_loop.h"
#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

/// One of the two tests, and what it says.
class FormatTest {
public:
    FormatTest(TestedInstance& tested, bool ofOutput) : instance(tested), isOutput(ofOutput) {}

    [[nodiscard]] const char* name() const {
        return isOutput ? "ZRDSPAPI_IsOutputFormatSupported" : "ZRDSPAPI_IsInputFormatSupported";
    }

    std::uint32_t ask(rt::EngineFormat& requested, const rt::EngineFormat& opposite) const {
        return isOutput ? instance.testOutput(requested, opposite) : instance.testInput(requested, opposite);
    }

private:
    TestedInstance& instance;
    bool isOutput;
};

bool isChange(std::uint32_t answer) {
    return (answer & KORVA_FORMAT_CHANGED) != 0;
}

std::string flawOf(const rt::EngineFormat& format) {
    if (format.channelCount < 1 || format.channelCount > KORVA_PLANES) {
        return fmt::format("{} channels", format.channelCount);
    }
    if (format.sampleRate < 1000 || format.sampleRate > 10'000'000) {
        return fmt::format("a rate of {}", format.sampleRate);
    }
    const auto isNoPlane = [](std::uint8_t plane) { return plane >= KORVA_PLANES; };
    if (const auto plane = std::ranges::find_if(format.planeOfChannel, isNoPlane);
        plane != format.planeOfChannel.end()) {
        return fmt::format("a channel on plane {}", *plane);
    }
    const auto isNoSpeaker = [](std::uint8_t speaker) { return speaker > 32; };
    return std::ranges::any_of(format.speakerOfPlane, isNoSpeaker) ? "a speaker that no mask has" : "";
}

/// A change that the module answers with has to be one that it takes: the host offers it to the engine.
void expectGoodChange(const FormatTest& test, const rt::EngineFormat& changed,
                      const rt::EngineFormat& opposite) {
    if (const std::string flaw = flawOf(changed); !flaw.empty()) {
        failCheck("{} changes the format to one with {}{}", test.name(), flaw, whereText());
    }
    rt::EngineFormat again = changed;
    if (test.ask(again, opposite) != KORVA_FORMAT_ACCEPTED) {
        failCheck("{} doesn't accept {}, to which it has changed the format{}", test.name(),
                  formatText(changed), whereText());
    }
}

/// Gives whether the format is accepted as it is.
bool tryFormat(const FormatTest& test, const rt::EngineFormat& format, const rt::EngineFormat& opposite) {
    noteSituation(fmt::format("{}, the other side {}", formatText(format), formatText(opposite)));
    rt::EngineFormat requested = format;
    const std::uint32_t answer = test.ask(requested, opposite);
    if (!isChange(answer) && requested != format) {
        failCheck("{} answers {} and changes the format all the same{}", test.name(), answer, whereText());
    }
    rt::EngineFormat repeated = format;
    if (test.ask(repeated, opposite) != answer || repeated != requested) {
        failCheck("{} answers {} and then something else{}", test.name(), answer, whereText());
    }
    if (isChange(answer)) {
        expectGoodChange(test, requested, opposite);
    }
    return answer == KORVA_FORMAT_ACCEPTED;
}

void tryCapture(TestedInstance& instance, const rt::EngineFormat& format) {
    noteSituation(formatText(format));
    rt::EngineFormat requested = format;
    const std::uint32_t answer = instance.testCapture(requested);
    if (!isChange(answer) && requested != format) {
        failCheck("ZRDSPAPI_IsCaptureFormatSupported answers {} and changes the format all the same{}",
                  answer, whereText());
    }
}

/// Gives the count of accepted ones.
int tryAll(TestedInstance& instance) {
    std::vector<rt::EngineFormat> formats = usualFormats();
    for (const std::uint32_t rate : {8'000U, 44'100U, 384'000U}) {
        formats.push_back(formatOf(2, 0x3, rate));
    }
    std::ranges::copy(oddFormats(), std::back_inserter(formats));
    const std::vector<rt::EngineFormat> opposites = {{}, formatOf(2, 0x3), formatOf(8, 0x63F)};
    int accepted = 0;
    for (const rt::EngineFormat& format : formats) {
        for (const bool isOutput : {false, true}) {
            const FormatTest test(instance, isOutput);
            for (const rt::EngineFormat& opposite : opposites) {
                accepted += tryFormat(test, format, opposite) ? 1 : 0;
            }
            static_cast<void>(tryFormat(test, format, format));
        }
        tryCapture(instance, format);
    }
    return accepted;
}

/// The host asks again while sound runs.
void tryBesideAStream(TestedInstance& instance, const Scene& scene, std::uint32_t seed) {
    if (!accepts(instance, scene.in, scene.out)) {
        return;
    }
    noteSituation(fmt::format("{}, while formats are tested", scene.name()));
    begin(instance, scene);
    std::optional<AudioLoop> audio;
    if (instance.reasonForSilence().empty()) {
        audio.emplace(instance, scene, seed);
        audio->waitForBlocks(1);
    }
    tryAll(instance);
    if (audio) {
        audio->stop();
    }
    instance.uninitialize();
}

}  // namespace

Verdict checkFormats(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    const Document document = documentFor(module);
    TestedInstance instance(module, document);
    if (tryAll(instance) == 0) {
        failCheck("no format of 1 to 8 channels is accepted");
    }
    tryBesideAStream(instance, {document, formatOf(2, 0x3), formatOf(2, 0x3)}, setting.seed);
    return {};
}

}  // namespace korva::tool
