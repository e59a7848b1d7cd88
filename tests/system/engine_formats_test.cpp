// Which formats an object takes whose engine is asked.
#include <gtest/gtest.h>

#include <vector>

#include "tests/system/class_test.h"
#include "tests/system/format_wish.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

using published::UNCOMPRESSEDAUDIOFORMAT;

class EngineFormats : public testing::TestWithParam<ClassFacts> {
protected:
    void begin(const char* engineId = engine::third) {
        effect.install(GetParam(), engineId);
        EXPECT_EQ(effect.initialize(object), result::ok);
    }
    /// What the module answers on both sides.
    void answer(const std::string& number, const std::string& bytes = {}) {
        std::string answers = "inputFormat=" + number + ",outputFormat=" + number;
        if (!bytes.empty()) {
            answers.append(",inputFormatBytes=").append(bytes).append(",outputFormatBytes=").append(bytes);
        }
        effect.recording.answer(answers);
    }
    [[nodiscard]] FormatAnswer ask(const UNCOMPRESSEDAUDIOFORMAT& requested) {
        return askForFormat(object, nullptr, requested);
    }
    [[nodiscard]] FormatAnswer ask(const UNCOMPRESSEDAUDIOFORMAT& opposite,
                                   const UNCOMPRESSEDAUDIOFORMAT& requested) {
        return askForFormat(object, &opposite, requested);
    }

    HostedEffect effect;
    HostedObject object{effect.library, GetParam()};
};

TEST_P(EngineFormats, WithoutAModuleAreAllTaken) {
    begin(engine::withoutModule);
    EXPECT_EQ(ask(floats(10)).result, result::ok);
    EXPECT_EQ(ask(floats(2, 44100), floats(2, 48000)).result, result::ok);
    EXPECT_EQ(ask(floats(0xFFFFFFFF)).result, result::ok);
    EXPECT_EQ(ask(wholes(2)).result, result::no) << "other samples than floats";
}

TEST_P(EngineFormats, AreTheModulesToAccept) {
    begin();
    answer("0");
    EXPECT_EQ(ask(floats(2, 44100), floats(10, 48000)).result, result::ok);
}

TEST_P(EngineFormats, AreTheModulesToRefuse) {
    begin();
    answer("2");
    EXPECT_EQ(ask(floats(2)).result, result::formatNotSupported);
    answer("0");
    EXPECT_EQ(ask(floats(2)).result, result::ok);
}

TEST_P(EngineFormats, OfWholeNumbersBecomeFloatsThoughTheModuleRefuses) {
    begin();
    answer("2");
    const FormatAnswer suggestion = ask(wholes(2));
    EXPECT_EQ(suggestion.result, result::no);
    EXPECT_EQ(suggestion.format().guidFormatType, floats(2).guidFormatType);
    EXPECT_EQ(suggestion.format().dwSamplesPerFrame, 2U);
}

TEST_P(EngineFormats, AreTheModulesToChange) {
    begin();
    // Speakers 3F, 6 channels, 96000 frames a second.
    answer("1", "3F0000000600000000770100" + std::string(32, '0'));
    const UNCOMPRESSEDAUDIOFORMAT format = ask(floats(2)).format();
    EXPECT_EQ(format.dwSamplesPerFrame, 6U);
    EXPECT_EQ(format.fFramesPerSecond, 96000.0f);
    EXPECT_EQ(format.dwChannelMask, 0x3FU);
    EXPECT_EQ(format.dwValidBitsPerSample, 32U);
}

TEST_P(EngineFormats, ThatAModuleMakesSenselessAreSuggestedOrRefused) {
    begin();
    for (const char* const bytes : {"F", "0", "7F", "80"}) {
        std::string all;
        while (all.size() < 56) {
            all += bytes;
        }
        answer("1", all.substr(0, 56));
        const HRESULT told = ask(floats(2)).result;
        EXPECT_TRUE(told == result::no || told == result::formatNotSupported) << std::hex << told;
    }
    answer("0");
    EXPECT_EQ(object.lock(floats(2)), result::ok) << "usable afterwards";
}

TEST_P(EngineFormats, AreAskedOfTheModuleWithBothSides) {
    begin();
    static_cast<void>(ask(floats(6, 48000, 0x3F), floats(2)));
    const auto calls = callsOf("IsInputFormatSupported", effect.recording.calls());
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].bytes("requested")->at(0), 0x3);
    EXPECT_EQ(calls[0].bytes("requested")->at(4), 2);
    EXPECT_EQ(calls[0].bytes("opposite")->at(0), 0x3F);
    EXPECT_EQ(calls[0].bytes("opposite")->at(4), 6);
    EXPECT_EQ(effect.count("IsOutputFormatSupported"), 1U);
}

TEST_P(EngineFormats, OfTwoRatesDoNotLockThoughTheModuleAccepts) {
    begin();
    answer("0");
    EXPECT_EQ(object.lock(floats(2, 44100), floats(2, 48000)), result::connectionFormatInvalid);
    EXPECT_EQ(object.lock(floats(2)), result::ok);
}

TEST_P(EngineFormats, ThatTheModuleRefusesDoNotLock) {
    begin();
    effect.recording.answer("inputFormat=0,outputFormat=2");
    EXPECT_EQ(object.lock(floats(2)), result::formatNotSupported);
    effect.recording.answer("inputFormat=2,outputFormat=0");
    EXPECT_EQ(object.lock(floats(2)), result::formatNotSupported);
    effect.recording.answer("inputFormat=1,outputFormat=0");
    EXPECT_EQ(object.lock(floats(2)), result::formatNotSupported) << "a suggestion is no lock";
    answer("0");
    EXPECT_EQ(object.lock(floats(2)), result::ok);
}

TEST_P(EngineFormats, OfTenChannelsLockIfTheModuleAcceptsAndStayWithinTheirBuffers) {
    begin();
    answer("0");
    ASSERT_EQ(object.lock(floats(10)), result::ok);
    const std::vector<float> samples(1000, 1.0f);
    const auto played = object.play(samples, 10, 10);
    EXPECT_EQ(played.front(), 0.5f);
    EXPECT_EQ(played.back(), HostedObject::untouched) << "eight channels at most";
}

KORVA_OF_EACH_CLASS(EngineFormats);

}  // namespace
}  // namespace korva::test
