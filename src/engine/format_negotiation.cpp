#include "engine/format_negotiation.h"

#include <cstdint>

#include "engine/audio_media_type.h"
#include "engine/stream_format.h"
#include "framework/ref.h"
#include "korva/dsp_module.h"
#include "platform/published/results.h"
#include "rt/engine_format.h"
#include "rt/speakers.h"

namespace korva::engine {
namespace {

using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

constexpr std::int32_t planeTotal = rt::planeCount;

enum class Answer { yes, change, no };

/// What is asked: the requested format may be changed into one that would do.
struct Question {
    rt::EngineFormat requested;
    rt::EngineFormat opposite;  ///< All zero if unknown.
    bool mustChange = false;    ///< Whether the samples are of another kind than what is processed.
};

HRESULT readQuestion(IAudioMediaType* opposite, IAudioMediaType& requested, Question& question) {
    UNCOMPRESSEDAUDIOFORMAT stream{};
    if (opposite != nullptr) {
        if (const HRESULT result = opposite->GetUncompressedAudioFormat(&stream); published::failed(result)) {
            return result;
        }
        question.opposite = engineFormatOf(stream);
    }
    if (const HRESULT result = requested.GetUncompressedAudioFormat(&stream); published::failed(result)) {
        return result;
    }
    question.requested = engineFormatOf(stream);
    question.mustChange = !(stream.guidFormatType == published::ieeeFloatFormat);
    return published::ok;
}

// Other samples than floats are a change that the host itself proposes, even where the module has refused: it
// was asked about floats.
Answer askModule(DspEngine& engine, Direction side, Question& question) {
    std::uint32_t answer = side == Direction::input
                               ? engine.IsInputFormatSupported(question.requested, question.opposite)
                               : engine.IsOutputFormatSupported(question.requested, question.opposite);
    if (question.mustChange) {
        answer |= KORVA_FORMAT_CHANGED;
    }
    if (answer == KORVA_FORMAT_ACCEPTED) {
        return Answer::yes;
    }
    return (answer & KORVA_FORMAT_CHANGED) != 0 ? Answer::change : Answer::no;
}

Answer answerWithoutEngine(Question& question) {
    rt::EngineFormat& requested = question.requested;
    const std::uint32_t rate = question.opposite.sampleRate;
    bool isChanged = question.mustChange;
    if (rate != 0 && rate != requested.sampleRate) {
        requested.sampleRate = rate;
        isChanged = true;
    }
    if (requested.channelCount > planeTotal) {
        requested.Assign(requested.sampleRate, planeTotal, rt::defaultSpeakerMask(planeTotal));
        isChanged = true;
    }
    return isChanged ? Answer::change : Answer::yes;
}

// A module may have written a format that no media type can tell.
HRESULT suggest(const rt::EngineFormat& format, IAudioMediaType** suggestion) {
    const HRESULT result = AudioMediaType::Create(floatFormatOf(format), suggestion);
    if (result == published::ok) {
        return published::okButNo;
    }
    return result == published::invalidArgument ? published::formatNotSupported : result;
}

}  // namespace

HRESULT testFormat(DspEngine* engine, Direction side, IAudioMediaType* opposite, IAudioMediaType* requested,
                   IAudioMediaType** supported) {
    if (supported == nullptr) {
        return published::nullPointer;
    }
    *supported = nullptr;
    if (requested == nullptr) {
        return published::nullPointer;
    }
    Question question;
    if (const HRESULT result = readQuestion(opposite, *requested, question); published::failed(result)) {
        return result;
    }
    switch (engine != nullptr ? askModule(*engine, side, question) : answerWithoutEngine(question)) {
        case Answer::yes:
            *supported = framework::Ref<IAudioMediaType>::share(requested).giveUp();
            return published::ok;
        case Answer::change:
            return suggest(question.requested, supported);
        case Answer::no:
            break;
    }
    return published::formatNotSupported;
}

}  // namespace korva::engine
